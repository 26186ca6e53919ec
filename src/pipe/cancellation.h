// A request to cancel, from any thread, which ends the waits of another one.
#ifndef XO_PIPE_CANCELLATION_H
#define XO_PIPE_CANCELLATION_H

#include <atomic>

#include "platform/deadline.h"
#include "platform/handle.h"

namespace xo::pipe {

using platform::Deadline;

// A request that stays until it is cleared. An event represents it, because a call of CancelIoEx just before an
// operation starts would have no effect. request() and isRequested() may be called from any thread.
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
    HANDLE event() const { return mEvent.get(); }  // null when it could not be made

private:
    platform::KernelHandle mEvent{::CreateEventW(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                                                 /*bInitialState=*/FALSE,
                                                 /*lpName=*/nullptr)};
    std::atomic<bool> mIsRequested{false};  // so that a check before an operation needs no system call
};

}  // namespace xo::pipe

#endif
