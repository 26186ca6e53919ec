// What ends a wait: its time limit, and a request from another thread.
#ifndef XO_PIPE_CANCELLATION_H
#define XO_PIPE_CANCELLATION_H

#include <atomic>

#include "platform/deadline.h"
#include "platform/handle.h"

namespace xo::pipe {

using platform::Deadline;

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
