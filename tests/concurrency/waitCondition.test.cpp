#include "xoSystem/xoWaitCondition.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "concurrency/waitConditionPrivate.h"
#include "support/importHook.h"

namespace {

struct Implementation {
    const char* name;
    std::function<std::unique_ptr<xo::xoWaitConditionPrivate>()> make;
};

// Every promise holds for both.
class EachWaitCondition : public testing::TestWithParam<Implementation> {
protected:
    EachWaitCondition() {
        EXPECT_TRUE(xo::xoWaitConditionPrivateVista::lookUp());
        ::InitializeCriticalSection(&mSection);
        mCondition = GetParam().make();
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

    void awaitWoken(int count) { awaitCount(mWoken, count); }

    void awaitCount(const int& counter, int count) {
        for (const DWORD start = ::GetTickCount(); ::GetTickCount() - start < 20000; ::Sleep(1)) {
            enter();
            const bool reached = counter >= count;
            leave();
            if (reached) return;
        }
        ADD_FAILURE() << "threads did not get there";
    }

    bool isHeldByThisThread() {
        bool entered = false;
        std::thread([&] {
            entered = ::TryEnterCriticalSection(&mSection) != 0;
            if (entered) leave();
        }).join();
        return !entered;
    }

    CRITICAL_SECTION mSection;
    std::unique_ptr<xo::xoWaitConditionPrivate> mCondition;
    int mArrived = 0;  // both under mSection
    int mWoken = 0;
    std::vector<std::thread> mThreads;
};

TEST_P(EachWaitCondition, TimesOutHoldingTheLockAgain) {
    for (const unsigned long timeoutMs : {0ul, 20ul}) {
        enter();
        const ULONGLONG start = ::GetTickCount64();
        EXPECT_FALSE(mCondition->wait(&mSection, timeoutMs));
        EXPECT_GE(::GetTickCount64() - start + 16, timeoutMs);
        EXPECT_TRUE(isHeldByThisThread());
        leave();
    }
}

TEST_P(EachWaitCondition, ForgetsWakeUpsWithoutAWaiter) {
    mCondition->wakeOne();
    mCondition->wakeAll();
    enter();
    EXPECT_FALSE(mCondition->wait(&mSection, 20));
    leave();
}

TEST_P(EachWaitCondition, WakesAllWaitersAndEndsTheBroadcast) {
    for (int round = 0; round < 3; ++round) {
        startWaiters(3);
        mCondition->wakeAll();
        awaitWoken(3);
        enter();
        EXPECT_FALSE(mCondition->wait(&mSection, 0)) << "the broadcast was not reset by its last waiter";
        mArrived = mWoken = 0;
        leave();
    }
}

TEST_P(EachWaitCondition, WakesOneWaiterAtATime) {
    startWaiters(3);
    for (int woken = 1; woken <= 3; ++woken) {
        mCondition->wakeOne();
        awaitWoken(woken);
    }
}

TEST_P(EachWaitCondition, ReleasesTheLockWhileWaiting) {
    startWaiters(1);
    enter();  // would hang if the waiter kept it
    leave();
    mCondition->wakeOne();
    awaitWoken(1);
}

INSTANTIATE_TEST_SUITE_P(
    Both, EachWaitCondition,
    testing::Values(Implementation{"Native", [] { return std::make_unique<xo::xoWaitConditionPrivateVista>(); }},
                    Implementation{"Event", [] { return std::make_unique<xo::xoWaitConditionPrivateEvent>(); }}),
    [](const auto& info) { return info.param.name; });

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
    std::thread other([&] {
        const xo::xoMutexLocker locker(mutex);
        for (int i = 0; i < kRounds; ++i) {
            while (ball % 2 == 0) condition.wait(&mutex);
            ++ball;
            condition.wakeAll();
        }
    });
    {
        const xo::xoMutexLocker locker(mutex);
        for (int i = 0; i < kRounds; ++i) {
            ++ball;
            condition.wakeAll();
            while (ball % 2 != 0) condition.wait(&mutex);
        }
    }
    other.join();
    EXPECT_EQ(ball, 2 * kRounds);
}

}  // namespace
