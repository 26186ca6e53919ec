// Runs thread bodies under the guard and releases their locks when they fail.
#include "threads/guardedBody.h"

#include <exception>

#include "concurrency/mutexAccess.h"
#include "platform/windows.h"
#include "xoSystem/xoException.h"

namespace xo::threads {
namespace {

// GCC's runtime sets up its thread-local storage at the first use, under a spin lock. Process exit kills the other
// threads first; if one of them held that lock, the destruction of std::cout, which uses the storage too, would spin
// for ever. So the first use comes before any thread of the library. The volatile variable keeps the call, whose
// function is declared free of side effects.
const bool isThreadStorageSetUp = [] {
    [[maybe_unused]] volatile const int count = std::uncaught_exceptions();
    return true;
}();

// Releases a recursive lock completely. A critical section counts how often its owner has entered it, and must be left
// as often.
void releaseWholly(const xoMutex& lock) {
    CRITICAL_SECTION& section = impl::MutexAccess::sectionOf(lock);
    while (impl::MutexAccess::isOwnedByCaller(section)) ::LeaveCriticalSection(&section);
}

}  // namespace

bool runReporting(void (*body)(void*), void* argument, std::initializer_list<xoMutex*> locks) noexcept {
    try {
        exception::impl::ExecGuardedCode(body, argument);
        return true;
    } catch (...) {
        for (const xoMutex* const lock : locks) releaseWholly(*lock);
        return false;
    }
}

}  // namespace xo::threads
