// The library's handlers for the signals of a program that faults outside any guard.
#ifndef XO_FAULT_SIGNALWATCH_H
#define XO_FAULT_SIGNALWATCH_H

namespace xo::fault {

// Reports SIGFPE, SIGILL and SIGSEGV of the calling thread from now on, each once: the runtime library forgets a
// handler as it calls it. It keeps the handlers of these three for each thread by itself.
// https://learn.microsoft.com/en-us/cpp/c-runtime-library/reference/signal
void installSignalWatch();

// The same for a thread of the library's own, at its start, as long as the watch is installed.
void watchSignalsOfThread();

// Gives the three back to the runtime library, for the calling thread, and arms no more threads.
void removeSignalWatch();

}  // namespace xo::fault

#endif
