// Copies pieces most of which are a number or a word: a call to memcpy costs more than moving those.
#ifndef XO_STREAM_SHORTCOPY_H
#define XO_STREAM_SHORTCOPY_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace xo::stream {

// What copyFew takes at most.
constexpr std::size_t kFew = 32;

// Copies the first and the last bytes, as many as Word has. They overlap where the size is below twice of that.
template <class Word>
void copyEnds(char* out, const char* bytes, std::size_t size) {
    Word first, last;
    std::memcpy(&first, bytes, sizeof first);
    std::memcpy(&last, bytes + size - sizeof last, sizeof last);
    std::memcpy(out, &first, sizeof first);
    std::memcpy(out + size - sizeof last, &last, sizeof last);
}

// Up to kFew bytes, without a call: a function that calls nothing else needs no stack frame.
inline void copyFew(char* out, const char* bytes, std::size_t size) {
    if (size >= 16) {
        copyEnds<std::uint64_t>(out, bytes, 16);
        copyEnds<std::uint64_t>(out + size - 16, bytes + size - 16, 16);
    } else if (size >= 8) {
        copyEnds<std::uint64_t>(out, bytes, size);
    } else if (size >= 4) {
        copyEnds<std::uint32_t>(out, bytes, size);
    } else if (size >= 2) {
        copyEnds<std::uint16_t>(out, bytes, size);
    } else if (size == 1) {
        *out = *bytes;
    }
}

// As memcpy, for any size; 0 copies nothing, and the pointers may be null then.
inline void copyShort(char* out, const char* bytes, std::size_t size) {
    if (size > kFew)
        std::memcpy(out, bytes, size);
    else
        copyFew(out, bytes, size);
}

}  // namespace xo::stream

#endif
