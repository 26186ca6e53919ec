// The stack that writing a line needs, made available before the first lock is taken.
#ifndef XO_LOG_STACKRESERVE_H
#define XO_LOG_STACKRESERVE_H

#include <cstddef>
#include <cstdint>

#include "platform/windows.h"

namespace xo::log {

// Bytes; enough for the C runtime and the system to write to the console and to a file. A handler of the host may need
// more.
constexpr std::size_t kStackOfWrite = std::size_t{16} * 1024;

// A function with a frame of several pages touches each of them on entry, by code that the compiler adds.
// https://learn.microsoft.com/en-us/windows/win32/devnotes/-win32-chkstk
__declspec(noinline) inline void touchStack() {
    volatile char frame[kStackOfWrite];
    frame[0] = 0;
}

// A thread that has too little stack left overflows it here, where it holds no lock, and not while it writes. Usually
// one comparison: pages above the stack limit have been touched before.
inline void reserveStack() {
    const char here = 0;
    const auto limit = reinterpret_cast<std::uintptr_t>(reinterpret_cast<const NT_TIB*>(::NtCurrentTeb())->StackLimit);
    if (reinterpret_cast<std::uintptr_t>(&here) < limit + kStackOfWrite) touchStack();
}

}  // namespace xo::log

#endif
