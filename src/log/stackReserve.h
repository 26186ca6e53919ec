// Stack that a write of a line needs, touched before the first lock is taken.
#ifndef XO_LOG_STACKRESERVE_H
#define XO_LOG_STACKRESERVE_H

#include <cstddef>
#include <cstdint>

#include "platform/windows.h"

namespace xo::log {

constexpr std::size_t kStackOfWrite = std::size_t{32} * 1024;  // opening, rotating and writing a file, with a margin

// A function with a large frame touches each of its pages on entry.
__declspec(noinline) inline void touchStack() {
    volatile char frame[kStackOfWrite];
    frame[0] = 0;
}

// Overflows the stack now, where nothing is held, rather than in the midst of a write. Pages above the stack limit have
// been touched before; so this is one comparison, mostly.
inline void reserveStack() {
    const char here = 0;
    const auto limit = reinterpret_cast<std::uintptr_t>(reinterpret_cast<const NT_TIB*>(::NtCurrentTeb())->StackLimit);
    if (reinterpret_cast<std::uintptr_t>(&here) < limit + kStackOfWrite) touchStack();
}

}  // namespace xo::log

#endif
