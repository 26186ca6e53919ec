// What is done about a fault at the moment it happens.
#ifndef XO_FAULT_FAULTFILTER_H
#define XO_FAULT_FAULTFILTER_H

#include "platform/windows.h"

namespace xo::fault {

// The filter of a guarded frame: reports what no inner frame took. Language exceptions go on to the catch clauses.
long filterFault(const EXCEPTION_POINTERS* fault);

// Reports the fault of the calling thread: what, where, with a stack trace unless the thread is reporting already. No
// exception and no fault comes out of it.
void reportFault(const EXCEPTION_POINTERS& fault);

}  // namespace xo::fault

#endif
