// A fast pass skips only what is certainly well-formed. utfcpp decides about the first other place, so that the verdict
// is always its own.
#include "text/utf8Checks.h"

#include <utf8.h>

#include "text/blocks.h"

namespace xo::text {
namespace {

// Single bytes are compared as unsigned values; a char is signed here.
using Byte = unsigned char;

bool isContinuation(Byte byte) { return (byte & 0xC0) == 0x80; }

// The first byte that is not ASCII, or end. Blocks are tested four at a time only behind one that is ASCII, because
// runs of ASCII are short in mixed text.
const char* skipAscii(const char* at, const char* end) {
    for (; end - at >= kBlock; at += kBlock) {
        const unsigned mask = topBits(loadBlock(at));
        if (mask != 0) return at + lowestBit(mask);
        while (end - at >= 5 * kBlock) {
            const __m128i low = _mm_or_si128(loadBlock(at + kBlock), loadBlock(at + 2 * kBlock));
            const __m128i high = _mm_or_si128(loadBlock(at + 3 * kBlock), loadBlock(at + 4 * kBlock));
            if (topBits(_mm_or_si128(low, high)) != 0) break;
            at += 4 * kBlock;
        }
    }
    while (at != end && static_cast<Byte>(*at) < 0x80) ++at;
    return at;
}

// The length of the well-formed sequence that starts here, which is at least four bytes before the end; 0 if there is
// none. The range of the second byte excludes overlong forms, surrogates and values beyond U+10FFFF.
// The ranges are those of table 3-7 of the Unicode standard: https://www.unicode.org/versions/Unicode15.0.0/ch03.pdf
// displayWidth.cpp has them too: one function that also tests for the end made this one up to a fifth slower.
std::ptrdiff_t sequenceLength(const char* text) {
    const Byte* const at = reinterpret_cast<const Byte*>(text);
    const Byte lead = at[0];
    const Byte second = at[1];
    if (lead >= 0xC2 && lead <= 0xDF) return isContinuation(second) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        const bool bounded = lead == 0xE0 ? second >= 0xA0 : lead != 0xED || second < 0xA0;
        return bounded && isContinuation(second) && isContinuation(at[2]) ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const bool bounded = lead == 0xF0 ? second >= 0x90 : lead != 0xF4 || second < 0x90;
        return bounded && isContinuation(second) && isContinuation(at[2]) && isContinuation(at[3]) ? 4 : 0;
    }
    return 0;
}

// Skips well-formed sequences. Stops at the first other one, and at one that is too close to the end to read four
// bytes.
const char* skipWellFormed(const char* at, const char* end) {
    while ((at = skipAscii(at, end)), end - at >= 4) {
        do {
            const std::ptrdiff_t length = sequenceLength(at);
            if (length == 0) return at;
            at += length;
        } while (end - at >= 4 && static_cast<Byte>(*at) >= 0x80);
    }
    return at;
}

}  // namespace

bool isUtf8(std::string_view text) { return utf8Prefix(text) == text.size(); }

std::size_t utf8Prefix(std::string_view text) {
    const char* const end = text.data() + text.size();
    return static_cast<std::size_t>(utf8::find_invalid(skipWellFormed(text.data(), end), end) - text.data());
}

}  // namespace xo::text
