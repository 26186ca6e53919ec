// Brings a thread that has exhausted its stack back to its innermost guard on systems that do not ask frames then.
#ifndef XO_FAULT_OVERFLOWRESCUE_H
#define XO_FAULT_OVERFLOWRESCUE_H

#include "fault/guardedCall.h"

namespace xo::fault {

// Windows asks the filters of frames, on the last pages of the stack, and there this does nothing. Wine ends the
// process instead, but asks vectored handlers first. So one of those unwinds the stack on paper, up to the function
// that the guard called, and lets that function return false.
class OverflowRescue {
public:
    using GuardedFunction = bool (*)(void*);

    // The functions that a guard calls: on the stack below the first a fault is reported, below the second it is not.
    OverflowRescue(GuardedFunction reporting, GuardedFunction silent);
    ~OverflowRescue();
    OverflowRescue(const OverflowRescue&) = delete;
    OverflowRescue& operator=(const OverflowRescue&) = delete;

private:
    void* mHandler;  // null on Windows
};

}  // namespace xo::fault

#endif
