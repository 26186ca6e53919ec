// The stack of levels and the arithmetic on it. Each work has one lock; only counters are read without it.
#include "progress/work.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <utility>

#include "platform/stackReserve.h"
#include "platform/windows.h"

namespace xo::progress {
namespace {

constexpr std::uint64_t kNoLimit = (std::numeric_limits<std::uint64_t>::max)();

std::int64_t tickMs() { return static_cast<std::int64_t>(::GetTickCount64()); }

// Locks a work. A recursion that opens scopes without end must overflow its stack here and not with the lock held.
class XO_SCOPED_CAPABILITY WorkLocker {
public:
    explicit WorkLocker(platform::SlimLock& lock) XO_ACQUIRE(lock) : mLock(lock) {
        platform::reserveStack();
        mLock.lock();
    }
    ~WorkLocker() XO_RELEASE() { mLock.unlock(); }
    WorkLocker(const WorkLocker&) = delete;
    WorkLocker& operator=(const WorkLocker&) = delete;

private:
    platform::SlimLock& mLock;
};

// Unknown values of the enumeration count as none.
bool isUnit(xoProgressUnit unit) { return unit == ProgressUnitBytes || unit == ProgressUnitItems; }

}  // namespace

void Level::begin(const Description& description, std::uint64_t newSerial, bool calls) {
    text.assign(description.text);
    ends.clear();
    if (description.weights) {
        double sum = 0;
        for (std::uint64_t i = 0; i < description.total; ++i)
            ends.push_back(sum += static_cast<double>(description.weights[i]));
        // Weights that are all 0 would divide by 0.
        if (!(sum > 0)) ends.clear();  // equal steps
    }
    tasks.clear();
    total = description.total;
    unit = description.unit;
    isFinished = false;
    span = 1;
    spanStep = 0;
    fill = 0;
    fillStep = 0;
    isFillComplete = false;
    stepBelow = 0;
    fillBelow = 0;
    done.store(0, std::memory_order_relaxed);
    limit = total == 0 ? kNoLimit : total;
    hasCalls = calls;
    serial = newSerial;
}

std::uint64_t Level::count() const {
    // Relaxed: a reader needs some recent number, and nothing else is published through it.
    const std::uint64_t counted = done.load(std::memory_order_relaxed);
    return total == 0 ? counted : (std::min)(counted, total);
}

// The span applies to the step at which it was set only, and never reaches beyond the total.
std::uint64_t Level::spanAt(std::uint64_t step) const {
    const std::uint64_t wanted = step == spanStep ? span : 1;
    return total == 0 ? wanted : (std::min)(wanted, total - step);
}

double Level::stepsBeyond(std::uint64_t step, double spanFraction) const {
    // Scopes of the owning thread, and tasks of other threads.
    double steps = static_cast<double>(spanAt(step)) * spanFraction;
    for (const TaskShare& task : tasks) steps += static_cast<double>(task.steps) * task.work->fraction();
    return steps;
}

double Level::fraction(std::uint64_t step, double spanFraction) const {
    // A level of unknown length has no fraction; what is nested in it moves no bar.
    if (total == 0) return 0;
    // Tasks are not counted for weighted steps: a proxy has no weights.
    if (ends.empty()) {
        const double steps = static_cast<double>(step) + stepsBeyond(step, spanFraction);
        return (std::min)(steps / static_cast<double>(total), 1.0);
    }
    // The weights of the completed steps, and a part of those of the current span.
    const auto endOf = [this](std::uint64_t steps) { return steps == 0 ? 0 : ends[steps - 1]; };
    const double begin = endOf(step);
    return (begin + (endOf(step + spanAt(step)) - begin) * spanFraction) / ends.back();
}

// Whether finish() was called or all steps are complete. The last step counts as complete too when a complete nested
// scope has filled it and advance() was not called behind it.
bool Level::isComplete() const {
    if (isFinished) return true;
    if (total == 0) return false;
    const std::uint64_t step = count();
    const bool isCurrentStepFilled = isFillComplete && fillStep == step;
    return step + (isCurrentStepFilled ? spanAt(step) : 0) >= total;
}

Level* Work::open(const Description& description, bool hasCalls, bool& isOutermost, bool& isForeign) {
    const unsigned long thread = ::GetCurrentThreadId();
    const WorkLocker locker(mLock);
    // One thread owns a work from its first scope to its last. Scopes of other threads are not counted, and are
    // reported once.
    if ((mDepth > 0 || mIsInCall) && mOwner != thread) {
        isForeign = !std::exchange(mHasReportedForeignScope, true);
        return nullptr;
    }
    if (mIsInCall) return nullptr;

    try {
        // A level that was used before keeps the memory of its text, so that equal scopes in a loop allocate nothing.
        if (mDepth == mLevels.size()) mLevels.push_back(std::make_unique<Level>());
        mLevels[mDepth]->begin(description, mLastSerial + 1, hasCalls);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    Level& level = *mLevels[mDepth];
    ++mLastSerial;
    if (isUnit(level.unit)) level.beginMs = tickMs();
    isOutermost = mDepth == 0;
    if (isOutermost) {
        mOwner = thread;
        mBeginMs = tickMs();
        mHighestFraction = 0;
        mRemaining.begin(mBeginMs);
        mUnitsSerial = 0;
    } else {
        const Level& below = *mLevels[mDepth - 1];
        level.stepBelow = below.count();
        level.fillBelow = below.fillAt(level.stepBelow);
    }
    ++mDepth;
    return &level;
}

bool Work::close(std::uint64_t serial, bool isCanceled, bool& hasEnded) {
    const WorkLocker locker(mLock);
    if (!find(serial)) return false;
    // Levels above this one were left open, for instance by a fault; they end with it.
    for (bool isClosed = false; !isClosed;) {
        const Level& level = *mLevels[mDepth - 1];
        const bool isComplete = level.isComplete();
        isClosed = level.serial == serial;
        // The outermost level was closed: the whole work has ended.
        if (mDepth == 1) {
            end(isComplete, isCanceled);
            hasEnded = true;
            break;
        }
        Level& below = *mLevels[mDepth - 2];
        // A nested scope that ends early fills its share of the step only in part; the next one begins where it ended.
        const double fraction = isComplete ? 1 : level.fraction(level.count(), spanFractionOf(mDepth - 1));
        // If the level below has moved on, its step is complete already and this one's share is part of it.
        if (below.count() == level.stepBelow) {
            below.fill = level.fillBelow + (1 - level.fillBelow) * fraction;
            below.fillStep = level.stepBelow;
            below.isFillComplete = isComplete;
        }
        --mDepth;
    }
    return true;
}

// Keeps the last state, which getState() returns until the next work begins. Allocates nothing: it is called by the
// destructor of a scope.
void Work::end(bool isComplete, bool isCanceled) {
    mLast = numbers(tickMs());
    mLastTitle.swap(mLevels[0]->text);
    mLast.remainingMs = -1;
    mLast.isIndeterminate = false;
    mLast.phase = isComplete   ? xoProgressState::PhaseDone
                  : isCanceled ? xoProgressState::PhaseCanceled
                               : xoProgressState::PhaseStopped;
    if (isComplete) mLast.fraction = 1;
    mDepth = 0;
}

void Work::setSpan(std::uint64_t serial, std::uint64_t steps) {
    const WorkLocker locker(mLock);
    Level* const level = find(serial);
    if (!level) return;
    // For the current step only: advance() ends the span.
    level->spanStep = level->count();
    level->span = (std::max)(steps, std::uint64_t{1});
}

void Work::setText(std::uint64_t serial, std::string_view text) {
    const WorkLocker locker(mLock);
    Level* const level = find(serial);
    try {
        if (level) level->text.assign(text);
    } catch (const std::bad_alloc&) {  // the former text stays
    }
}

void Work::setTotal(std::uint64_t serial, std::uint64_t total) {
    const WorkLocker locker(mLock);
    Level* const level = find(serial);
    // The number of weights is the total of weighted steps, which therefore cannot change.
    if (!level || !level->ends.empty()) return;
    level->total = total == 0 ? 0 : (std::max)(total, level->count());
    level->limit = total == 0 ? kNoLimit : level->total;
}

void Work::finish(std::uint64_t serial) {
    const WorkLocker locker(mLock);
    if (Level* const level = find(serial)) level->isFinished = true;
}

void Work::reset() {
    const WorkLocker locker(mLock);
    mDepth = 0;
    mIsInCall = false;
    mLast = xoProgressState();
    mLastTitle.clear();
}

bool Work::addTask(std::uint64_t serial, const TaskShare& share) {
    const WorkLocker locker(mLock);
    Level* const level = find(serial);
    try {
        if (level) level->tasks.push_back(share);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return level != nullptr;
}

void Work::removeTask(std::uint64_t serial, const TaskShare& share, bool counts) {
    const WorkLocker locker(mLock);
    Level* const level = find(serial);
    if (!level) return;
    const auto isShare = [&share](const TaskShare& task) { return task.work == share.work; };
    const auto found = std::find_if(level->tasks.begin(), level->tasks.end(), isShare);
    if (found == level->tasks.end()) return;
    level->tasks.erase(found);
    // Never more than the limit, so that the sum does not wrap around.
    if (counts) level->done.fetch_add((std::min)(share.steps, level->limit), std::memory_order_relaxed);
}

xoProgressState Work::state() {
    const WorkLocker locker(mLock);
    xoProgressState state = mDepth == 0 ? mLast : numbers(tickMs());
    try {
        state.title = mDepth == 0 ? mLastTitle : mLevels[0]->text;
        // The innermost text, without that of the outermost level, which is the title.
        for (std::size_t i = mDepth; i > 1 && state.text.empty(); --i) state.text = mLevels[i - 1]->text;
    } catch (const std::bad_alloc&) {  // the numbers alone
    }
    return state;
}

double Work::fraction() const {
    // Not a WorkLocker: the work of the proxy may be locked.
    const platform::SlimLocker locker(mLock);
    return mDepth == 0 ? mLast.fraction : overallFraction();
}

bool Work::wasCompleted() const {
    const WorkLocker locker(mLock);
    return mDepth == 0 && mLast.phase == xoProgressState::PhaseDone;
}

bool Work::isOpen() const {
    const WorkLocker locker(mLock);
    return mDepth > 0;
}

bool Work::beginCall() {
    const WorkLocker locker(mLock);
    return !std::exchange(mIsInCall, true);
}

void Work::endCall() {
    const WorkLocker locker(mLock);
    mIsInCall = false;
}

Level* Work::find(std::uint64_t serial) {
    // From the top, because most calls come from the innermost scope.
    for (std::size_t i = mDepth; i > 0; --i)
        if (mLevels[i - 1]->serial == serial) return mLevels[i - 1].get();
    return nullptr;
}

// The fraction of a level's current span that nested scopes have completed: those that have ended, and the open one. It
// is computed from the innermost level outwards, since each level needs the fraction of the one above it.
double Work::spanFractionOf(std::size_t index) const {
    double fraction = 0;
    for (std::size_t i = mDepth; i > index; --i) {
        const Level& level = *mLevels[i - 1];
        const std::uint64_t step = level.count();
        // The open scope counts only while this level is at the step in which that scope began.
        const bool hasOpen = i < mDepth && mLevels[i]->stepBelow == step;
        const double begin = hasOpen ? mLevels[i]->fillBelow : level.fillAt(step);
        const double spanFraction = hasOpen ? begin + (1 - begin) * fraction : begin;
        if (i - 1 == index) return spanFraction;
        fraction = level.fraction(step, spanFraction);
    }
    return fraction;
}

double Work::overallFraction() const {
    const Level& outermost = *mLevels[0];
    return outermost.fraction(outermost.count(), spanFractionOf(0));
}

xoProgressState Work::numbers(std::int64_t nowMs) {
    xoProgressState state;
    state.phase = xoProgressState::PhaseRunning;
    mHighestFraction = (std::max)(mHighestFraction, overallFraction());
    // Below 1 until the work has ended. It never falls: a total that grows does not move the bar to the left.
    state.fraction = (std::min)(mHighestFraction, std::nextafter(1.0, 0.0));
    state.isIndeterminate = mLevels[mDepth - 1]->total == 0;
    state.elapsedMs = nowMs - mBeginMs;
    state.remainingMs = mRemaining.at(nowMs, state.fraction);

    for (std::size_t i = 0; i < mDepth; ++i) {
        const Level& level = *mLevels[i];
        // Counts and speed are those of the outermost level with a unit.
        if (!isUnit(level.unit)) continue;
        const std::uint64_t count = level.count();
        const auto beyond = static_cast<std::uint64_t>(level.stepsBeyond(count, spanFractionOf(i)));
        state.unit = level.unit;
        state.total = level.total;
        state.done = level.total == 0 ? count + beyond : count + (std::min)(beyond, level.total - count);
        // The speed of another scope must not be continued.
        if (mUnitsSerial != level.serial) mUnits.begin(level.beginMs, 0);
        mUnitsSerial = level.serial;
        mUnits.add(nowMs, static_cast<double>(state.done));
        state.unitsPerSecond = mUnits.perSecond();
        break;
    }
    return state;
}

}  // namespace xo::progress
