// Calls that need more stack than the calling thread may have left.
#ifndef XO_PLATFORM_OWNSTACK_H
#define XO_PLATFORM_OWNSTACK_H

#include <cstddef>

namespace xo::platform {

// Calls function(argument) on a stack of the given size in bytes, which is made for this call and freed after it. The
// thread stays the same, so the function may lock again the recursive locks that the thread holds. A C++ exception or a
// processor fault that leaves the function arrives at the caller; a fault is raised there once more, with its code and
// parameters. Returns false, without having called the function, when there is no memory for the stack.
bool callOnOwnStack(std::size_t size, void (*function)(void*), void* argument);

// The bytes of stack that the calling thread has left; 0 on a stack whose limits the system does not know.
std::size_t stackLeft();

}  // namespace xo::platform

#endif
