// Memory in whole pages from the system. The pages are zero and take physical memory when they are first touched.
#include "xoSystem/xoVirtualMemory.h"

#include <iostream>

#include "platform/windows.h"

namespace xo {

void* VirtualMemoryAllocatorDisk::allocateMemory(std::uint64_t size) {
    mAddress = ::VirtualAlloc(/*lpAddress=*/nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    mIsAllocated = mAddress != nullptr;
    if (!mIsAllocated) std::cout << "Allocation failed :" << std::flush;
    return mAddress;
}

void VirtualMemoryAllocatorDisk::freeMemory() {
    if (!mIsAllocated) return;
    mIsAllocated = false;
    // With MEM_RELEASE the size must be 0:
    // https://learn.microsoft.com/windows/win32/api/memoryapi/nf-memoryapi-virtualfree
    ::VirtualFree(mAddress, 0, MEM_RELEASE);
}

}  // namespace xo
