// Many rounds of everything; what they take from the system they give back.
#include <algorithm>

#include "threadsFixture.h"
#include "xoSystem/xoConcurrentPool.h"
#include "xoSystem/xoSemaphore.h"
#include "xoSystem/xoWorkThread.h"

namespace {

class Soak : public xo::tests::ThreadsTest {
protected:
    // The value of the next handle: Windows gives the lowest free one again and again.
    static std::uintptr_t nextHandle() {
        const xo::platform::KernelHandle event(::CreateEventW(nullptr, FALSE, FALSE, nullptr));
        return reinterpret_cast<std::uintptr_t>(event.get());
    }

    static int heapBlocks() {
        HANDLE heaps[64];
        const DWORD count = ::GetProcessHeaps(64, heaps);
        int blocks = 0;
        for (DWORD i = 0; i < count; ++i) {
            PROCESS_HEAP_ENTRY entry{};
            ::HeapLock(heaps[i]);
            while (::HeapWalk(heaps[i], &entry)) blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
            ::HeapUnlock(heaps[i]);
        }
        return blocks;
    }

    // Warms up, then wants the same handles and blocks after many rounds as before.
    static void repeat(int rounds, const std::function<void()>& round) {
        for (int i = 0; i < 50; ++i) round();
        const std::uintptr_t handle = nextHandle();
        // A leak grows in both halves; another thread of the library that only now comes up counts in one.
        int growth[2];
        for (int& grown : growth) {
            const int blocks = heapBlocks();
            for (int i = 0; i < rounds / 2; ++i) round();
            grown = heapBlocks() - blocks;
        }
        EXPECT_EQ(nextHandle(), handle);
        EXPECT_LE((std::min)(growth[0], growth[1]), 20) << "in " << rounds << " rounds";
    }
};

TEST_F(Soak, Threads) {
    int runs = 0;
    xo::tests::FunctionThread again([&] { ++runs; });
    repeat(2000, [&] {
        again.startThread("again");
        again.waitThread(INT_MAX);
    });
    repeat(200, [&] { xo::tests::FunctionThread([&] { ++runs; }).startThread(); });
    EXPECT_EQ(runs, 2300);
}

TEST_F(Soak, WorkThreadAndSemaphore) {
    struct Counter final : xo::xoWorkThread {
        ~Counter() override {
            msleep(20);  // asleep by then
            stop();
        }
        void executeJob(xo::xoJob*) override { done.release(); }
        xo::xoSemaphore done{0};
    } counter;
    xo::xoJob job;
    counter.startThread("counter");
    repeat(5000, [&] {
        counter.beginWake();
        counter.addJob(&job);
        counter.endWake();
        counter.done.acquire();
    });
}

TEST_F(Soak, Pool) {
    struct Task final : xo::ConcurrentPool::SolverBase {
        void solve(xo::xoMutex*, xo::xoWaitCondition*) override { ++count; }
        int count = 0;
    } task;
    const std::vector<xo::ConcurrentPool::SolverBase*> tasks(5, &task);
    xo::ConcurrentPool pool(3);
    repeat(5000, [&] { pool.solve(tasks); });
    repeat(100, [&] { xo::ConcurrentPool(2).solve(tasks); });
    EXPECT_EQ(task.count, (5050 + 150) * 5);
}

}  // namespace
