// The clock of the system as the library sees it: it stands still until the test sets it.
#ifndef XO_TESTS_LOG_SETTABLECLOCK_H
#define XO_TESTS_LOG_SETTABLECLOCK_H

#include <cstdint>

#include "support/importHook.h"

namespace xo::tests {

class SettableClock {
public:
    bool isInstalled() const { return mHook.isInstalled(); }

    static inline std::int64_t second = 0;  // since the begin of 1970

private:
    static void WINAPI tell(LPFILETIME time) {
        const std::int64_t ticks = second * 10000000 + 116444736000000000;
        time->dwLowDateTime = static_cast<DWORD>(ticks);
        time->dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    }

    ImportHook mHook{"xoSystem.dll", "GetSystemTimeAsFileTime", &tell};
};

}  // namespace xo::tests

#endif
