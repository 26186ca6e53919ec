// The state of a work: its scopes as a stack of levels, and the values that are computed from them.
//
// The levels are here and not in the scopes, because a processor fault unwinds the stack without running destructors: a
// level that was left open must not point to a scope that is gone.
#ifndef XO_PROGRESS_WORK_H
#define XO_PROGRESS_WORK_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/slimLock.h"
#include "progress/estimate.h"
#include "xoSystem/xoProgress.h"

namespace xo::progress {

class Work;

// The share of one task in the level of its proxy. The task removes it before its work is destroyed.
struct TaskShare {
    const Work* work;     // of the task's own notifier
    std::uint64_t steps;  // of the level
};

// The arguments of a scope's constructor. It refers to the caller's text and weights.
struct Description {
    std::uint64_t total = 0;
    std::string_view text;
    xoProgressUnit unit = ProgressUnitNone;
    const std::uint64_t* weights = nullptr;  // as many as the total; null for equal steps
};

// One open scope, or memory that is kept for a later one. The members of ProgressCounter are used by the scope without
// the lock of the work; all members below are guarded by it.
struct Level : impl::ProgressCounter {
    std::uint64_t serial = 0;  // of the scope; other scopes use the same level before and after it
    std::uint64_t total = 0;   // 0: not known
    std::vector<double> ends;  // for weighted steps, the sum of the weights up to and including each; else empty
    xoProgressUnit unit = ProgressUnitNone;
    std::string text;
    bool isFinished = false;       // by finish(), whatever the counter says
    std::vector<TaskShare> tasks;  // that run now

    // Both apply only while the counter is at the step that is stored with them, so that advancing need not reset them.
    std::uint64_t span = 1;  // the number of steps that nested scopes fill, at spanStep
    std::uint64_t spanStep = 0;
    double fill = 0;  // the fraction of the span that ended scopes have filled, at fillStep
    std::uint64_t fillStep = 0;
    bool isFillComplete = false;  // the last one of these scopes was complete

    std::int64_t beginMs = 0;     // set only for a level with a unit, for its speed
    std::uint64_t stepBelow = 0;  // the step of the level below in which this one began
    double fillBelow = 0;         // the fraction of its span that was filled when this one began

    // Prepares the level for a new scope. May throw std::bad_alloc; the level must not be opened then.
    void begin(const Description& description, std::uint64_t newSerial, bool hasCalls);

    // Steps completed, never more than the total.
    std::uint64_t count() const;
    // The span and the filled fraction at a step; 1 and 0 for a step without values of its own.
    std::uint64_t spanAt(std::uint64_t step) const;
    double fillAt(std::uint64_t step) const { return step == fillStep ? fill : 0; }

    // The steps beyond `step` that nested scopes and tasks have completed, where nested scopes have completed the given
    // fraction of the span.
    double stepsBeyond(std::uint64_t step, double spanFraction) const;
    // The completed fraction of the level, from 0 to 1; 0 while the total is not known.
    double fraction(std::uint64_t step, double spanFraction) const;
    bool isComplete() const;
};

// The work of one notifier. All functions may be called from any thread, and none calls the host.
class Work {
public:
    // Opens a level for a scope. Null when the scope is not counted: memory is short, the notifier is in its call, or
    // the thread does not own the work. isForeign is set in the last case, once in the life of the notifier. The
    // pointer stays valid as long as the Work: the scope advances its counter without the lock.
    Level* open(const Description& description, bool hasCalls, bool& isOutermost, bool& isForeign);

    // Closes the level and those above it. False when it is not open any more. Sets hasEnded when it was the outermost
    // one.
    bool close(std::uint64_t serial, bool isCanceled, bool& hasEnded);

    // These do nothing for a level that is not open any more.
    void setSpan(std::uint64_t serial, std::uint64_t steps);
    void setText(std::uint64_t serial, std::string_view text);
    void setTotal(std::uint64_t serial, std::uint64_t total);
    void finish(std::uint64_t serial);
    // Forgets the current work and the last one. Their scopes find their levels closed.
    void reset();

    // Adds a task's share to the level; false when the level is not open or memory is short.
    bool addTask(std::uint64_t serial, const TaskShare& share);
    // Removes the share, and completes its steps if they count.
    void removeTask(std::uint64_t serial, const TaskShare& share, bool counts);

    // Without texts when there is no memory for them.
    xoProgressState state();
    // The fraction of the current work, or of the last one. Called for the work of a task while the work of its proxy
    // is locked: locks are always taken in this order.
    double fraction() const;
    // Whether no scope is open and the last work was completed.
    bool wasCompleted() const;
    // Whether a scope is open.
    bool isOpen() const;

    // Surround a call of the host's function. A scope that the host opens on the same notifier meanwhile is not
    // counted. False when a call is under way already.
    bool beginCall();
    void endCall();

private:
    // The open level of a scope; null when it was closed, for instance by a scope below it after a fault.
    Level* find(std::uint64_t serial) XO_REQUIRES(mLock);
    double spanFractionOf(std::size_t index) const XO_REQUIRES(mLock);
    double overallFraction() const XO_REQUIRES(mLock);               // only while a level is open, as the next one
    xoProgressState numbers(std::int64_t nowMs) XO_REQUIRES(mLock);  // a state without texts; allocates nothing
    void end(bool isComplete, bool isCanceled) XO_REQUIRES(mLock);   // of the whole work

    mutable platform::SlimLock mLock;                                  // also guards the levels, except `done`
    std::vector<std::unique_ptr<Level>> mLevels XO_GUARDED_BY(mLock);  // kept for the next scopes
    std::size_t mDepth XO_GUARDED_BY(mLock) = 0;                       // how many of them are open
    std::uint64_t mLastSerial XO_GUARDED_BY(mLock) = 0;
    unsigned long mOwner XO_GUARDED_BY(mLock) = 0;  // the thread that opened the first level
    bool mIsInCall XO_GUARDED_BY(mLock) = false;    // the host's function is being called
    bool mHasReportedForeignScope XO_GUARDED_BY(mLock) = false;

    std::int64_t mBeginMs XO_GUARDED_BY(mLock) = 0;
    double mHighestFraction XO_GUARDED_BY(mLock) = 0;  // that was read so far
    RemainingTime mRemaining XO_GUARDED_BY(mLock);
    SmoothedSpeed mUnits XO_GUARDED_BY(mLock);
    std::uint64_t mUnitsSerial XO_GUARDED_BY(mLock) = 0;  // of the level whose speed mUnits measures; 0 none
    xoProgressState mLast XO_GUARDED_BY(mLock);           // the final state of the last work, without texts
    std::string mLastTitle XO_GUARDED_BY(mLock);
};

// Writes a line to the log about a scope of a thread that does not own the notifier. Defined in `frame`, because the
// log is in a room above this one.
void reportForeignScope();

}  // namespace xo::progress

#endif
