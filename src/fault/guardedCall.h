// Calls that a processor fault cannot leave: the structured frames on which the guard stands.
#ifndef XO_FAULT_GUARDEDCALL_H
#define XO_FAULT_GUARDEDCALL_H

#include <cstdint>

#include "platform/structuredCall.h"

namespace xo::fault {

using platform::Function;

// Calls the function. A fault in it is reported and ends the call, after which the thread is as good as before: a guard
// page stands at the end of its stack again, no floating-point fault is pending. False then. A language exception that
// leaves the function is reported and goes on to the caller.
bool callGuarded(Function function, void* argument);

// The same without a report, for the steps of a report itself; the code of the fault goes to *faultCode unless that is
// null. The function lets no language exception out.
bool callQuietly(Function function, void* argument, std::uint32_t* faultCode = nullptr);

}  // namespace xo::fault

#endif
