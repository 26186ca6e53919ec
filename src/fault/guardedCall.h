// Calls that end, instead of the process, when a processor fault occurs in them.
#ifndef XO_FAULT_GUARDEDCALL_H
#define XO_FAULT_GUARDEDCALL_H

#include <cstdint>

#include "platform/structuredCall.h"

namespace xo::fault {

using platform::Function;

// Calls the function; true when it returns. A fault in it is reported and ends the call, and the result is false. The
// thread can continue then: the guard page of its stack is restored, and no floating-point fault is pending. A C++
// exception that leaves the function is reported and passed on to the caller.
bool callReporting(Function function, void* argument);

// The same without a report, for the steps that write a report. *faultCode receives the code of the fault unless the
// pointer is null. The function must not throw.
bool callSilently(Function function, void* argument, std::uint32_t* faultCode = nullptr);

}  // namespace xo::fault

#endif
