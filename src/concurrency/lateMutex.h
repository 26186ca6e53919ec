// The lock of a service that only one thread uses until full initialisation: it does nothing until it is made.
#ifndef XO_CONCURRENCY_LATEMUTEX_H
#define XO_CONCURRENCY_LATEMUTEX_H

#include <memory>

#include "xoSystem/xoMutex.h"

namespace xo::concurrency {

class XO_CAPABILITY("mutex") LateMutex {
public:
    // Call both only while a single thread uses the service.
    void make() {
        if (!mMutex) mMutex = std::make_unique<xoMutex>(impl::WithoutEarlyWarning());
    }
    void unmake() { mMutex.reset(); }

    bool isMade() const { return mMutex != nullptr; }

    // Clang's analysis has no way to express a lock that may be missing, so it does not look into these functions;
    // their callers are checked as if the lock were always there.
    void lock() XO_ACQUIRE() XO_NO_THREAD_SAFETY_ANALYSIS {
        if (mMutex) mMutex->lock();
    }
    void unlock() XO_RELEASE() XO_NO_THREAD_SAFETY_ANALYSIS {
        if (mMutex) mMutex->unlock();
    }

private:
    std::unique_ptr<xoMutex> mMutex;  // not atomic: it changes only while a single thread uses the service
};

// Unlocks only what it has locked, even when the mutex is made meanwhile.
class XO_SCOPED_CAPABILITY LateMutexLocker {
public:
    explicit LateMutexLocker(LateMutex& mutex) XO_ACQUIRE(mutex) XO_NO_THREAD_SAFETY_ANALYSIS
        : mMutex(mutex.isMade() ? &mutex : nullptr) {
        if (mMutex) mMutex->lock();
    }
    ~LateMutexLocker() XO_RELEASE() XO_NO_THREAD_SAFETY_ANALYSIS {
        if (mMutex) mMutex->unlock();
    }
    LateMutexLocker(const LateMutexLocker&) = delete;
    LateMutexLocker& operator=(const LateMutexLocker&) = delete;

private:
    LateMutex* mMutex;  // null when there was nothing to lock
};

}  // namespace xo::concurrency

#endif
