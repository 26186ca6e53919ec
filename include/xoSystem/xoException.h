// Guarded execution: a function whose crash becomes a report in the log and an exception for its caller.
//
//     try {
//         xo::exception::impl::ExecGuardedCode(&work, &order);
//     } catch (const std::exception& failure) {
//         discard(order, failure.what());
//     }
//
// A report is one CRITICAL line in the log, if there is one that wants it, and one error event of the source "xoSystem"
// in the Windows event log. Where the processor or a throw ended the function, it tells what happened and the whole way
// there, innermost first:
//
//     Catch SEH Exception EXCEPTION_ACCESS_VIOLATION 0xc0000005, PID 3120 TID 7004
//         # fillOrder @0x140001a50 in C:\shop\order.cpp line: 57
//         # work @0x140001b10 in C:\shop\main.cpp line: 23
//         # (unconfident) BaseThreadInitThunk @0x7b627e40 in C:\Windows\System32\kernel32.dll
//
// Names and lines come from the PDBs beside the modules, by DbgHelp; what that cannot find is left empty. "Unconfident"
// is a name that DbgHelp has flagged, as it does with exported ones. Of an exhausted stack the 64 innermost frames are
// told, of any other at most 1000. A report is made by the thread that failed; threads that fail at once walk their
// stacks one after another. DbgHelp is loaded for each report and let go after it, so that no module's PDB stays open.
// Most of a report's time, some tens of milliseconds, goes into reading the PDBs of the modules on the stack.
#ifndef XOSYSTEM_XOEXCEPTION_H
#define XOSYSTEM_XOEXCEPTION_H

#include "xoSystem/xoExport.h"

namespace xo::exception {

// Whether the library's handlers for SIGFPE, SIGILL and SIGSEGV are installed: from full initialisation to the
// outermost termination. They report what happens outside any guard, each signal once, and save nothing: the fault
// happens again and the process ends. On Windows the C runtime keeps the handlers of these signals for each thread:
// they watch the thread that initialised the library, and the library's own threads that start meanwhile.
XOSYSTEM_API bool IsSigWatcherRegistered();

namespace impl {

// Runs the function under the guard, on the calling thread, and returns when it returns. Any thread may call, guards
// may be nested, and the library need not be initialised. A call that succeeds costs a few nanoseconds. The first one
// on a thread reserves a sixteenth of the thread's stack, 64 KB at most, for the report of a stack overflow. Otherwise:
//
// - A standard exception leaves a report of the throw and one of its text, and the caller gets a plain std::exception
//   with the text, neither a runtime_error nor a logic_error. An exception whose what() is null or faults has the text
//   "Unknown".
// - Any other object that is thrown leaves the same two reports, and the caller gets a std::runtime_error with the text
//   "Unknown std exception".
// - A fault of the processor leaves a report and ends the function without running its destructors: locks it held stay
//   held. The caller gets a plain std::exception "Catch an SEH exception", after a second report with this text. A
//   stack that overflowed is whole again. A null function is such a fault.
//
// What the function handles itself is not reported. abort, exit and the end of the thread stay what they are, and so
// does, with GCC's runtime, an exception of Microsoft's: it is reported, but no catch clause here takes it.
XOSYSTEM_API void ExecGuardedCode(void (*function)());
XOSYSTEM_API void ExecGuardedCode(void (*function)(void*), void* argument);

}  // namespace impl
}  // namespace xo::exception

#endif
