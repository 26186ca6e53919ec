// Runs thread bodies that hold locks under the guard.
#ifndef XO_THREADS_GUARDEDBODY_H
#define XO_THREADS_GUARDEDBODY_H

#include <initializer_list>

#include "xoSystem/xoMutex.h"

namespace xo::threads {

// Runs the body under the guard. True when it returned. When it failed, the guard has reported it, and whatever the
// body then still held of the locks is released: a fault runs no destructor on its way out, and other threads must not
// wait for ever for a lock whose owner is gone.
bool runGuarded(void (*body)(void*), void* argument, std::initializer_list<xoMutex*> locks) noexcept;

}  // namespace xo::threads

#endif
