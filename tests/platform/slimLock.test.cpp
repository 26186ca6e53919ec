#include "platform/slimLock.h"

#include <gtest/gtest.h>

#include "support/importHook.h"

namespace {

using xo::tests::ImportHook;

// A clock that only goes on while somebody sleeps, in steps of the system's default timer.
ULONGLONG nowMs = 1000;
ULONGLONG WINAPI readTicks() { return nowMs; }
void WINAPI sleepForATick(DWORD) { nowMs += 16; }

TEST(SlimLock, WaitsNoLongerThanItWasTold) {
    const ImportHook ticks(nullptr, "GetTickCount64", &readTicks), sleep(nullptr, "Sleep", &sleepForATick);
    ASSERT_TRUE(ticks.isInstalled() && sleep.isInstalled());
    xo::platform::SlimLock lock;
    lock.lock();
    for (const DWORD timeoutMs : {0u, 1u, 160u}) {
        const ULONGLONG begin = nowMs;
        EXPECT_FALSE(lock.tryLock(timeoutMs));
        EXPECT_TRUE(nowMs - begin >= timeoutMs && nowMs - begin < timeoutMs + 16) << nowMs - begin;
    }
    lock.unlock();
    const bool isFree = lock.tryLock();
    EXPECT_TRUE(isFree);
    if (isFree) lock.unlock();
}

}  // namespace
