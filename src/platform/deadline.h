// The end of a time limit in milliseconds, for the wait functions of Windows.
#ifndef XO_PLATFORM_DEADLINE_H
#define XO_PLATFORM_DEADLINE_H

#include "platform/windows.h"

namespace xo::platform {

// The limit counts from the construction. INFINITE never ends and 0 has ended at once; neither reads the clock. Several
// waits that share a deadline together take no longer than the limit.
class Deadline {
public:
    explicit Deadline(DWORD limitMs) : mLimitMs(limitMs), mStartMs(isRunning() ? ::GetTickCount64() : 0) {}

    // What is left, to be passed to a wait function: 0 once the limit has passed, INFINITE if there is none.
    DWORD remainingMs() const {
        if (!isRunning()) return mLimitMs;
        const ULONGLONG elapsedMs = ::GetTickCount64() - mStartMs;
        return elapsedMs < mLimitMs ? static_cast<DWORD>(mLimitMs - elapsedMs) : 0;
    }

private:
    bool isRunning() const { return mLimitMs != 0 && mLimitMs != INFINITE; }

    DWORD mLimitMs;
    ULONGLONG mStartMs;
};

}  // namespace xo::platform

#endif
