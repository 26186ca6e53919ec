// What ends a wait: its time limit, and a request from another thread.
#ifndef XO_PIPE_CANCELLATION_H
#define XO_PIPE_CANCELLATION_H

#include <atomic>

#include "platform/handle.h"

namespace xo::pipe {

// The end of a time limit, counted from its making.
class Deadline {
public:
    explicit Deadline(unsigned limitMs) : mLimitMs(limitMs), mStart(isRunning() ? ::GetTickCount64() : 0) {}

    // As the wait functions take it.
    DWORD remainingMs() const {
        if (!isRunning()) return mLimitMs;
        const ULONGLONG elapsedMs = ::GetTickCount64() - mStart;
        return elapsedMs < mLimitMs ? static_cast<DWORD>(mLimitMs - elapsedMs) : 0;
    }

private:
    bool isRunning() const { return mLimitMs != 0 && mLimitMs != INFINITE; }

    unsigned mLimitMs;
    ULONGLONG mStart;
};

// A request that stays until it is cleared. It is an event, because a call of CancelIoEx just before the wait begins
// would have no effect.
class Cancellation {
public:
    void request() {
        mIsRequested = true;
        ::SetEvent(mEvent.get());
    }
    void clear() {
        mIsRequested = false;
        ::ResetEvent(mEvent.get());
    }
    bool isRequested() const { return mIsRequested; }
    HANDLE event() const { return mEvent.get(); }

private:
    platform::KernelHandle mEvent{::CreateEventW(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                                                 /*bInitialState=*/FALSE,
                                                 /*lpName=*/nullptr)};
    std::atomic<bool> mIsRequested{false};
};

}  // namespace xo::pipe

#endif
