// The end of a time limit in milliseconds, as the wait functions of Windows take it.
#ifndef XO_PLATFORM_DEADLINE_H
#define XO_PLATFORM_DEADLINE_H

#include "platform/windows.h"

namespace xo::platform {

// Counted from its making. A limit of INFINITE never ends, and one of 0 has ended: neither needs the clock.
class Deadline {
public:
    explicit Deadline(DWORD limitMs) : mLimitMs(limitMs), mStartMs(isRunning() ? ::GetTickCount64() : 0) {}

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
