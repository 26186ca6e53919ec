// The state of a work: its scopes as a stack of levels, and what can be read off them.
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

// The share of one thread in a level that a proxy stands for.
struct TaskShare {
    const Work* work;     // of the task's own notifier
    std::uint64_t steps;  // of the level
};

// What a scope's constructor says.
struct Description {
    std::uint64_t total = 0;
    std::string_view text;
    xoProgressUnit unit = ProgressUnitNone;
    const std::uint64_t* weights = nullptr;  // as many as the total; null for equal steps
};

// One scope. Only its counter is read without the lock of the work.
struct Level : impl::ProgressCounter {
    std::uint64_t serial = 0;  // tells the scopes apart that use the level one after another
    std::uint64_t total = 0;   // 0: not known
    std::vector<double> ends;  // of weighted steps: the sum of the weights up to and with each
    xoProgressUnit unit = ProgressUnitNone;
    std::string text;
    bool isFinished = false;
    std::vector<TaskShare> tasks;

    std::uint64_t span = 1;  // steps that nested scopes fill, while done is spanStep
    std::uint64_t spanStep = 0;
    double fill = 0;  // how much of them ended scopes have filled, while done is fillStep
    std::uint64_t fillStep = 0;
    bool isFillComplete = false;  // the last of these scopes was complete

    std::int64_t beginMs = 0;     // valid where there is a unit
    std::uint64_t stepBelow = 0;  // the step of the level below in which this one began
    double fillBelow = 0;         // what was filled of it then

    void begin(const Description& description, std::uint64_t newSerial, bool hasCalls);

    // Steps completed, never more than the total.
    std::uint64_t count() const;
    std::uint64_t spanAt(std::uint64_t step) const;
    double fillAt(std::uint64_t step) const { return step == fillStep ? fill : 0; }

    // The steps of the nested work, of which the given fraction of the span is done.
    double stepsBeyond(std::uint64_t step, double spanFraction) const;
    // Of the level's own range, from 0 to 1; 0 while the total is not known.
    double fraction(std::uint64_t step, double spanFraction) const;
    bool isComplete() const;
};

class Work {
public:
    // Opens a level. Null when it counts for nothing: there is no memory, the notifier is in its call, or the thread
    // does not own the work, which isForeign then says at the first time.
    Level* open(const Description& description, bool hasCalls, bool& isOutermost, bool& isForeign);

    // Ends the level and those above it. False when it is not open any more. At the end of the whole work, hasEnded is
    // set.
    bool close(std::uint64_t serial, bool isCanceled, bool& hasEnded);

    void setSpan(std::uint64_t serial, std::uint64_t steps);
    void setText(std::uint64_t serial, std::string_view text);
    void setTotal(std::uint64_t serial, std::uint64_t total);
    void finish(std::uint64_t serial);
    void reset();

    // A task's share in the level; false when the level is not open or there is no memory.
    bool addTask(std::uint64_t serial, const TaskShare& share);
    // Takes it away, and completes its steps if they count.
    void removeTask(std::uint64_t serial, const TaskShare& share, bool counts);

    xoProgressState state();
    // For the work of a task: of its current work, else of its last one.
    double fraction() const;
    bool wasCompleted() const;
    bool isOpen() const;

    // Between these two a scope that is opened counts for nothing. False when a call is under way already.
    bool beginCall();
    void endCall();

private:
    Level* find(std::uint64_t serial) XO_REQUIRES(mLock);
    double spanFractionOf(std::size_t index) const XO_REQUIRES(mLock);
    double overallFraction() const XO_REQUIRES(mLock);
    xoProgressState snapshot(std::int64_t nowMs) XO_REQUIRES(mLock);
    void end(bool isComplete, bool isCanceled) XO_REQUIRES(mLock);

    mutable platform::SlimLock mLock;                                  // also guards the levels, except their counters
    std::vector<std::unique_ptr<Level>> mLevels XO_GUARDED_BY(mLock);  // kept for the next scopes
    std::size_t mDepth XO_GUARDED_BY(mLock) = 0;                       // how many of them are open
    std::uint64_t mLastSerial XO_GUARDED_BY(mLock) = 0;
    unsigned long mOwner XO_GUARDED_BY(mLock) = 0;  // the thread that opened the first level
    bool mIsInCall XO_GUARDED_BY(mLock) = false;
    bool mHasReportedForeignScope XO_GUARDED_BY(mLock) = false;

    std::int64_t mBeginMs XO_GUARDED_BY(mLock) = 0;
    double mHighestFraction XO_GUARDED_BY(mLock) = 0;  // that was read so far
    RemainingTime mRemaining XO_GUARDED_BY(mLock);
    SmoothedSpeed mUnits XO_GUARDED_BY(mLock);
    std::uint64_t mUnitsSerial XO_GUARDED_BY(mLock) = 0;  // of the level that mUnits is about
    xoProgressState mLast XO_GUARDED_BY(mLock);           // of the work that has ended
};

// Writes the log's line about a scope of a thread that does not own the notifier. Defined beside start-up.
void reportForeignScope();

}  // namespace xo::progress

#endif
