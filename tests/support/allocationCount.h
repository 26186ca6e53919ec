// Counts what the C++ runtime that host and DLL share allocates while the object lives, and can refuse it. Microsoft's
// operator new is in each of the two, so what the library allocates by itself is counted there.
#ifndef XO_TESTS_ALLOCATIONCOUNT_H
#define XO_TESTS_ALLOCATIONCOUNT_H

#include <atomic>
#include <cstddef>

#include "support/importHook.h"

namespace xo::tests {

// The module that calls malloc for what the library allocates.
#if defined(_MSC_VER)
constexpr char kAllocator[] = "xoSystem.dll";
#else
constexpr char kAllocator[] = "libstdc++-6.dll";
#endif

class AllocationCount {
public:
    AllocationCount() : mHook(kAllocator, "malloc", &countingMalloc) {
        msOriginal = mHook.original<void*(std::size_t)>();
        msCount = 0;
    }

    bool isCounting() const { return mHook.isInstalled(); }
    int count() const { return msCount; }

    // From now on there is no memory, or there is again.
    static void refuseAll(bool refuses) { msRefuses = refuses; }

private:
    static void* countingMalloc(std::size_t size) {
        ++msCount;
        return msRefuses ? nullptr : msOriginal(size);
    }

    static inline void* (*msOriginal)(std::size_t) = nullptr;
    static inline std::atomic<int> msCount{0};
    static inline std::atomic<bool> msRefuses{false};

    ImportHook mHook;
};

}  // namespace xo::tests

#endif
