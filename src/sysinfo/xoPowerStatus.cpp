#include "xoSystem/xoPowerStatus.h"

#include "platform/windows.h"

namespace xo {
namespace {

xoPowerStatus readPowerStatus() {
    xoPowerStatus status;
    SYSTEM_POWER_STATUS power{};
    if (!::GetSystemPowerStatus(&power)) return status;
    if (power.ACLineStatus <= 1) status.mAcLine = power.ACLineStatus;
    if (power.BatteryLifePercent <= 100) status.mBatteryPercent = power.BatteryLifePercent;
    return status;
}

}  // namespace

xoPowerStatusReader::xoPowerStatusReader(std::int64_t intervalMs) : mIntervalMs(intervalMs) {
    updatePowerStatusReader(/*force=*/true);
}

bool xoPowerStatusReader::updatePowerStatusReader(bool force) {
    if (!force && static_cast<std::int64_t>(::GetTickCount64() - mLastReadMs) <= mIntervalMs) return false;
    const xoPowerStatus status = readPowerStatus();
    const bool changed = status != mStatus;  // in both fields
    mStatus = status;
    mLastReadMs = ::GetTickCount64();
    return changed;
}

const xoPowerStatus& xoPowerStatusReader::getPowerStatus() {
    updatePowerStatusReader(/*force=*/false);
    return mStatus;
}

}  // namespace xo
