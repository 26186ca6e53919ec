// The stack that writing a line needs, made available before the first lock is taken.
#ifndef XO_LOG_STACKRESERVE_H
#define XO_LOG_STACKRESERVE_H

#include <cstddef>
#include <cstdint>

#include "platform/windows.h"

namespace xo::log {

// Enough for the C runtime's and the system's part of writing to the console and to a file. A handler of the host may
// need more.
constexpr std::size_t kStackOfWrite = std::size_t{16} * 1024;

// The compiler has a function with a frame of several pages touch each of them on entry.
// https://learn.microsoft.com/en-us/windows/win32/devnotes/-win32-chkstk
__declspec(noinline) inline void touchStack() {
    volatile char frame[kStackOfWrite];
    frame[0] = 0;
}

// Makes a thread that has too little stack left overflow it here, where it holds nothing, and not while it writes.
// Usually one comparison: pages above the stack limit have been touched before.
inline void reserveStack() {
    const char here = 0;
    const auto limit = reinterpret_cast<std::uintptr_t>(reinterpret_cast<const NT_TIB*>(::NtCurrentTeb())->StackLimit);
    if (reinterpret_cast<std::uintptr_t>(&here) < limit + kStackOfWrite) touchStack();
}

}  // namespace xo::log

#endif
