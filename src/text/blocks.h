// Sixteen bytes of text at a time, by SSE2, which every x86-64 processor has.
#ifndef XO_TEXT_BLOCKS_H
#define XO_TEXT_BLOCKS_H

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#if defined(_MSC_VER) && !defined(__clang__)
#    include <intrin.h>
#endif

namespace xo::text {

constexpr std::ptrdiff_t kBlock = 16;

// The sixteen bytes from there on, which need no alignment. All of them must be readable.
inline __m128i loadBlock(const char* at) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at)); }

// A bit for each byte of the block whose top bit is set.
inline unsigned topBits(__m128i block) { return static_cast<unsigned>(_mm_movemask_epi8(block)); }

// A bit for each byte of the block that is the character.
inline unsigned maskOf(__m128i block, char c) { return topBits(_mm_cmpeq_epi8(block, _mm_set1_epi8(c))); }

// The index of the lowest bit of a mask that has one.
inline unsigned lowestBit(unsigned mask) {
#if defined(_MSC_VER) && !defined(__clang__)
    unsigned long index = 0;
    _BitScanForward(&index, mask);
    return index;
#else
    return static_cast<unsigned>(__builtin_ctz(mask));
#endif
}

inline unsigned lowestBit(std::uint64_t mask) {
#if defined(_MSC_VER) && !defined(__clang__)
    unsigned long index = 0;
    _BitScanForward64(&index, mask);
    return index;
#else
    return static_cast<unsigned>(__builtin_ctzll(mask));
#endif
}

// The first such byte, or end. Not memchr: the C runtime's compares byte by byte.
inline const char* findByte(const char* at, const char* end, char c) {
    for (; end - at >= kBlock; at += kBlock) {
        const unsigned mask = maskOf(loadBlock(at), c);
        if (mask != 0) return at + lowestBit(mask);
    }
    while (at != end && *at != c) ++at;
    return at;
}

inline std::size_t findByte(std::string_view text, char c) {
    const char* const end = text.data() + text.size();
    const char* const at = findByte(text.data(), end, c);
    return at == end ? std::string_view::npos : static_cast<std::size_t>(at - text.data());
}

}  // namespace xo::text

#endif
