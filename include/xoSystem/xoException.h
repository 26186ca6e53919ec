// Guarded execution: a function whose crash becomes a report in the log and an exception for its caller.
//
//     try {
//         xo::exception::impl::ExecGuardedCode(&work, &order);
//     } catch (const std::exception& failure) {
//         discard(order, failure.what());
//     }
#ifndef XOSYSTEM_XOEXCEPTION_H
#define XOSYSTEM_XOEXCEPTION_H

#include "xoSystem/xoExport.h"

namespace xo::exception {

// Whether the library's handlers for SIGFPE, SIGILL and SIGSEGV are installed: from full initialisation to the
// outermost termination.
XOSYSTEM_API bool IsSigWatcherRegistered();

namespace impl {

// Runs the function under the guard and returns when it returns.
XOSYSTEM_API void ExecGuardedCode(void (*function)());
XOSYSTEM_API void ExecGuardedCode(void (*function)(void*), void* argument);

}  // namespace impl
}  // namespace xo::exception

#endif
