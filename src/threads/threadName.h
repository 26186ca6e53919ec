// How threads are called, for people and for debuggers.
#ifndef XO_THREADS_THREADNAME_H
#define XO_THREADS_THREADNAME_H

#include <string>
#include <typeinfo>

namespace xo::threads {

// The name of a class as its author wrote it: "xo::xoThreadPeriodicalUpdater".
std::string readableName(const std::type_info& type);

// Tells an attached debugger, and the system where it keeps such names, what the calling thread is called (UTF-8).
void nameCurrentThread(const std::string& name) noexcept;

}  // namespace xo::threads

#endif
