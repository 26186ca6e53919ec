#include "xoSystem/xoSemaphore.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/windows.h"

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

TEST(Semaphore, LetsWaitersThroughWhenEachHasEnough) {
    xo::xoSemaphore semaphore(0);
    std::atomic<unsigned> taken{0};
    std::vector<std::thread> threads;
    for (const unsigned amount : {2u, 3u})
        threads.emplace_back([&semaphore, &taken, amount] {
            semaphore.acquire(amount);
            taken += amount;
        });
    ::Sleep(20);  // so that they most likely wait already
    semaphore.release(1);
    ::Sleep(20);
    EXPECT_EQ(taken, 0u) << "woken, but not for enough";
    semaphore.release(4);
    for (std::thread& thread : threads) thread.join();  // would hang if only one were woken
    EXPECT_EQ(semaphore.getNoResources(), 0u);
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
