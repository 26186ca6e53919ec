// The source of power and the charge of the battery, read at intervals.
#include "xoSystem/xoPowerStatus.h"

#include "platform/windows.h"

namespace xo {
namespace {

// Both values stay unknown when the system cannot be asked.
xoPowerStatus readPowerStatus() {
    xoPowerStatus status;
    SYSTEM_POWER_STATUS power{};
    if (!::GetSystemPowerStatus(&power)) return status;
    // Both fields are 255 when the system does not know the value.
    // https://learn.microsoft.com/windows/win32/api/winbase/ns-winbase-system_power_status
    if (power.ACLineStatus <= 1) status.mAcLine = power.ACLineStatus;
    if (power.BatteryLifePercent <= 100) status.mBatteryPercent = power.BatteryLifePercent;
    return status;
}

}  // namespace

xoPowerStatusReader::xoPowerStatusReader(std::int64_t intervalMs) : mIntervalMs(intervalMs) {
    updatePowerStatusReader(/*force=*/true);
}

bool xoPowerStatusReader::updatePowerStatusReader(bool force) {
    // Compared as signed numbers, so that a negative interval always reads anew.
    if (!force && static_cast<std::int64_t>(::GetTickCount64() - mLastReadMs) <= mIntervalMs) return false;
    const xoPowerStatus status = readPowerStatus();
    const bool changed = status != mStatus;  // true only if both fields differ
    mStatus = status;
    mLastReadMs = ::GetTickCount64();
    return changed;
}

const xoPowerStatus& xoPowerStatusReader::getPowerStatus() {
    updatePowerStatusReader(/*force=*/false);
    return mStatus;
}

}  // namespace xo
