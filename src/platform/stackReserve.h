// The stack that code with a lock held needs, made available before the lock is taken.
#ifndef XO_PLATFORM_STACKRESERVE_H
#define XO_PLATFORM_STACKRESERVE_H

#include <cstddef>
#include <cstdint>

#include "platform/windows.h"

namespace xo::platform {

// Bytes; enough for the C runtime and the system to allocate memory, or to write to the console and to a file. A
// handler of the host may need more.
constexpr std::size_t kReservedStack = std::size_t{16} * 1024;

// A thread that has too little stack left overflows it here, where it holds no lock: a guard that handles the fault
// runs no destructors, so a lock would stay locked. Usually one comparison, because the pages are there already.
inline void reserveStack() {
    constexpr std::uintptr_t kPage = 4096;
    const char here = 0;
    const std::uintptr_t needed = reinterpret_cast<std::uintptr_t>(&here) - kReservedStack;
    auto limit = reinterpret_cast<std::uintptr_t>(reinterpret_cast<const NT_TIB*>(::NtCurrentTeb())->StackLimit);
    // Page by page downwards: the page below the limit is the guard page, whose first access makes it part of the stack
    // and moves the guard. By the address, because compilers shrink a local array that is not used as a whole.
    // https://learn.microsoft.com/en-us/windows/win32/procthread/thread-stack-size
    while (limit > needed) {
        limit -= kPage;
        static_cast<void>(*reinterpret_cast<const volatile char*>(limit));
    }
}

}  // namespace xo::platform

#endif
