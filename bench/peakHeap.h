// How much of the C++ heap a function takes. Host and DLL share the heap; what a FILE or the system buffers is not
// seen. For the C++ runtime of this build alone: Visual Studio's operator new lies in each module.
#ifndef XO_BENCH_PEAKHEAP_H
#define XO_BENCH_PEAKHEAP_H

#include <malloc.h>

#include <algorithm>
#include <cstdint>

#include "harness.h"
#include "support/importHook.h"

namespace bench {

class PeakHeap {
public:
    PeakHeap() {
        require(mTakes.isInstalled() && mGives.isInstalled(), "the heap cannot be watched");
        msMalloc = mTakes.original<void*(std::size_t)>();
        msFree = mGives.original<void(void*)>();
        msHeld = msPeak = 0;
    }

    // Bytes since the object was made: what is held now, and the most that was held at a time.
    double held() const { return static_cast<double>(msHeld); }
    double peak() const { return static_cast<double>(msPeak); }

private:
    static void* take(std::size_t size) {
        void* const block = msMalloc(size);
        msHeld += static_cast<std::int64_t>(::_msize(block));
        msPeak = (std::max)(msPeak, msHeld);
        return block;
    }
    static void give(void* block) {
        if (block) msHeld -= static_cast<std::int64_t>(::_msize(block));
        msFree(block);
    }

    static inline void* (*msMalloc)(std::size_t) = nullptr;
    static inline void (*msFree)(void*) = nullptr;
    static inline std::int64_t msHeld = 0;
    static inline std::int64_t msPeak = 0;

    xo::tests::ImportHook mTakes{"libstdc++-6.dll", "malloc", &take};
    xo::tests::ImportHook mGives{"libstdc++-6.dll", "free", &give};
};

}  // namespace bench

#endif
