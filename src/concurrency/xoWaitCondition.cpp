// Wait conditions on the best implementation that the system has.
#include "xoSystem/xoWaitCondition.h"

#include <atomic>

#include "concurrency/earlyCreation.h"
#include "concurrency/mutexAccess.h"
#include "concurrency/waitConditionPrivate.h"

namespace xo {
namespace {

using Factory = std::unique_ptr<xoWaitConditionPrivate> (*)();

template <class Implementation>
std::unique_ptr<xoWaitConditionPrivate> make() {
    return std::make_unique<Implementation>();
}

// FindBestImplementation replaces it, during full initialisation; objects that exist then keep their implementation.
std::atomic<Factory> factory{make<xoWaitConditionPrivateEvent>};

}  // namespace

// Relaxed is enough: full initialisation is over before other threads make wait conditions.
xoWaitCondition::xoWaitCondition() : mPrivate(factory.load(std::memory_order_relaxed)()) {
    concurrency::warnIfCreatedEarly("WaitCondition created before full init of xoSystem");
}

xoWaitCondition::~xoWaitCondition() = default;

bool xoWaitCondition::wait(xoMutex* mutex, unsigned long timeoutMs) {
    if (!mutex) return false;
    CRITICAL_SECTION& section = impl::MutexAccess::sectionOf(*mutex);
    // A section that the caller does not own must not be left:
    // https://learn.microsoft.com/windows/win32/api/synchapi/nf-synchapi-leavecriticalsection
    return impl::MutexAccess::isOwnedByCaller(section) && mPrivate->wait(&section, timeoutMs);
}

void xoWaitCondition::wakeOne() { mPrivate->wakeOne(); }

void xoWaitCondition::wakeAll() { mPrivate->wakeAll(); }

void xoWaitCondition::FindBestImplementation() {
    if (xoWaitConditionPrivateVista::lookUp()) factory = make<xoWaitConditionPrivateVista>;
}

}  // namespace xo
