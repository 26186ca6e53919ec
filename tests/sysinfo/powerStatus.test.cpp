#include "xoSystem/xoPowerStatus.h"

#include <gtest/gtest.h>

#include "support/importHook.h"

namespace {

using xo::xoPowerStatus;
using xo::xoPowerStatusReader;

// A machine whose power and clock the tests set.
SYSTEM_POWER_STATUS power{};
BOOL answers = TRUE;
int reads = 0;
ULONGLONG nowMs = 5000;

BOOL WINAPI readPower(SYSTEM_POWER_STATUS* status) {
    ++reads;
    *status = power;
    return answers;
}
ULONGLONG WINAPI readTicks() { return nowMs; }

const xo::tests::ImportHook powerHook("xoSystem.dll", "GetSystemPowerStatus", &readPower);
const xo::tests::ImportHook ticksHook("xoSystem.dll", "GetTickCount64", &readTicks);

TEST(PowerStatus, TurnsEveryByteIntoAKnownOrAnUnknownValue) {
    ASSERT_TRUE(powerHook.isInstalled() && ticksHook.isInstalled());
    for (int byte = 0; byte < 256; ++byte) {
        power.ACLineStatus = power.BatteryLifePercent = static_cast<BYTE>(byte);
        const xoPowerStatus expected{byte <= 1 ? byte : 2, byte <= 100 ? byte : 101};
        EXPECT_EQ(xoPowerStatusReader().getPowerStatus(), expected) << byte;
    }
    const xoPowerStatus status{1, 80}, oneDiffers{1, 75}, bothDiffer{0, 75};
    EXPECT_FALSE(status == oneDiffers || status != oneDiffers || status == bothDiffer || status != status);
    EXPECT_TRUE(status != bothDiffer);
}

TEST(PowerStatus, IsReadOnceInAnIntervalAndHasChangedWhenBothFieldsHave) {
    struct Step {
        int passedMs;
        bool force;
        int acLine, battery;  // -1 when the system does not answer
        bool changed;
        int shownAcLine, shownBattery;
    };
    const Step steps[] = {{250, false, 0, 50, false, 1, 100},
                          {1, false, 0, 100, false, 0, 100},  // unplugged while full: shown, but no change
                          {0, true, 1, 90, true, 1, 90},      // a forced reading starts the interval anew
                          {250, false, 0, 50, false, 1, 90},
                          {-1000, false, 0, 50, false, 1, 90},  // a clock that lags behind
                          {1001, false, 0, 50, true, 0, 50},
                          {251, false, -1, -1, true, 2, 101},
                          {251, false, 1, 255, false, 1, 101},
                          {251, false, 0, 80, true, 0, 80}};
    power.ACLineStatus = 1, power.BatteryLifePercent = 100;
    xoPowerStatusReader reader;
    for (const Step& step : steps) {
        nowMs += static_cast<ULONGLONG>(step.passedMs);
        power.ACLineStatus = static_cast<BYTE>(step.acLine), power.BatteryLifePercent = static_cast<BYTE>(step.battery);
        answers = step.acLine >= 0;
        EXPECT_EQ(reader.updatePowerStatusReader(step.force), step.changed) << &step - steps;
        EXPECT_EQ(reader.getPowerStatus(), (xoPowerStatus{step.shownAcLine, step.shownBattery})) << &step - steps;
    }
    const std::int64_t intervals[][3] = {{0, 0, 0}, {0, 1, 1}, {-1, 0, 1}, {INT64_MAX, 9999, 0}, {INT64_MIN, 0, 1}};
    for (const auto& [intervalMs, passedMs, expectedReads] : intervals) {
        xoPowerStatusReader poll(intervalMs);
        nowMs += static_cast<ULONGLONG>(passedMs);
        reads = 0;
        poll.getPowerStatus();
        EXPECT_EQ(reads, expectedReads) << intervalMs << ' ' << passedMs;
    }
}

}  // namespace
