// The handles that this process has open. Wine's own count of them reads 0.
#ifndef XO_TESTS_OPENHANDLES_H
#define XO_TESTS_OPENHANDLES_H

#include <cstdint>

#include "platform/windows.h"

namespace xo::tests {

inline int openHandles() {
    int count = 0;
    DWORD flags = 0;
    for (std::uintptr_t value = 4; value < 0x1000; value += 4)
        count += ::GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1 : 0;
    return count;
}

}  // namespace xo::tests

#endif
