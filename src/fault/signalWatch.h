// The library's handlers for the signals of a program that faults outside any guard.
#ifndef XO_FAULT_SIGNALWATCH_H
#define XO_FAULT_SIGNALWATCH_H

namespace xo::fault {

// Reports SIGFPE, SIGILL and SIGSEGV from now on, each once: the runtime library forgets a handler as it calls it.
void installSignalWatch();

// Gives the three back to the runtime library.
void removeSignalWatch();

}  // namespace xo::fault

#endif
