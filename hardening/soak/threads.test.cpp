// Many rounds of threads, work threads and pools: no handle and no block of memory may be left.
#include <algorithm>

#include "support/heapBlocks.h"
#include "support/openHandles.h"
#include "threads/threadsFixture.h"
#include "xoSystem/xoConcurrentPool.h"
#include "xoSystem/xoSemaphore.h"
#include "xoSystem/xoWorkThread.h"

namespace {

class ThreadsSoak : public xo::tests::ThreadsTest {
protected:
    // Fails unless the rounds after the first ones leave the numbers of handles and blocks as they were.
    static void repeat(int rounds, const std::function<void()>& round) {
        for (int i = 0; i < 50; ++i) round();
        const int handles = xo::tests::openHandles();
        // A leak grows in both halves. A thread of the library that starts only now counts in one.
        int growth[2];
        for (int& grown : growth) {
            const int blocks = xo::tests::heapBlocks();
            for (int i = 0; i < rounds / 2; ++i) round();
            grown = xo::tests::heapBlocks() - blocks;
        }
        EXPECT_EQ(xo::tests::openHandles(), handles);
        EXPECT_LE((std::min)(growth[0], growth[1]), 20) << "in " << rounds << " rounds";
    }
};

TEST_F(ThreadsSoak, Threads) {
    int runs = 0;
    xo::tests::FunctionThread again([&] { ++runs; });
    repeat(2000, [&] {
        again.startThread("again");
        again.waitThread(INT_MAX);
    });
    repeat(200, [&] { xo::tests::FunctionThread([&] { ++runs; }).startThread(); });
    EXPECT_EQ(runs, 2300);
}

TEST_F(ThreadsSoak, WorkThreadAndSemaphore) {
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

TEST_F(ThreadsSoak, Pool) {
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
