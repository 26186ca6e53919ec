// Guarded execution: a function whose crash becomes a report in the log and an exception for its caller.
//
//     try {
//         xo::exception::impl::ExecGuardedCode(&work, &order);
//     } catch (const std::exception& failure) {
//         discard(order, failure.what());
//     }
//
// A report is one CRITICAL line in the library's log, if there is a log and it accepts CRITICAL lines, and one error
// event of the source "xoSystem" in the Windows event log. The report of a processor fault or a throw names it and
// contains the stack trace, innermost frame first:
//
//     Catch SEH Exception EXCEPTION_ACCESS_VIOLATION 0xc0000005, PID 3120 TID 7004
//         # fillOrder @0x140001a50 in C:\shop\order.cpp line: 57
//         # work @0x140001b10 in C:\shop\main.cpp line: 23
//         # (unconfident) BaseThreadInitThunk @0x7b627e40 in C:\Windows\System32\kernel32.dll
//
// DbgHelp reads names and lines from the PDBs beside the modules; a name that it cannot find is left empty.
// "(unconfident)" marks a name that DbgHelp has flagged, as it does for exported names. The trace of an exhausted stack
// has at most the 64 innermost frames, any other at most 1000. The thread that failed writes the report; threads that
// fail at the same time walk their stacks one after another. DbgHelp is loaded for each report and unloaded after it,
// so that no module's PDB stays open. A report takes some tens of milliseconds, most of them to read PDBs.
#ifndef XOSYSTEM_XOEXCEPTION_H
#define XOSYSTEM_XOEXCEPTION_H

#include "xoSystem/xoExport.h"

namespace xo::exception {

// Whether the library's handlers for SIGFPE, SIGILL and SIGSEGV are installed: from full initialisation to the
// outermost termination. They report faults outside any guard, each signal once, but do not prevent the end of the
// process: the faulting instruction runs again, without a handler. The C runtime of Windows keeps the handlers of these
// signals separately for each thread, so they are installed on the thread that initialised the library, and on threads
// that the library starts while they are installed. Faults of other threads are reported by an unhandled-exception
// filter, which calls the one that the host had set before, and is taken back at the termination.
// https://learn.microsoft.com/cpp/c-runtime-library/reference/signal
XOSYSTEM_API bool IsSigWatcherRegistered();

namespace impl {

// Calls the function under the guard, on the calling thread, and returns when it returns. Any thread may call, guards
// may be nested, and the library need not be initialised. A call that succeeds costs a few nanoseconds. The first call
// on a thread reserves a sixteenth of the thread's stack, 64 KB at most, for the report of a stack overflow. If the
// function does not return:
//
// - A standard exception causes two reports, of the throw and of its text. The caller gets a plain std::exception with
//   that text, neither a runtime_error nor a logic_error. If what() returns null or faults, the text is "Unknown".
// - Any other thrown object causes the same two reports, the second with "Unknown". The caller gets a
//   std::runtime_error "Unknown std exception".
// - A processor fault is reported and ends the function without running destructors: locks that it held stay held. The
//   caller gets a plain std::exception "Catch an SEH exception", after a second report with this text. After a stack
//   overflow the guard page of the stack is restored. To pass a null function is a processor fault.
//
// Exceptions and faults that the function handles itself are not reported. abort, exit and the end of the thread are
// not intercepted. Where the library is built with GCC's runtime, an exception that Microsoft's runtime has thrown is
// reported and then passed on to the caller unchanged.
XOSYSTEM_API void ExecGuardedCode(void (*function)());
XOSYSTEM_API void ExecGuardedCode(void (*function)(void*), void* argument);

}  // namespace impl
}  // namespace xo::exception

#endif
