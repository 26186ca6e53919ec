// Ends the innermost guarded call of a thread that has exhausted its stack, on a system that calls no exception filters
// then.
#ifndef XO_FAULT_OVERFLOWRESCUE_H
#define XO_FAULT_OVERFLOWRESCUE_H

#include "fault/guardedCall.h"

namespace xo::fault {

// At a stack overflow Windows calls the exception filters on the reserved pages of the stack, and this class does
// nothing. Wine ends the process without calling them, but it calls the vectored handlers before. So a vectored handler
// unwinds a copy of the context to the function that the innermost guard has called, and lets the thread continue as if
// that function had returned false.
// https://learn.microsoft.com/windows/win32/debug/vectored-exception-handling
class OverflowRescue {
public:
    using GuardedFunction = bool (*)(void*);

    // The functions that callReporting and callSilently call. An overflow in the first one is reported, an overflow in
    // the second one is not.
    OverflowRescue(GuardedFunction reporting, GuardedFunction silent);
    ~OverflowRescue();
    OverflowRescue(const OverflowRescue&) = delete;
    OverflowRescue& operator=(const OverflowRescue&) = delete;

private:
    void* mHandler;  // null on Windows
};

}  // namespace xo::fault

#endif
