// The library's signal handlers, which report faults outside any guard.
#ifndef XO_FAULT_SIGNALWATCH_H
#define XO_FAULT_SIGNALWATCH_H

namespace xo::fault {

// Reports SIGFPE, SIGILL and SIGSEGV of the calling thread from now on, each once: the C runtime resets a handler
// before it calls it. It keeps the handlers of these three signals separately for each thread.
// https://learn.microsoft.com/cpp/c-runtime-library/reference/signal
void installSignalWatch();

// Does the same if the watch is installed. Each thread of the library calls it at its start.
void watchSignalsOfThread();

// Restores the default handling on the calling thread. Threads that start later are not watched.
void removeSignalWatch();

}  // namespace xo::fault

#endif
