#include "threads/guardedBody.h"

#include "platform/windows.h"
#include "xoSystem/xoException.h"

namespace xo {

struct impl::MutexAccess {
    static CRITICAL_SECTION& sectionOf(const xoMutex& lock) {
        return *static_cast<CRITICAL_SECTION*>(lock.getMutexData());
    }
};

namespace threads {
namespace {

// The critical section alone knows who owns the lock and how often.
bool isOwner(const CRITICAL_SECTION& section) {
    return section.OwningThread == reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(::GetCurrentThreadId()));
}

void releaseWholly(const xoMutex& lock) {
    CRITICAL_SECTION& section = impl::MutexAccess::sectionOf(lock);
    while (isOwner(section)) ::LeaveCriticalSection(&section);
}

}  // namespace

bool runGuarded(void (*body)(void*), void* argument, std::initializer_list<xoMutex*> locks) noexcept {
    try {
        exception::impl::ExecGuardedCode(body, argument);
        return true;
    } catch (...) {
        for (const xoMutex* const lock : locks) releaseWholly(*lock);
        return false;
    }
}

}  // namespace threads
}  // namespace xo
