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

    // Whether the calling thread owns the section. Only the section itself knows that; the answer about the calling
    // thread cannot change meanwhile.
    static bool isOwnedByCaller(const CRITICAL_SECTION& section) {
        return section.OwningThread == reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(::GetCurrentThreadId()));
    }
};

}  // namespace xo::impl

#endif
