// Copies pieces most of which are a number or a word: a call to memcpy costs more than moving those.
#ifndef XO_STREAM_SHORTCOPY_H
#define XO_STREAM_SHORTCOPY_H

#include <cstddef>
#include <cstring>

namespace xo::stream {

// Copies the first and the last kSize bytes. They overlap where the size is below 2 * kSize.
template <std::size_t kSize>
void copyEnds(char* out, const char* bytes, std::size_t size) {
    char first[kSize];
    char last[kSize];
    std::memcpy(first, bytes, kSize);
    std::memcpy(last, bytes + size - kSize, kSize);
    std::memcpy(out, first, kSize);
    std::memcpy(out + size - kSize, last, kSize);
}

// As memcpy, for any size; 0 copies nothing, and the pointers may be null then.
inline void copyShort(char* out, const char* bytes, std::size_t size) {
    if (size > 32) {
        std::memcpy(out, bytes, size);
    } else if (size >= 16) {
        copyEnds<16>(out, bytes, size);
    } else if (size >= 8) {
        copyEnds<8>(out, bytes, size);
    } else if (size >= 4) {
        copyEnds<4>(out, bytes, size);
    } else if (size >= 2) {
        copyEnds<2>(out, bytes, size);
    } else if (size == 1) {
        *out = *bytes;
    }
}

}  // namespace xo::stream

#endif
