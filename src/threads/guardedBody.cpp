#include "threads/guardedBody.h"

#include "platform/windows.h"
#include "xoSystem/xoException.h"

namespace xo::threads {
namespace {

// An explicit instantiation may name a private member: this makes sectionOf(lock) give the lock's critical section,
// which alone knows who owns the lock and how often.
void* sectionOf(const xoMutex& lock);
template <void* (xoMutex::*getSection)() const>
struct SectionAccess {
    friend void* sectionOf(const xoMutex& lock) { return (lock.*getSection)(); }
};
template struct SectionAccess<&xoMutex::getMutexData>;

bool isOwner(const CRITICAL_SECTION& section) {
    return section.OwningThread == reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(::GetCurrentThreadId()));
}

void releaseWholly(const xoMutex& lock) {
    auto& section = *static_cast<CRITICAL_SECTION*>(sectionOf(lock));
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

}  // namespace xo::threads
