// A counting semaphore on a mutex and a condition: a semaphore of the kernel gives one unit at each wait, not several.
#include "xoSystem/xoSemaphore.h"

namespace xo {

xoSemaphore::xoSemaphore(unsigned int initialCount) : mCount(initialCount) {}

xoSemaphore::~xoSemaphore() = default;

void xoSemaphore::acquire(unsigned int n) {
    const xoMutexLocker locker(mMutex);
    // All n at once: threads that each held a part of what they need could wait for each other for ever.
    while (getNoResources() < n) mCondition.wait(&mMutex);
    mCount.store(getNoResources() - n, std::memory_order_relaxed);
}

void xoSemaphore::release(unsigned int n) {
    if (n == 0) return;
    const xoMutexLocker locker(mMutex);
    mCount.store(getNoResources() + n, std::memory_order_relaxed);
    mCondition.wakeAll();  // wakeOne might wake a thread that needs more than there is, instead of one that has enough
}

}  // namespace xo
