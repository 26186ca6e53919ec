// Conversions between the times of Windows and Unix time.
#ifndef XO_PLATFORM_FILETIME_H
#define XO_PLATFORM_FILETIME_H

#include <cstdint>

#include "platform/windows.h"

namespace xo::platform {

// 100-nanosecond ticks since the start of 1601, UTC.
inline std::uint64_t toTicks(const FILETIME& time) noexcept {
    return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

// Whole seconds since the start of 1970, UTC; rounded down.
inline std::int64_t toUnixSeconds(const FILETIME& time) noexcept {
    constexpr std::uint64_t kTicksPerSecond = 10'000'000;
    constexpr std::int64_t kFrom1601To1970 = 11'644'473'600;
    return static_cast<std::int64_t>(toTicks(time) / kTicksPerSecond) - kFrom1601To1970;
}

}  // namespace xo::platform

#endif
