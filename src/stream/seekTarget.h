// The position to which a seek leads, for devices that have a beginning and an end.
#ifndef XO_STREAM_SEEKTARGET_H
#define XO_STREAM_SEEKTARGET_H

#include <cstdint>
#include <limits>
#include <optional>

#include "xoSystem/xoIoDeviceBase.h"

namespace xo::stream {

// Windows has signed positions.
constexpr std::uint64_t kLastPosition = (std::numeric_limits<std::int64_t>::max)();

// No value for a position before 0 or behind the last possible one, and for an unknown start. Both the current position
// and the end are at most kLastPosition.
inline std::optional<std::uint64_t> seekTarget(std::uint64_t current, std::uint64_t end, std::int64_t offset,
                                               xoIoDevice::SeekStart start) {
    std::uint64_t from = 0;
    switch (start) {
        case xoIoDevice::SeekFromBegin: break;
        case xoIoDevice::SeekFromCurrent: from = current; break;
        case xoIoDevice::SeekFromEnd: from = end; break;
        default: return std::nullopt;
    }
    // A target before 0 wraps round to a number above the last position.
    const std::uint64_t target = from + static_cast<std::uint64_t>(offset);
    if (target > kLastPosition) return std::nullopt;
    return target;
}

}  // namespace xo::stream

#endif
