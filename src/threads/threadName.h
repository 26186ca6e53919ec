// Gives threads names, which debuggers and the system show.
#ifndef XO_THREADS_THREADNAME_H
#define XO_THREADS_THREADNAME_H

#include <string>
#include <typeinfo>

namespace xo::threads {

// The name of a class as written in the source: "xo::xoThreadPeriodicalUpdater".
std::string readableName(const std::type_info& type);

// Gives the calling thread this name (UTF-8), for an attached debugger and, from Windows 10 on, for the system.
void nameCurrentThread(const std::string& name) noexcept;

}  // namespace xo::threads

#endif
