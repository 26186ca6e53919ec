// A call under a lock that a processor fault may end: a guard further out catches the fault, but runs no destructor.
#ifndef XO_LOG_RELEASINGCALL_H
#define XO_LOG_RELEASINGCALL_H

namespace xo::log {

using Function = void (*)(void*);

// Calls run(argument). When a fault in it is caught further out, release(argument) is called on the way there.
void callReleasing(Function run, Function release, void* argument);

}  // namespace xo::log

#endif
