// The public classes. They forward to the work of their notifier, and call the notifier's onProgress when it is due.
#include "xoSystem/xoProgress.h"

#include "platform/structuredCall.h"
#include "platform/windows.h"
#include "progress/notifierWork.h"
#include "progress/work.h"

namespace xo {

// The state of a notifier. The work locks itself; the rest is used by the owning thread, except isCanceled.
struct xoProgressNotifier::Private {
    explicit Private(unsigned interval) : intervalMs(interval) {}

    const unsigned intervalMs;            // of the calls between the ends, or kNoCalls or kCallsAtEnds
    std::uint64_t lastCallMs = 0;         // when onProgress was called last
    std::atomic<bool> isCanceled{false};  // not used by a task's notifier, which shares that of the root
    progress::Work work;
};

// A task refers to the proxy's notifier, so it must end before that.
struct xoProgressProxy::Task::Private {
    progress::Work* rootWork = nullptr;  // that of the proxy's notifier; null when the proxy counts for nothing
    std::uint64_t serial = 0;            // of the proxy's level
    progress::TaskShare share{};
    bool isFinished = false;
};

namespace impl {

// The friend of the public classes, through which the functions of this file reach their private members.
struct ProgressAccess {
    static progress::Work& work(const xoProgressNotifier& notifier) { return notifier.mPrivate->work; }

    // Whether onProgress is called at the begin and end of a work, and also in between.
    static bool hasCallsAtEnds(const xoProgressNotifier& notifier) {
        return notifier.mPrivate->intervalMs != xoProgressNotifier::kNoCalls;
    }
    static bool hasCallsBetween(const xoProgressNotifier& notifier) {
        return notifier.mPrivate->intervalMs < xoProgressNotifier::kCallsAtEnds;
    }

    // Calls onProgress, without a lock. A fault in it ends the call, too: a guard further out may handle it, and the
    // next work needs calls again.
    static void call(xoProgressNotifier& notifier) {
        // A host's function that causes another call, for instance by update(), is not called recursively.
        if (!work(notifier).beginCall()) return;
        notifier.mPrivate->lastCallMs = ::GetTickCount64();
        platform::callReleasing([](void* called) { callHost(*static_cast<xoProgressNotifier*>(called)); },
                                [](void* called) { work(*static_cast<xoProgressNotifier*>(called)).endCall(); },
                                &notifier);
    }

    // An exception of the host's function must not end the work and is dropped.
    static void callHost(xoProgressNotifier& notifier) {
        try {
            notifier.onProgress(notifier.getState());
        } catch (...) {
        }
    }

    // Called by the owning thread only. An interval of 0 means every time, without a look at the clock.
    static void callIfDue(xoProgressNotifier& notifier) {
        const unsigned intervalMs = notifier.mPrivate->intervalMs;
        if (!hasCallsBetween(notifier)) return;
        if (intervalMs != 0 && ::GetTickCount64() - notifier.mPrivate->lastCallMs < intervalMs) return;
        call(notifier);
    }

    // Opens the level of a scope. Without a level (no notifier, not counted) the scope keeps its null counter, and all
    // its functions do nothing.
    static void open(xoProgressScope& scope, const progress::Description& description) {
        if (!scope.mNotifier) return;
        xoProgressNotifier& notifier = *scope.mNotifier;
        bool isForeign = false;
        bool isOutermost = false;
        progress::Level* const level =
            work(notifier).open(description, hasCallsBetween(notifier), isOutermost, isForeign);
        if (isForeign) progress::reportForeignScope();
        if (!level) return;
        // The counter lets advance() store steps without a lock; the serial identifies the level in all other calls.
        scope.mCounter = level;
        scope.mSerial = level->serial;
        // The begin of a whole work is reported at once, that of a nested scope only when a call is due.
        if (!isOutermost)
            callIfDue(notifier);
        else if (hasCallsAtEnds(notifier))
            call(notifier);
    }

    static std::uint64_t serial(const xoProgressProxy& proxy) { return proxy.mScope.mSerial; }
    static xoProgressNotifier* notifier(const xoProgressProxy& proxy) { return proxy.mScope.mNotifier; }
    static bool isOpen(const xoProgressProxy& proxy) { return proxy.mScope.mCounter != nullptr; }
};

}  // namespace impl

using impl::ProgressAccess;

progress::Work& progress::workOf(const xoProgressNotifier& notifier) { return ProgressAccess::work(notifier); }

xoProgressNotifier::xoProgressNotifier(unsigned intervalMs) : xoProgressNotifier(intervalMs, nullptr) {}

// A task's notifier has the root of its proxy, whose flag of cancellation it shares. `root` may be null.
xoProgressNotifier::xoProgressNotifier(unsigned intervalMs, xoProgressNotifier* root)
    : mPrivate(std::make_unique<Private>(intervalMs)), mCanceled(root ? root->mCanceled : &mPrivate->isCanceled) {}

xoProgressNotifier::~xoProgressNotifier() = default;

xoProgressState xoProgressNotifier::getState() const { return mPrivate->work.state(); }

void xoProgressNotifier::update() {
    if (mPrivate->work.isOpen()) ProgressAccess::callIfDue(*this);
}

void xoProgressNotifier::reset() {
    mPrivate->work.reset();
    mPrivate->isCanceled = false;
}

xoProgressScope::xoProgressScope(xoProgressNotifier* notifier, std::uint64_t total, std::string_view text,
                                 xoProgressUnit unit)
    : mNotifier(notifier) {
    ProgressAccess::open(*this, {total, text, unit});
}

xoProgressScope::xoProgressScope(xoProgressNotifier* notifier, std::initializer_list<std::uint64_t> weights,
                                 std::string_view text)
    : mNotifier(notifier) {
    ProgressAccess::open(*this, {weights.size(), text, ProgressUnitNone, weights.begin()});
}

xoProgressScope::xoProgressScope(xoProgressNotifier* notifier, const std::vector<std::uint64_t>& weights,
                                 std::string_view text)
    : mNotifier(notifier) {
    ProgressAccess::open(*this, {weights.size(), text, ProgressUnitNone, weights.data()});
}

xoProgressScope::~xoProgressScope() {
    if (!mCounter) return;
    bool hasEnded = false;
    if (!ProgressAccess::work(*mNotifier).close(mSerial, mNotifier->isCanceled(), hasEnded)) return;
    if (!hasEnded)
        ProgressAccess::callIfDue(*mNotifier);
    else if (ProgressAccess::hasCallsAtEnds(*mNotifier))
        ProgressAccess::call(*mNotifier);
}

void xoProgressScope::callIfDue() { ProgressAccess::callIfDue(*mNotifier); }

void xoProgressScope::setStepSpan(std::uint64_t steps) {
    if (mCounter) ProgressAccess::work(*mNotifier).setSpan(mSerial, steps);
}

void xoProgressScope::setText(std::string_view text) {
    if (!mCounter) return;
    ProgressAccess::work(*mNotifier).setText(mSerial, text);
    if (mCounter->hasCalls) callIfDue();
}

void xoProgressScope::setTotal(std::uint64_t total) {
    if (!mCounter) return;
    ProgressAccess::work(*mNotifier).setTotal(mSerial, total);
    if (mCounter->hasCalls) callIfDue();
}

void xoProgressScope::finish() {
    if (mCounter) ProgressAccess::work(*mNotifier).finish(mSerial);
}

xoProgressProxy::xoProgressProxy(xoProgressNotifier* notifier, std::uint64_t total, std::string_view text,
                                 xoProgressUnit unit)
    : mScope(notifier, total, text, unit) {}

xoProgressProxy::~xoProgressProxy() = default;

bool xoProgressProxy::advance(std::uint64_t steps) {
    // Adds at most the limit, so that the sum does not wrap around. Several threads do this at the same time.
    if (impl::ProgressCounter* const counter = mScope.mCounter)
        counter->done.fetch_add(steps < counter->limit ? steps : counter->limit, std::memory_order_relaxed);
    return !isCanceled();
}

void xoProgressProxy::setText(std::string_view text) {
    if (mScope.mCounter) ProgressAccess::work(*mScope.mNotifier).setText(mScope.mSerial, text);
}

void xoProgressProxy::finish() { mScope.finish(); }

xoProgressProxy::Task::Task(xoProgressProxy& proxy, std::uint64_t steps)
    : xoProgressNotifier(kNoCalls, ProgressAccess::notifier(proxy)), mTask(std::make_unique<Private>()) {
    if (!ProgressAccess::isOpen(proxy)) return;
    mTask->share = {&ProgressAccess::work(*this), steps};
    mTask->serial = ProgressAccess::serial(proxy);
    progress::Work& rootWork = ProgressAccess::work(*ProgressAccess::notifier(proxy));
    if (rootWork.addTask(mTask->serial, mTask->share)) mTask->rootWork = &rootWork;
}

xoProgressProxy::Task::~Task() {
    if (!mTask->rootWork) return;
    // A task that ends early, by an exception or a cancellation, completes no steps.
    const bool counts = mTask->isFinished || ProgressAccess::work(*this).wasCompleted();
    mTask->rootWork->removeTask(mTask->serial, mTask->share, counts);
}

void xoProgressProxy::Task::finish() { mTask->isFinished = true; }

}  // namespace xo
