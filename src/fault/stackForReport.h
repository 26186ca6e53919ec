// Enough stack to report a fault, also for a thread that has exhausted its own.
#ifndef XO_FAULT_STACKFORREPORT_H
#define XO_FAULT_STACKFORREPORT_H

#include "fault/guardedCall.h"

namespace xo::fault {

// Whether the calling thread has enough stack left to write a report.
bool hasStackForReport();

// Calls the function by callSilently: on the current stack if enough of it is left, otherwise on a stack allocated for
// this call. The thread stays the same, so that it can take again the locks that it holds. If the allocation fails, the
// function runs on the current stack.
void callWithEnoughStack(Function function, void* argument);

}  // namespace xo::fault

#endif
