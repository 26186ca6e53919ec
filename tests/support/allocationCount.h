// Counts what the C++ runtime that host and DLL share allocates while the object lives, and can refuse it. Microsoft's
// operator new is in each of the two, so what the library allocates by itself is counted there.
#ifndef XO_TESTS_ALLOCATIONCOUNT_H
#define XO_TESTS_ALLOCATIONCOUNT_H

#include <atomic>
#include <climits>
#include <cstddef>
#include <cstdint>

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

// Lets the C++ runtime allocate only blocks of up to maxBytes while the object lives, and only so many of them.
class ScarceMemory {
public:
    explicit ScarceMemory(std::size_t maxBytes, int count = INT_MAX) : mHook(kAllocator, "malloc", &allocate) {
        msMaxBytes = maxBytes;
        msLeft = count;
    }

    bool isInstalled() const { return mHook.isInstalled(); }

private:
    static void* allocate(std::size_t size) {
        if (size > msMaxBytes || msLeft == 0) return nullptr;
        --msLeft;
        return ImportHook::behind(&allocate)(size);
    }

    static inline std::atomic<std::size_t> msMaxBytes{SIZE_MAX};
    static inline std::atomic<int> msLeft{INT_MAX};

    const ImportHook mHook;
};

}  // namespace xo::tests

#endif
