#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <thread>
#include <vector>

#include "support/capturedOutput.h"
#include "support/importHook.h"
#include "xoSystem/xoStamp.h"
#include "xoSystem/xoTimer.h"
#include "xoSystem/xoVirtualMemory.h"

namespace {

using xo::Stamp;
using xo::xoTimer;
using xo::tests::ImportHook;

TEST(Stamp, CountsUpAndNeverComesTwice) {
    constexpr int kEach = 12'500;
    xo::StampGenerator stamps;
    std::vector<Stamp> made(8 * kEach, Stamp::Invalid());
    std::vector<std::thread> threads;
    for (auto own = made.begin(); own != made.end(); own += kEach)
        threads.emplace_back([&stamps, own] { std::generate_n(own, kEach, [&] { return stamps.generateStamp(); }); });
    for (std::thread& thread : threads) thread.join();
    for (auto own = made.begin(); own != made.end(); own += kEach) EXPECT_TRUE(std::is_sorted(own, own + kEach));
    std::sort(made.begin(), made.end());
    EXPECT_EQ(std::adjacent_find(made.begin(), made.end()), made.end());
    EXPECT_TRUE(made.front().isValid() && made.front() > Stamp::Invalid() && !Stamp::Invalid().isValid());
    const std::uint64_t numbers[] = {1, made.size()};  // which only the bytes of a stamp tell
    EXPECT_EQ(std::memcmp(&made.front(), &numbers[0], sizeof(Stamp)), 0);
    EXPECT_EQ(std::memcmp(&made.back(), &numbers[1], sizeof(Stamp)), 0);
}

// The clocks of the timers: they stand at the time that a test sets, or go on by a step with each look.
std::int64_t now = 0, step = 0;
ULONGLONG WINAPI readTicks() { return static_cast<ULONGLONG>(now += step); }
BOOL WINAPI readCount(LARGE_INTEGER* count) { return count->QuadPart = now += step, TRUE; }
BOOL WINAPI readFrequency(LARGE_INTEGER* frequency) { return frequency->QuadPart = 3'000'000, TRUE; }

TEST(Timer, HasElapsedWhenMoreThanTheTimeHasPassed) {
    const ImportHook ticks("xoSystem.dll", "GetTickCount64", &readTicks);
    ASSERT_TRUE(ticks.isInstalled());
    const std::int64_t extremes[] = {INT64_MIN, INT64_MIN / 1000 - 1, INT64_MAX / 1000 + 1, INT64_MAX};
    xoTimer timer(true);
    for (now = 0; now <= 2001; ++now) {
        EXPECT_EQ(timer.getElapsedMs(), now);
        EXPECT_TRUE(timer.isElapsedMs(now - 1) && !timer.isElapsedMs(now)) << now;
        EXPECT_TRUE(timer.isElapsedSec(2) == (now > 2000) && timer.isElapsedSec(0) == (now > 0)) << now;
    }
    for (const std::int64_t time : extremes) {
        EXPECT_EQ(timer.isElapsedMs(time), time < 0) << time;
        EXPECT_EQ(timer.isElapsedSec(time), time < 0) << time;
        EXPECT_TRUE(xoTimer(false).isElapsedMs(time) && xoTimer(false).isElapsedSec(time)) << time;
    }
    step = 7;
    timer.snapTime();
    for (const bool resnap : {true, true, false}) EXPECT_EQ(timer.getElapsedMs(resnap), 7) << "by a second look";
    EXPECT_EQ(timer.getElapsedMs(), 14);
    timer.clearTime();
    EXPECT_EQ(timer.getElapsedMs(true), INT64_MAX);
    EXPECT_TRUE(timer.isTimeSnapped());
}

TEST(Timer, MeasuresBetweenItsMarks) {
    const ImportHook count("xoSystem.dll", "QueryPerformanceCounter", &readCount);
    const ImportHook frequency("xoSystem.dll", "QueryPerformanceFrequency", &readFrequency);
    ASSERT_TRUE(count.isInstalled() && frequency.isInstalled());
    constexpr std::int64_t kStart = 1'000'000'000'000'001;  // so late that the scaling of each mark shows
    const auto scaled = [](std::int64_t mark) { return static_cast<double>(mark) * (1e6 / 3'000'000); };
    const auto expected = [&](std::int64_t ticks) -> double {
        const double end = scaled(kStart + ticks);
        return end - scaled(kStart);
    };
    xoHighResTimer timer;
    step = 1000;
    now = kStart - step;
    timer.start();
    xoHighResTimer copy(timer);
    EXPECT_EQ(timer.getElapsedTimeInMicroSec(), expected(1000));
    timer.stop();
    for (int look = 0; look < 2; ++look, timer.stop())
        EXPECT_EQ(timer.getElapsedTimeInMilliSec(), expected(2000) * 0.001) << "stopped once";
    EXPECT_EQ(copy.getElapsedTimeInSec(), expected(3000) * 1e-6) << "a copy runs on";
    timer.start();
    EXPECT_TRUE(timer.isRunning());
    timer.clearTimer();
    EXPECT_TRUE(!timer.isRunning() && timer.getElapsedTimeInMicroSec() == 0);
    timer = copy;
    EXPECT_TRUE(timer.isRunning());
}

int frees = 0;
BOOL WINAPI countFree(void* address, SIZE_T size, DWORD type) {
    ++frees;
    return ImportHook::behind(&countFree)(address, size, type);
}

TEST(VirtualMemory, IsHeldUntilItIsFreedOnceAndPrintsARefusal) {
    const ImportHook hook("xoSystem.dll", "VirtualFree", &countFree);
    ASSERT_TRUE(hook.isInstalled());
    xo::VirtualMemoryAllocatorDisk holder, copy;
    auto* const first = static_cast<char*>(holder.allocateMemory(100'001));
    auto* const second = static_cast<char*>(holder.allocateMemory(1));
    ASSERT_TRUE(first && second);
    first[100'000] = second[0] = 1;  // the first is forgotten, not freed
    copy = holder;
    for (int i = 0; i < 2; ++i) copy.freeMemory();
    EXPECT_EQ(frees, 1);
    MEMORY_BASIC_INFORMATION memory{};
    ::VirtualQuery(second, &memory, sizeof memory);
    EXPECT_EQ(memory.State, DWORD{MEM_FREE});
    for (const std::uint64_t size : {std::uint64_t{0}, std::uint64_t{1} << 62, UINT64_MAX}) {
        const xo::tests::CapturedOutput output;
        EXPECT_EQ(copy.allocateMemory(size), nullptr);
        EXPECT_EQ(output.text(), "Allocation failed :");
    }
    copy.freeMemory();
    EXPECT_EQ(frees, 1);
    ::VirtualFree(first, 0, MEM_RELEASE);
}

}  // namespace
