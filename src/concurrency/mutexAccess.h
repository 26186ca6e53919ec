// The library's own way to the critical section inside an xoMutex.
#ifndef XO_CONCURRENCY_MUTEXACCESS_H
#define XO_CONCURRENCY_MUTEXACCESS_H

#include "platform/windows.h"
#include "xoSystem/xoMutex.h"

namespace xo::impl {

struct MutexAccess {
    static CRITICAL_SECTION& sectionOf(const xoMutex& mutex) {
        return *static_cast<CRITICAL_SECTION*>(mutex.getMutexData());
    }

    // Whether the calling thread owns the section. Windows has no function for that, but OwningThread holds the owner's
    // identifier, and only the calling thread itself can set it to its own or clear it.
    static bool isOwnedByCaller(const CRITICAL_SECTION& section) {
        return section.OwningThread == reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(::GetCurrentThreadId()));
    }
};

}  // namespace xo::impl

#endif
