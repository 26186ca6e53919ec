// Reports a fault when it occurs, before the stack is unwound.
#ifndef XO_FAULT_FAULTFILTER_H
#define XO_FAULT_FAULTFILTER_H

#include "platform/windows.h"

namespace xo::fault {

// The exception filter of callReporting: reports an exception that no inner frame has handled. C++ exceptions are then
// passed on to the catch clauses, faults end the call.
// https://learn.microsoft.com/cpp/cpp/writing-an-exception-filter
long filterFault(const EXCEPTION_POINTERS* fault);

// Reports a fault of the calling thread: its code, and a stack trace unless the thread is already sending a report.
// Does not throw; faults in it are handled.
void reportFault(const EXCEPTION_POINTERS& fault);

}  // namespace xo::fault

#endif
