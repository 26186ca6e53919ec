#include "xoSystem/xoWaitCondition.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "concurrency/waitConditionPrivate.h"
#include "waitGate.h"

namespace {

// A wait condition, a critical section, and threads that wait.
class Waiters {
protected:
    explicit Waiters(std::unique_ptr<xo::xoWaitConditionPrivate> condition) : mCondition(std::move(condition)) {
        ::InitializeCriticalSection(&mSection);
    }
    ~Waiters() {
        for (std::thread& thread : mThreads) thread.join();
        ::DeleteCriticalSection(&mSection);
    }

    void enter() { ::EnterCriticalSection(&mSection); }
    void leave() { ::LeaveCriticalSection(&mSection); }

    bool waitHere(unsigned long timeoutMs) {
        enter();
        const bool woken = mCondition->wait(&mSection, timeoutMs);
        std::thread([this] { EXPECT_FALSE(::TryEnterCriticalSection(&mSection)) << "held again"; }).join();
        leave();
        return woken;
    }

    // Returns when count more threads are inside wait: each holds the section from its increment to its wait.
    void startWaiters(int count, unsigned long timeoutMs = INFINITE, bool areHeldBack = false) {
        mArrived = mWoken = mReturned = 0;
        for (int i = 0; i < count; ++i) {
            mThreads.emplace_back([=] {
                if (areHeldBack) xo::tests::WaitGate::holdThisThread();
                enter();
                ++mArrived;
                if (mCondition->wait(&mSection, timeoutMs)) ++mWoken;
                ++mReturned;
                leave();
            });
        }
        awaitCount(mArrived, count);
    }

    void awaitCount(const int& counter, int count) {
        for (bool isReached = false; !isReached; ::Sleep(1)) {
            enter();
            isReached = counter >= count;
            leave();
        }
    }

    CRITICAL_SECTION mSection;
    std::unique_ptr<xo::xoWaitConditionPrivate> mCondition;
    int mArrived = 0;  // under mSection, as the next two
    int mWoken = 0;
    int mReturned = 0;
    std::vector<std::thread> mThreads;
};

std::unique_ptr<xo::xoWaitConditionPrivate> makeCondition(const std::string& name) {
    if (name == "Event") return std::make_unique<xo::xoWaitConditionPrivateEvent>();
    EXPECT_TRUE(xo::xoWaitConditionPrivateVista::lookUp());
    return std::make_unique<xo::xoWaitConditionPrivateVista>();
}

// Every promise holds for both implementations; the parameter names one.
class EachWaitCondition : public testing::TestWithParam<std::string>, protected Waiters {
protected:
    EachWaitCondition() : Waiters(makeCondition(GetParam())) {}
};

TEST_P(EachWaitCondition, TimesOutHoldingTheLockAgain) {
    mCondition->wakeOne();  // without a waiter, both have no effect
    mCondition->wakeAll();
    for (const int timeoutMs : {0, 20}) {
        // Not the system's tick count: it stands still while Wine's server does not run.
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(waitHere(static_cast<unsigned long>(timeoutMs)));
        const std::chrono::duration<double, std::milli> elapsedMs = std::chrono::steady_clock::now() - start;
        EXPECT_GE(elapsedMs.count() + 16, timeoutMs) << "more than a tick too early";
    }
}

TEST_P(EachWaitCondition, WakesAllWaitersAndRemembersNothing) {
    for (const int count : {3, 10, 1}) {  // with new events, with more than are kept, and with a kept one
        startWaiters(count);
        mCondition->wakeAll();
        awaitCount(mWoken, count);
        EXPECT_FALSE(waitHere(0));
    }
}

TEST_P(EachWaitCondition, WakesOneWaiterAtATime) {
    EXPECT_FALSE(waitHere(0));  // a wait that has timed out takes no wake-up from the others
    startWaiters(3);
    for (int woken = 1; woken <= 3; ++woken) {
        mCondition->wakeOne();
        awaitCount(mWoken, woken);
    }
}

INSTANTIATE_TEST_SUITE_P(Both, EachWaitCondition, testing::Values("Native", "Event"),
                         [](const auto& info) { return info.param; });

// How many threads wake up cannot be counted here, since a condition variable of Windows may wake more than it is asked
// to: https://learn.microsoft.com/windows/win32/sync/condition-variables
std::string wakes;
void WINAPI noteOne(PCONDITION_VARIABLE) { wakes += '1'; }
void WINAPI noteAll(PCONDITION_VARIABLE) { wakes += '*'; }
FARPROC WINAPI findNoted(HMODULE module, LPCSTR name) {
    void (*note)() = nullptr;  // the type that compilers let any function be cast to
    if (std::strcmp(name, "WakeConditionVariable") == 0) note = reinterpret_cast<void (*)()>(&noteOne);
    if (std::strcmp(name, "WakeAllConditionVariable") == 0) note = reinterpret_cast<void (*)()>(&noteAll);
    return note ? reinterpret_cast<FARPROC>(note) : xo::tests::ImportHook::behind(&findNoted)(module, name);
}

TEST(NativeWaitCondition, AsksWindowsForOneWaiterOrForAll) {
    {
        const xo::tests::ImportHook hook(nullptr, "GetProcAddress", &findNoted);
        ASSERT_TRUE(hook.isInstalled());
        const auto condition = makeCondition("Native");
        condition->wakeOne();
        condition->wakeAll();
        EXPECT_EQ(wakes, "1*");
    }
    EXPECT_TRUE(xo::xoWaitConditionPrivateVista::lookUp()) << "the real functions again, for the other tests";
}

class WaitConditionOnEvents : public testing::Test, protected Waiters {
protected:
    WaitConditionOnEvents() : Waiters(makeCondition("Event")) {}
};

TEST_F(WaitConditionOnEvents, WakesThreadsThatAreAboutToWait) {
    struct Row {
        std::string wakes;  // "1": one waiter, "*": all
        int woken;          // of the two
    };
    for (const Row& row : {Row{"1", 1}, Row{"11", 2}, Row{"*", 2}, Row{"1*", 2}, Row{"*1", 2}}) {
        const xo::tests::WaitGate gate(nullptr);
        ASSERT_TRUE(gate.isInstalled());
        startWaiters(2, /*timeoutMs=*/0, /*areHeldBack=*/true);
        for (const char wake : row.wakes) wake == '1' ? mCondition->wakeOne() : mCondition->wakeAll();
        EXPECT_FALSE(waitHere(0)) << row.wakes << ": a later waiter took a wake-up of those before it";
        gate.openFor(2);
        awaitCount(mReturned, 2);
        EXPECT_EQ(mWoken, row.woken) << row.wakes;
    }
}

xo::xoWaitConditionPrivate* wokenLate = nullptr;
DWORD WINAPI wakeAfterTimeOut(HANDLE event, DWORD timeoutMs) {
    const DWORD result = xo::tests::ImportHook::behind(&wakeAfterTimeOut)(event, timeoutMs);
    if (wokenLate) std::exchange(wokenLate, nullptr)->wakeOne();
    return result;
}

TEST_F(WaitConditionOnEvents, CountsAWakeUpThatComesWithTheTimeOut) {
    const xo::tests::ImportHook hook(nullptr, "WaitForSingleObject", &wakeAfterTimeOut);
    ASSERT_TRUE(hook.isInstalled());
    wokenLate = mCondition.get();
    EXPECT_TRUE(waitHere(0)) << "the wake-up was lost";
    EXPECT_FALSE(waitHere(0)) << "the wake-up counted twice";
}

HANDLE WINAPI refuseEvent(LPSECURITY_ATTRIBUTES, BOOL, BOOL, LPCWSTR) { return nullptr; }

LPCRITICAL_SECTION watchedSection = nullptr;
int timesLeft = 0;
void WINAPI countLeave(LPCRITICAL_SECTION section) {
    if (section == watchedSection) ++timesLeft;
    xo::tests::ImportHook::behind (&countLeave)(section);
}

TEST_F(WaitConditionOnEvents, WakesAtOnceWhenTheSystemRefusesAnEvent) {
    const xo::tests::ImportHook noEvents(nullptr, "CreateEventW", &refuseEvent);
    const xo::tests::ImportHook leaves(nullptr, "LeaveCriticalSection", &countLeave);
    ASSERT_TRUE(noEvents.isInstalled() && leaves.isInstalled());
    watchedSection = &mSection;
    timesLeft = 0;
    EXPECT_TRUE(waitHere(INFINITE));
    EXPECT_EQ(timesLeft, 2) << "by the wait and by the test";
}

TEST(WaitCondition, HandsWorkBetweenThreads) {
    for (const bool isLate : {false, true}) {
        if (isLate) xo::xoWaitCondition::FindBestImplementation();
        xo::xoMutex mutex;
        xo::xoWaitCondition condition;
        int ball = 0;  // even: this thread's turn
        constexpr int kRounds = 2000;
        const auto play = [&](int side) {
            const xo::xoMutexLocker locker(mutex);
            for (int i = 0; i < kRounds; ++i) {
                while (ball % 2 != side) condition.wait(&mutex);
                ++ball;
                condition.wakeAll();
            }
        };
        std::thread other(play, 1);
        play(0);
        other.join();
        EXPECT_EQ(ball, 2 * kRounds);
    }
}

TEST(WaitCondition, DoesNotWaitWithoutAMutexThatItsCallerHolds) {
    xo::xoMutex mutex;
    xo::xoWaitCondition condition;
    const auto waitFor = [&](xo::xoMutex* m) XO_NO_THREAD_SAFETY_ANALYSIS { return condition.wait(m); };
    EXPECT_FALSE(waitFor(nullptr));
    EXPECT_FALSE(waitFor(&mutex)) << "held by nobody";
    const xo::xoMutexLocker locker(mutex);
    std::thread([&] { EXPECT_FALSE(waitFor(&mutex)) << "held by another thread"; }).join();
}

}  // namespace
