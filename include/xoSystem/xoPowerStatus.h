// xoPowerStatus and xoPowerStatusReader: does the machine run on mains power, and how full is its battery?
//
//     xo::xoPowerStatusReader power;          // made once, kept by the loop
//     ...
//     if (power.getPowerStatus().mAcLine == xo::xoPowerStatus::AcLineOffline) drawLessOften();
//
// A reader asks the system at most once in its interval, so that a loop may poll it on every turn. A reader must be
// used by one thread at a time. No function fails: a value that the system does not report is unknown.
#ifndef XOSYSTEM_XOPOWERSTATUS_H
#define XOSYSTEM_XOPOWERSTATUS_H

#include <cstdint>

#include "xoSystem/xoExport.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

template <class E>
class xoEnumList;

// A plain value.
struct xoPowerStatus {
    // The source of power: offline means battery.
    enum AcLine : std::int32_t { AcLineOffline = 0, AcLineOnline = 1, AcLineUnknown = 2 };
    enum : std::int32_t { BatteryUnknown = 101 };  // in place of a percentage

    constexpr xoPowerStatus() = default;
    // Stores both values unchecked.
    constexpr xoPowerStatus(std::int32_t acLine, std::int32_t batteryPercent)
        : mAcLine(acLine), mBatteryPercent(batteryPercent) {}

    // operator!= is not the negation of operator==, and existing code relies on that: two statuses that differ in only
    // one field are neither equal nor unequal. To find out whether any field differs, use !(a == b).
    constexpr bool operator==(const xoPowerStatus& other) const {
        return mAcLine == other.mAcLine && mBatteryPercent == other.mBatteryPercent;
    }
    constexpr bool operator!=(const xoPowerStatus& other) const {
        return mAcLine != other.mAcLine && mBatteryPercent != other.mBatteryPercent;
    }

    std::int32_t mAcLine = AcLineUnknown;           // one of AcLine
    std::int32_t mBatteryPercent = BatteryUnknown;  // 0 to 100, or BatteryUnknown
};

class XOSYSTEM_API xoPowerStatusReader {
public:
    // Reads the status at once. More than intervalMs milliseconds must pass before a poll reads it again; if the
    // interval is negative, every poll reads it.
    explicit xoPowerStatusReader(std::int64_t intervalMs = 250);

    // Reads the status if more than the interval has passed since the last reading, or if force is true. Returns true
    // only if this reading has changed both the AC line and the charge of the battery: false when a charger is
    // unplugged at 100 percent, and false when nothing was read. The status that was read is stored in any case.
    bool updatePowerStatusReader(bool force = false);

    // Polls without force and returns the stored status, which the next update overwrites.
    const xoPowerStatus& getPowerStatus();

private:
    std::int64_t mIntervalMs;
    std::uint64_t mLastReadMs = 0;  // milliseconds since the system's start
    xoPowerStatus mStatus;
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoPowerStatus::AcLine> xoEnumEntries(xoPowerStatus::AcLine);

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
