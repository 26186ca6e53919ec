#include "xoSystem/xoSemaphore.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "waitGate.h"

namespace {

TEST(Semaphore, CountsWithoutWaitingWhileThereIsEnough) {
    xo::xoSemaphore semaphore(3);
    semaphore.acquire(0);
    semaphore.acquire(2);
    EXPECT_EQ(semaphore.getNoResources(), 1u);
    semaphore.release(0);
    semaphore.release(4);
    EXPECT_EQ(semaphore.getNoResources(), 5u);
}

// Nothing initialises the library here, so the semaphore uses the event form of the wait condition.
TEST(Semaphore, WakesEachWaiterForWhomThereIsEnough) {
    const xo::tests::WaitGate gate("xoSystem.dll");
    ASSERT_TRUE(gate.isInstalled());
    xo::xoSemaphore semaphore(0);
    std::thread greedy([&] { semaphore.acquire(2); });
    gate.awaitArrival();
    std::thread modest([&] {
        xo::tests::WaitGate::holdThisThread();
        semaphore.acquire(1);
    });
    gate.awaitArrival();
    semaphore.release(1);
    gate.awaitArrival();  // the greedy thread was woken and waits again; it must not take the other's wake-up
    gate.openFor(1);
    modest.join();
    semaphore.release(3);
    greedy.join();
    EXPECT_EQ(semaphore.getNoResources(), 1u);
}

TEST(Semaphore, LosesNothingAmongManyThreads) {
    xo::xoSemaphore slots(3);
    std::atomic<int> inside{0};
    std::atomic<bool> wasTooFull{false};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 500; ++i) {
                slots.acquire();
                if (++inside > 3) wasTooFull = true;
                --inside;
                slots.release();
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_FALSE(wasTooFull);
    EXPECT_EQ(slots.getNoResources(), 3u);
}

}  // namespace
