// A slim reader/writer lock of Windows, used exclusively, for clang's thread safety analysis. It is the library's lock
// for private data: its constructor is constexpr and its destructor trivial, so it may be a static object.
#ifndef XO_PLATFORM_SLIMLOCK_H
#define XO_PLATFORM_SLIMLOCK_H

#include "platform/windows.h"
#include "xoSystem/xoExport.h"

namespace xo::platform {

// Not recursive: a thread that locks it twice waits for ever. It costs no handle, and needs neither creation nor
// destruction.
class XO_CAPABILITY("mutex") SlimLock {
public:
    constexpr SlimLock() = default;
    SlimLock(const SlimLock&) = delete;
    SlimLock& operator=(const SlimLock&) = delete;

    void lock() XO_ACQUIRE() { ::AcquireSRWLockExclusive(&mLock); }

    // Waits at most about timeoutMs milliseconds. One Sleep may take as long as a tick of the system's timer, 16 ms, so
    // the time is measured.
    bool tryLock(DWORD timeoutMs = 0) XO_TRY_ACQUIRE(true) {
        if (::TryAcquireSRWLockExclusive(&mLock)) return true;
        const ULONGLONG begin = ::GetTickCount64();
        while (::GetTickCount64() - begin < timeoutMs) {
            ::Sleep(1);
            if (::TryAcquireSRWLockExclusive(&mLock)) return true;
        }
        return false;
    }

    void unlock() XO_RELEASE() { ::ReleaseSRWLockExclusive(&mLock); }

private:
    friend class SlimCondition;

    SRWLOCK mLock = SRWLOCK_INIT;
};

// Holds a SlimLock for a scope.
class XO_SCOPED_CAPABILITY SlimLocker {
public:
    explicit SlimLocker(SlimLock& lock) XO_ACQUIRE(lock) : mLock(lock) { mLock.lock(); }
    ~SlimLocker() XO_RELEASE() { mLock.unlock(); }
    SlimLocker(const SlimLocker&) = delete;
    SlimLocker& operator=(const SlimLocker&) = delete;

private:
    SlimLock& mLock;
};

// A condition variable for threads that hold a SlimLock. It may be a static object, too.
class SlimCondition {
public:
    constexpr SlimCondition() = default;
    SlimCondition(const SlimCondition&) = delete;
    SlimCondition& operator=(const SlimCondition&) = delete;

    // Releases the lock while it waits. It may return without a wake-up, so the caller must check its condition again.
    void wait(SlimLock& lock, DWORD timeoutMs) XO_REQUIRES(lock) {
        ::SleepConditionVariableSRW(&mCondition, &lock.mLock, timeoutMs, /*Flags=*/0);
    }
    void wakeAll() { ::WakeAllConditionVariable(&mCondition); }

private:
    CONDITION_VARIABLE mCondition = CONDITION_VARIABLE_INIT;
};

}  // namespace xo::platform

#endif
