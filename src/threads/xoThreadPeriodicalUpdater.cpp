// Calls a list of functions periodically, in a thread of its own.
#include <algorithm>
#include <climits>
#include <cstddef>
#include <stdexcept>
#include <utility>
#include <vector>

#include "threads/guardedBody.h"
#include "xoSystem/xoMutex.h"
#include "xoSystem/xoThread.h"
#include "xoSystem/xoWaitCondition.h"

namespace xo {
namespace {

constexpr unsigned int kInfinite = 0xFFFFFFFF;

// The longest period is below the value that xoWaitCondition takes as no limit. 0 seconds count as 1.
unsigned int toMilliseconds(unsigned int seconds) {
    constexpr unsigned int kLongest = (kInfinite - 1) / 1000;
    return (std::clamp)(seconds, 1u, kLongest) * 1000;
}

// The function, which may be null, and the argument of the host.
using Callback = std::pair<void (*)(void*), void*>;

}  // namespace

struct xoThreadPeriodicalUpdater::Private {
    explicit Private(unsigned int milliseconds) : periodMs(milliseconds) {}

    static void serve(void* state);     // the loop of the thread
    void callAll() XO_REQUIRES(mutex);  // one round

    const unsigned int periodMs;
    xoMutex mutex;  // held by the updater's thread except while it waits
    xoWaitCondition condition;
    std::vector<Callback> callbacks XO_GUARDED_BY(mutex);
    bool mustStop XO_GUARDED_BY(mutex) = false;
    bool isRoundDue XO_GUARDED_BY(mutex) = false;  // a callback was added since the last round
    std::size_t next XO_GUARDED_BY(mutex) = 0;     // during a round: the index of the callback to call next
};

xoThreadPeriodicalUpdater::xoThreadPeriodicalUpdater(unsigned int periodSeconds)
    : mPrivate(std::make_unique<Private>(toMilliseconds(periodSeconds))) {
    startThread(nullptr);
}

xoThreadPeriodicalUpdater::~xoThreadPeriodicalUpdater() {
    {
        const xoMutexLocker locker(mPrivate->mutex);
        mPrivate->mustStop = true;
        mPrivate->condition.wakeAll();
    }
    // Without the mutex, which the thread needs in order to end.
    waitThread(INT_MAX);
}

void xoThreadPeriodicalUpdater::addCallback(void (*function)(void*), void* data) {
    const xoMutexLocker locker(mPrivate->mutex);
    if (mPrivate->callbacks.size() == mPrivate->callbacks.max_size()) throw std::length_error("list too long");
    mPrivate->callbacks.emplace_back(function, data);
    mPrivate->isRoundDue = true;
    mPrivate->condition.wakeAll();
}

void xoThreadPeriodicalUpdater::removeCallback(void (*function)(void*), void* data) {
    const xoMutexLocker locker(mPrivate->mutex);
    auto& callbacks = mPrivate->callbacks;
    const auto callback = std::find(callbacks.begin(), callbacks.end(), Callback(function, data));
    if (callback == callbacks.end()) return;
    // A callback may remove itself or others during a round. The index moves with the list, so that none is skipped.
    if (static_cast<std::size_t>(callback - callbacks.begin()) < mPrivate->next) --mPrivate->next;
    callbacks.erase(callback);
}

void xoThreadPeriodicalUpdater::run() { threads::runReporting(&Private::serve, mPrivate.get(), {&mPrivate->mutex}); }

void xoThreadPeriodicalUpdater::Private::serve(void* state) {
    auto& self = *static_cast<Private*>(state);
    const xoMutexLocker locker(self.mutex);
    while (!self.mustStop) {
        // A callback may have been added before the thread waits for the first time: nothing would wake it then.
        if (!self.isRoundDue) self.condition.wait(&self.mutex, self.callbacks.empty() ? kInfinite : self.periodMs);
        self.callAll();
        self.isRoundDue = false;
    }
}

void xoThreadPeriodicalUpdater::Private::callAll() {
    for (next = 0; next < callbacks.size();) {  // by index: a callback may change the list
        const Callback callback = callbacks[next++];
        if (callback.first) callback.first(callback.second);
    }
}

}  // namespace xo
