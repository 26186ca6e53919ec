// xoPowerStatus and xoPowerStatusReader: does the machine run on mains power, and how full is its battery?
//
//     xo::xoPowerStatusReader power;          // made once, kept by the loop
//     ...
//     if (power.getPowerStatus().mAcLine == xo::xoPowerStatus::AcLineOffline) drawLessOften();
//
// A reader asks the system at most once in its interval, so that a loop may poll it on every turn. One reader belongs
// to one thread. Nothing fails: what the system does not tell is unknown.
#ifndef XOSYSTEM_XOPOWERSTATUS_H
#define XOSYSTEM_XOPOWERSTATUS_H

#include <cstdint>

#include "xoSystem/xoExport.h"

namespace xo {

template <class E>
class xoEnumList;

// A plain value.
struct xoPowerStatus {
    // Where the power comes from: offline is the battery.
    enum AcLine : std::int32_t { AcLineOffline = 0, AcLineOnline = 1, AcLineUnknown = 2 };
    enum : std::int32_t { BatteryUnknown = 101 };  // in place of a percentage

    constexpr xoPowerStatus() = default;
    // Takes the two fields as they are.
    constexpr xoPowerStatus(std::int32_t acLine, std::int32_t batteryPercent)
        : mAcLine(acLine), mBatteryPercent(batteryPercent) {}

    // Not each other's opposite, and code relies on it: two statuses that differ in one field alone are neither equal
    // nor unequal. To learn whether anything differs, ask !(a == b).
    constexpr bool operator==(const xoPowerStatus& other) const {
        return mAcLine == other.mAcLine && mBatteryPercent == other.mBatteryPercent;
    }
    constexpr bool operator!=(const xoPowerStatus& other) const {
        return mAcLine != other.mAcLine && mBatteryPercent != other.mBatteryPercent;
    }

    std::int32_t mAcLine = AcLineUnknown;           // AcLineOffline is running on battery
    std::int32_t mBatteryPercent = BatteryUnknown;  // 0 to 100, or BatteryUnknown
};

class XOSYSTEM_API xoPowerStatusReader {
public:
    // Reads at once. The interval is what must have passed between two readings, in milliseconds; a negative one makes
    // every poll read.
    explicit xoPowerStatusReader(std::int64_t intervalMs = 250);

    // Reads the system if more than the interval has passed since the last reading, or if forced to. True only if this
    // reading changed both the AC line and the battery's charge: a charger that is unplugged at 100 percent gives
    // false, and so does a poll that reads nothing. What has been read is kept either way.
    bool updatePowerStatusReader(bool force = false);

    // Polls without force, then gives the stored status, which the next update overwrites.
    const xoPowerStatus& getPowerStatus();

private:
    std::int64_t mIntervalMs;
    std::uint64_t mLastReadMs = 0;  // milliseconds since the system's start
    xoPowerStatus mStatus;
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoPowerStatus::AcLine> xoEnumEntries(xoPowerStatus::AcLine);

}  // namespace xo

#endif
