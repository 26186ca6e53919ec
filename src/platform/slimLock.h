// A slim lock that clang's thread safety analysis knows. It costs nothing to make and nothing to leave behind.
#ifndef XO_PLATFORM_SLIMLOCK_H
#define XO_PLATFORM_SLIMLOCK_H

#include "platform/windows.h"
#include "xoSystem/xoExport.h"

namespace xo::platform {

// Not recursive.
class XO_CAPABILITY("mutex") SlimLock {
public:
    constexpr SlimLock() = default;
    SlimLock(const SlimLock&) = delete;
    SlimLock& operator=(const SlimLock&) = delete;

    void lock() XO_ACQUIRE() { ::AcquireSRWLockExclusive(&mLock); }

    // Waits at most about that long. One Sleep may take as long as a tick of the system's timer, 16 ms, so the time is
    // measured.
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

}  // namespace xo::platform

#endif
