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

TEST(Semaphore, LetsThroughWaitersForAllThatIsReleased) {
    xo::xoSemaphore semaphore(0);
    std::atomic<unsigned> taken{0};
    std::vector<std::thread> threads;
    for (const unsigned amount : {1u, 2u, 3u})
        threads.emplace_back([&semaphore, &taken, amount] {
            semaphore.acquire(amount);
            taken += amount;
        });
    const auto awaitTaken = [&](unsigned amount) {
        for (int i = 0; i < 4000 && taken < amount; ++i) ::Sleep(5);
        return taken.load();
    };
    semaphore.release(3);  // for the one that wants 3, or for the other two
    EXPECT_EQ(awaitTaken(3), 3u);
    semaphore.release(3);
    EXPECT_EQ(awaitTaken(6), 6u);
    for (std::thread& thread : threads) thread.join();
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
