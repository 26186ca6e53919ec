// Counts what the C++ runtime that host and DLL share allocates while the object lives.
#ifndef XO_TESTS_ALLOCATIONCOUNT_H
#define XO_TESTS_ALLOCATIONCOUNT_H

#include <atomic>
#include <cstddef>

#include "support/importHook.h"

namespace xo::tests {

class AllocationCount {
public:
    AllocationCount() : mHook("libstdc++-6.dll", "malloc", &countingMalloc) {
        msOriginal = mHook.original<void*(std::size_t)>();
        msCount = 0;
    }

    bool isCounting() const { return mHook.isInstalled(); }
    int count() const { return msCount; }

private:
    static void* countingMalloc(std::size_t size) {
        ++msCount;
        return msOriginal(size);
    }

    static inline void* (*msOriginal)(std::size_t) = nullptr;
    static inline std::atomic<int> msCount{0};

    ImportHook mHook;
};

}  // namespace xo::tests

#endif
