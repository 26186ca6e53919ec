// A kitchen with two cooks: orders wait in a queue of limited length, a semaphore counts the free plates of the stove,
// and the cooks share a count of the dishes that they have made.
#include <climits>
#include <deque>
#include <iostream>
#include <string>

#include "xoSystem/xoInit.h"
#include "xoSystem/xoMutex.h"
#include "xoSystem/xoSemaphore.h"
#include "xoSystem/xoThread.h"
#include "xoSystem/xoWaitCondition.h"

namespace {

// Passes orders between threads. give() waits while the queue is full, take() waits while it is empty.
class OrderQueue {
public:
    void give(const std::string& order) {
        const xo::xoMutexLocker locker(mMutex);
        while (mOrders.size() == kMaxLength) mChanged.wait(&mMutex);
        mOrders.push_back(order);
        mChanged.wakeAll();
    }

    void close() {
        const xo::xoMutexLocker locker(mMutex);
        mClosed = true;
        mChanged.wakeAll();
    }

    // False when there is nothing left to take.
    bool take(std::string& order) {
        const xo::xoMutexLocker locker(mMutex);
        while (mOrders.empty() && !mClosed) mChanged.wait(&mMutex);
        if (mOrders.empty()) return false;
        order = mOrders.front();
        mOrders.pop_front();
        mChanged.wakeAll();
        return true;
    }

private:
    static constexpr std::size_t kMaxLength = 2;
    xo::xoMutex mMutex;
    xo::xoWaitCondition mChanged;
    std::deque<std::string> mOrders XO_GUARDED_BY(mMutex);
    bool mClosed XO_GUARDED_BY(mMutex) = false;
};

struct Kitchen {
    OrderQueue orders;
    xo::xoSemaphore plates{2};
    xo::xoMutex mutex;
    int dishes XO_GUARDED_BY(mutex) = 0;
};

class Cook final : public xo::xoThread {
public:
    explicit Cook(Kitchen& kitchen) : mKitchen(kitchen) { startThread("cook"); }
    ~Cook() override { waitThread(INT_MAX); }

private:
    void run() override {
        std::string order;
        while (mKitchen.orders.take(order)) {
            mKitchen.plates.acquire();
            msleep(1);
            mKitchen.plates.release();
            const xo::xoMutexLocker locker(mKitchen.mutex);
            ++mKitchen.dishes;
        }
    }

    Kitchen& mKitchen;
};

bool countCash() {
    xo::xoMutex2 cash;
    if (!cash.tryLock(/*timeoutMs=*/100)) return false;
    std::cout << "nobody else counts the cash\n";
    cash.unlock();
    return true;
}

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeFull);
    int dishes = 0;
    unsigned int plates = 0;
    {
        Kitchen kitchen;
        {
            Cook first(kitchen), second(kitchen);
            for (int i = 0; i < 20; ++i) kitchen.orders.give("soup");
            kitchen.orders.close();
        }  // waits until both cooks have ended
        const xo::xoMutexLocker locker(kitchen.mutex);
        dishes = kitchen.dishes;
        plates = kitchen.plates.getNoResources();
    }
    std::cout << dishes << " dishes, " << plates << " plates free again\n";

    // The other kinds of lock: one with a time limit, and one that all processes share.
    const bool counted = countCash();
    xo::xoMutexSystem cashDesk("xoSystem example/cash desk");
    cashDesk.lock();
    std::cout << "the cash desk is ours, in every process\n";
    cashDesk.unlock();

    xo::terminateXoSystem();
    return counted && dishes == 20 && plates == 2 ? 0 : 1;
}
