// VirtualMemoryAllocatorDisk: holds one block of memory that the system commits, in its pagefile if need be.
//
//     xo::VirtualMemoryAllocatorDisk block;
//     void* const room = block.allocateMemory(std::uint64_t{1} << 30);
//     if (!room) return false;
//     ...
//     block.freeMemory();
//
// For one thread at a time. It does not own the block as other classes own what they allocate: its destructor frees
// nothing, and a copy, or the target of a move, holds the same block as the original. The caller frees a block once, by
// one of those that hold it.
#ifndef XOSYSTEM_XOVIRTUALMEMORY_H
#define XOSYSTEM_XOVIRTUALMEMORY_H

#include <cstdint>

#include "xoSystem/xoExport.h"

namespace xo {

class XOSYSTEM_API VirtualMemoryAllocatorDisk {
public:
    // That many bytes of zeros, rounded up to pages, for reading and writing. A block that is held already is
    // forgotten, not freed. Null, with "Allocation failed :" on standard output, when the system refuses; it always
    // refuses 0.
    void* allocateMemory(std::uint64_t size);

    // Frees the block that is held; does nothing when there is none, or none any more.
    void freeMemory();

private:
    bool mIsAllocated = false;
    void* mAddress = nullptr;  // keeps its value after the block has been freed
};

}  // namespace xo

#endif
