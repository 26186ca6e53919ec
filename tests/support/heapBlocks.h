// The blocks of memory that this process has allocated, on all its heaps.
#ifndef XO_TESTS_HEAPBLOCKS_H
#define XO_TESTS_HEAPBLOCKS_H

#include "platform/windows.h"

namespace xo::tests {

inline int heapBlocks() {
    HANDLE heaps[64];
    const DWORD count = ::GetProcessHeaps(64, heaps);
    int blocks = 0;
    for (DWORD i = 0; i < count; ++i) {
        PROCESS_HEAP_ENTRY entry{};
        ::HeapLock(heaps[i]);
        while (::HeapWalk(heaps[i], &entry)) blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
        ::HeapUnlock(heaps[i]);
    }
    return blocks;
}

}  // namespace xo::tests

#endif
