// VirtualMemoryAllocatorDisk: one block of committed memory, which the system may move to its page file.
// https://learn.microsoft.com/windows/win32/api/memoryapi/nf-memoryapi-virtualalloc
//
//     xo::VirtualMemoryAllocatorDisk block;
//     void* const memory = block.allocateMemory(std::uint64_t{1} << 30);
//     if (!memory) return false;
//     ...
//     block.freeMemory();
//
// To be used by one thread at a time. The object does not own the block: its destructor frees nothing, and a copy, or
// the target of a move, refers to the same block as the original. The caller frees a block once, through one of the
// objects that refer to it.
#ifndef XOSYSTEM_XOVIRTUALMEMORY_H
#define XOSYSTEM_XOVIRTUALMEMORY_H

#include <cstdint>

#include "xoSystem/xoExport.h"

namespace xo {

class XOSYSTEM_API VirtualMemoryAllocatorDisk {
public:
    // Allocates size bytes, rounded up to whole pages, readable, writable and filled with zeros. A block that the
    // object already refers to is not freed. When the allocation fails, as it always does for size 0, the result is
    // null and "Allocation failed :" is written to standard output.
    void* allocateMemory(std::uint64_t size);

    // Frees the block; does nothing if there is none or this object has already freed it.
    void freeMemory();

private:
    bool mIsAllocated = false;
    void* mAddress = nullptr;  // keeps its value after the block has been freed
};

}  // namespace xo

#endif
