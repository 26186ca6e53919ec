#include "xoSystem/xoWaitCondition.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "concurrency/waitConditionPrivate.h"
#include "support/importHook.h"

namespace {

// Every promise holds for both implementations; the parameter names one.
class EachWaitCondition : public testing::TestWithParam<std::string> {
protected:
    EachWaitCondition() {
        EXPECT_TRUE(xo::xoWaitConditionPrivateVista::lookUp());
        ::InitializeCriticalSection(&mSection);
        if (GetParam() == "Native") mCondition = std::make_unique<xo::xoWaitConditionPrivateVista>();
        if (GetParam() == "Event") mCondition = std::make_unique<xo::xoWaitConditionPrivateEvent>();
    }
    ~EachWaitCondition() override {
        for (std::thread& thread : mThreads) thread.join();
        ::DeleteCriticalSection(&mSection);
    }

    void enter() { ::EnterCriticalSection(&mSection); }
    void leave() { ::LeaveCriticalSection(&mSection); }

    // Returns once so many threads are inside wait: each holds the section from its count to its wait.
    void startWaiters(int count) {
        for (int i = 0; i < count; ++i) {
            mThreads.emplace_back([this] {
                enter();
                ++mArrived;
                if (mCondition->wait(&mSection, 20000)) ++mWoken;
                leave();
            });
        }
        awaitCount(mArrived, count);
    }

    void awaitCount(const int& counter, int count) {
        for (int tries = 0; tries < 20000; ++tries, ::Sleep(1)) {
            enter();
            const bool reached = counter >= count;
            leave();
            if (reached) return;
        }
        ADD_FAILURE() << "threads did not get there";
    }

    CRITICAL_SECTION mSection;
    std::unique_ptr<xo::xoWaitConditionPrivate> mCondition;
    int mArrived = 0;  // both under mSection
    int mWoken = 0;
    std::vector<std::thread> mThreads;
};

TEST_P(EachWaitCondition, TimesOutHoldingTheLockAgain) {
    mCondition->wakeOne();  // nobody waits: neither must be remembered
    mCondition->wakeAll();
    for (const int timeoutMs : {0, 20}) {
        enter();
        // The system's tick count will not do: it stands still while Wine's server does not get to run.
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(mCondition->wait(&mSection, static_cast<unsigned long>(timeoutMs)));
        const std::chrono::duration<double, std::milli> elapsedMs = std::chrono::steady_clock::now() - start;
        EXPECT_GE(elapsedMs.count() + 16, timeoutMs) << "more than a tick too early";
        std::thread([this] { EXPECT_FALSE(::TryEnterCriticalSection(&mSection)) << "held again"; }).join();
        leave();
    }
}

TEST_P(EachWaitCondition, WakesAllWaitersAndEndsTheBroadcast) {
    for (int round = 0; round < 3; ++round) {
        startWaiters(3);
        mCondition->wakeAll();
        awaitCount(mWoken, 3);
        enter();
        EXPECT_FALSE(mCondition->wait(&mSection, 0)) << "the broadcast was not reset by its last waiter";
        mArrived = mWoken = 0;
        leave();
    }
}

HANDLE gate;  // before which the event implementation's waiters stand until they may begin to wait
DWORD WINAPI waitBehindGate(DWORD count, const HANDLE* handles, BOOL all, DWORD timeoutMs) {
    ::WaitForSingleObject(gate, INFINITE);
    return xo::tests::ImportHook::behind(&waitBehindGate)(count, handles, all, timeoutMs);
}

TEST_P(EachWaitCondition, WakesAllThatAreOnTheirWayToWait) {
    const xo::platform::KernelHandle semaphore(::CreateSemaphoreW(nullptr, 0, 2, nullptr));
    gate = semaphore.get();
    const xo::tests::ImportHook hook(nullptr, "WaitForMultipleObjects", &waitBehindGate);
    ASSERT_TRUE(hook.isInstalled());
    startWaiters(2);
    mCondition->wakeAll();
    for (int woken = 1; woken <= 2; ++woken) {
        ::ReleaseSemaphore(gate, 1, nullptr);
        awaitCount(mWoken, woken);
    }
}

TEST_P(EachWaitCondition, WakesOneWaiterAtATime) {
    startWaiters(3);
    for (int woken = 1; woken <= 3; ++woken) {
        mCondition->wakeOne();
        awaitCount(mWoken, woken);
        if (GetParam() == "Native") continue;  // which may wake a waiter for no reason
        ::Sleep(10);
        enter();
        EXPECT_EQ(mWoken, woken);
        leave();
    }
}

INSTANTIATE_TEST_SUITE_P(Both, EachWaitCondition, testing::Values("Native", "Event"),
                         [](const auto& info) { return info.param; });

HANDLE WINAPI refuseEvent(LPSECURITY_ATTRIBUTES, BOOL, BOOL, LPCSTR) { return nullptr; }

TEST(WaitConditionOnEvents, ReadsAFailedWaitAsAWakeUp) {
    // When the system has run out of events, a wait fails: it must return all the same, with the lock held.
    CRITICAL_SECTION section;
    ::InitializeCriticalSection(&section);
    const xo::tests::ImportHook hook(nullptr, "CreateEventA", &refuseEvent);
    ASSERT_TRUE(hook.isInstalled());
    xo::xoWaitConditionPrivateEvent condition;
    ::EnterCriticalSection(&section);
    EXPECT_TRUE(condition.wait(&section, 1000));
    ::LeaveCriticalSection(&section);
    ::DeleteCriticalSection(&section);
}

TEST(WaitCondition, HandsWorkBetweenThreads) {
    xo::xoWaitCondition::FindBestImplementation();
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

}  // namespace
