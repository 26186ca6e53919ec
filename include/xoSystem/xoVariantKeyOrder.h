// How the keys of xoVariantMapImpl are compared. No interface: the map's header needs it, since std::map wants its
// order inline.
#ifndef XOSYSTEM_XOVARIANTKEYORDER_H
#define XOSYSTEM_XOVARIANTKEYORDER_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace xo::variant {

// The bytes as one number, the first of them the highest, so that numbers are ordered as bytes are. Compilers make one
// instruction of the swaps.
inline std::uint64_t eightBytes(const char* at) noexcept {
    std::uint64_t value = 0;
    std::memcpy(&value, at, sizeof value);
    value = (value & 0x00FF00FF00FF00FF) << 8 | (value >> 8 & 0x00FF00FF00FF00FF);
    value = (value & 0x0000FFFF0000FFFF) << 16 | (value >> 16 & 0x0000FFFF0000FFFF);
    return value << 32 | value >> 32;
}
inline std::uint64_t fourBytes(const char* at) noexcept {
    std::uint32_t value = 0;
    std::memcpy(&value, at, sizeof value);
    value = (value & 0x00FF00FF) << 8 | (value >> 8 & 0x00FF00FF);
    return value << 16 | value >> 16;
}
inline std::uint64_t oneByte(const char* at) noexcept { return static_cast<unsigned char>(*at); }

// Up to seven bytes, some of them more than once; texts of one size are ordered as these numbers are.
inline std::uint64_t upToSevenBytes(const char* at, std::size_t size) noexcept {
    if (size >= 4) return fourBytes(at) << 32 | fourBytes(at + size - 4);
    if (size == 0) return 0;
    return oneByte(at) << 16 | oneByte(at + size / 2) << 8 | oneByte(at + size - 1);
}

// Unsigned bytes, a proper prefix first. Keys are short, so that comparing them here takes less time than a call to
// memcmp.
inline bool isKeyBefore(std::string_view a, std::string_view b) noexcept {
    const std::size_t common = a.size() < b.size() ? a.size() : b.size();
    if (common < 8) {
        const std::uint64_t one = upToSevenBytes(a.data(), common);
        const std::uint64_t other = upToSevenBytes(b.data(), common);
        return one != other ? one < other : a.size() < b.size();
    }
    for (std::size_t at = 0;; at += 8) {
        if (common - at < 8) at = common - 8;  // the last eight bytes, of which some are compared once more
        const std::uint64_t one = eightBytes(a.data() + at);
        const std::uint64_t other = eightBytes(b.data() + at);
        if (one != other) return one < other;
        if (at + 8 == common) return a.size() < b.size();
    }
}

}  // namespace xo::variant

#endif
