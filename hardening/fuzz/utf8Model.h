// One code point at a time, the slow way.
#ifndef XO_FUZZ_UTF8MODEL_H
#define XO_FUZZ_UTF8MODEL_H

#include <string_view>

namespace xo::fuzz {

constexpr char32_t kBroken = 0xFFFFFFFF;       // no complete, shortest sequence
constexpr char32_t kNoCharacter = 0xFFFFFFFE;  // a surrogate, or beyond U+10FFFF

// The code point that starts the text, and the length of its sequence.
inline char32_t decode(std::string_view text, std::size_t& length) {
    const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    const unsigned lead = byte(0);
    length = lead < 0x80 ? 1 : lead < 0xC0 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : 0;
    if (length == 0) return kBroken;
    char32_t code = length == 1 ? lead : lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (byte(i) < 0x80 || byte(i) > 0xBF) return kBroken;
        code = code << 6 | (byte(i) & 0x3F);
    }
    constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < kLeast[length]) return kBroken;
    return (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF ? kNoCharacter : code;
}

}  // namespace xo::fuzz

#endif
