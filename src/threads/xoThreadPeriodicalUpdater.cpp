#include <algorithm>
#include <climits>
#include <stdexcept>

#include "threads/guardedBody.h"
#include "xoSystem/xoThread.h"

namespace xo {
namespace {

constexpr unsigned int kInfinite = 0xFFFFFFFF;

unsigned int toMilliseconds(unsigned int seconds) {
    constexpr unsigned int kLongest = (kInfinite - 1) / 1000;
    return (std::clamp)(seconds, 1u, kLongest) * 1000;
}

}  // namespace

xoThreadPeriodicalUpdater::xoThreadPeriodicalUpdater(unsigned int periodSeconds)
    : mPeriodMs(toMilliseconds(periodSeconds)) {
    startThread(nullptr);
}

xoThreadPeriodicalUpdater::~xoThreadPeriodicalUpdater() {
    {
        const xoMutexLocker locker(mMutex);
        mStop = true;
        mCondition.wakeAll();
    }
    waitThread(INT_MAX);
}

void xoThreadPeriodicalUpdater::addCallback(void (*function)(void*), void* data) {
    const xoMutexLocker locker(mMutex);
    if (mCallbacks.size() == mCallbacks.max_size()) throw std::length_error("list too long");
    mCallbacks.emplace_back(function, data);
    mRoundDue = true;
    mCondition.wakeAll();
}

void xoThreadPeriodicalUpdater::removeCallback(void (*function)(void*), void* data) {
    const xoMutexLocker locker(mMutex);
    const auto callback = std::find(mCallbacks.begin(), mCallbacks.end(), Callback(function, data));
    if (callback == mCallbacks.end()) return;
    const auto index = static_cast<std::size_t>(callback - mCallbacks.begin());
    if (index < mNext) --mNext;
    mCallbacks.erase(callback);
}

void xoThreadPeriodicalUpdater::run() { threads::runGuarded(&serve, this, {&mMutex}); }

void xoThreadPeriodicalUpdater::serve(void* updater) {
    auto& self = *static_cast<xoThreadPeriodicalUpdater*>(updater);
    const xoMutexLocker locker(self.mMutex);
    while (!self.mStop) {
        // An addition before the first wait would otherwise be seen a whole period late.
        if (!self.mRoundDue) self.mCondition.wait(&self.mMutex, self.mCallbacks.empty() ? kInfinite : self.mPeriodMs);
        self.callAll();
        self.mRoundDue = false;
    }
}

void xoThreadPeriodicalUpdater::callAll() {
    for (mNext = 0; mNext < mCallbacks.size();) {  // a callback may change the list

        const Callback callback = mCallbacks[mNext++];
        if (callback.first) callback.first(callback.second);
    }
}

}  // namespace xo
