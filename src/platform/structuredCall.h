// Calls that a processor fault may end. A fault that is handled further out unwinds the stack without running C++
// destructors, so what such a call holds is released by a function of its own. All structured exception handling
// (__try) of the library is in this file.
#ifndef XO_PLATFORM_STRUCTUREDCALL_H
#define XO_PLATFORM_STRUCTUREDCALL_H

#include <cstdint>

#include "platform/windows.h"

namespace xo::platform {

using Function = void (*)(void*);

// Calls run(argument), and after it release(argument) however run ends: by its return, by an exception, or by a fault
// that is handled further out. After a fault the destructors of run's locals have not run, so release must not rely on
// them.
void callReleasing(Function run, Function release, void* argument);

// Calls release of each callReleasing of this thread whose frame lies in that part of the stack, the innermost first.
// For code that abandons the frames there without unwinding them.
void releaseCallsBetween(std::uintptr_t low, std::uintptr_t high);

// Calls body(argument) and returns its result; false when a fault in it made the filter return
// EXCEPTION_EXECUTE_HANDLER. The filter runs at the fault, before anything is unwound.
bool callFiltered(bool (*body)(void*), void* argument, long (*filter)(const EXCEPTION_POINTERS&, void*),
                  void* filterArgument);

}  // namespace xo::platform

#endif
