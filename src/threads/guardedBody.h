// Runs the bodies of threads under the guard, and releases their locks when they fail.
#ifndef XO_THREADS_GUARDEDBODY_H
#define XO_THREADS_GUARDEDBODY_H

#include <initializer_list>

#include "xoSystem/xoMutex.h"

namespace xo::threads {

// Runs the body under the guard. True when the body returned. False when it failed; the guard has reported that, and
// the locks of the list are released as often as the thread still held them: a processor fault runs no destructors, and
// other threads must not wait for ever for a thread that has ended.
bool runReporting(void (*body)(void*), void* argument, std::initializer_list<xoMutex*> locks) noexcept;

}  // namespace xo::threads

#endif
