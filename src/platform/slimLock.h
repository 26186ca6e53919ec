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

    // Waits at most about that long.
    bool tryLock(DWORD timeoutMs = 0) XO_TRY_ACQUIRE(true) {
        for (DWORD waitedMs = 0; !::TryAcquireSRWLockExclusive(&mLock); ++waitedMs) {
            if (waitedMs >= timeoutMs) return false;
            ::Sleep(1);
        }
        return true;
    }

    void unlock() XO_RELEASE() { ::ReleaseSRWLockExclusive(&mLock); }

private:
    SRWLOCK mLock = SRWLOCK_INIT;
};

}  // namespace xo::platform

#endif
