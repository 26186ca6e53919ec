// Progress: how far a long function has come, how long it will take, and whether it shall stop.
//
// A long function takes a pointer to a notifier, which may be null when nobody looks, and opens a scope on it.
// Functions that it calls get the same pointer; their scopes fill the step at which its own scope stands.
//
//     bool import(const std::string& folder, xo::xoProgressNotifier* progress) {
//         xo::xoProgressScope work(progress, {70, 30}, "Import");     // two steps, 70 % and 30 % of the work
//         if (!readTables(folder, progress)) return false;            // its scopes fill the 70 %
//         work.advance();
//         xo::xoProgressScope rows(progress, table.size(), "index", xo::ProgressUnitItems);  // fills the 30 %
//         for (const Row& row : table) {
//             add(row);
//             if (!rows.advance()) return false;                      // canceled
//         }
//         return true;
//     }
//
// Steps only store a number. To show them, call getState() from any thread, or derive from xoProgressNotifier and
// override onProgress(), which runs on the working thread. xoProgressConsole.h has a view for the console.
//
// A work begins with the first scope on a notifier and ends with it. The thread that opened that scope owns the
// notifier until then: all scopes of the work are opened, advanced and destroyed by it. getState(), cancel() and
// isCanceled() are for any thread. Several threads advance one work through xoProgressProxy.
//
// Only std::bad_alloc is thrown, from the constructors of xoProgressNotifier and xoProgressProxy::Task. Without memory
// a scope counts for nothing, setText() changes nothing, and getState() gives empty texts.
#ifndef XOSYSTEM_XOPROGRESS_H
#define XOSYSTEM_XOPROGRESS_H

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "xoSystem/xoExport.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

template <class E>
class xoEnumList;

// What the steps of a scope are. Other values count as none.
enum xoProgressUnit : int { ProgressUnitNone = 0, ProgressUnitBytes = 1, ProgressUnitItems = 2 };

// A snapshot of a work; a plain value.
struct xoProgressState {
    // Idle: no work yet. Running: a scope is alive. Done: the last work was completed. Stopped: it ended before.
    // Canceled: it ended before, and cancel() had been called.
    enum Phase : int { PhaseIdle = 0, PhaseRunning = 1, PhaseDone = 2, PhaseStopped = 3, PhaseCanceled = 4 };
    // Of the work under way, or of the last one.
    Phase phase = PhaseIdle;

    // Of the work, from 0 to 1. It never falls within one work, and is 1 only in PhaseDone.
    double fraction = 0;

    // The innermost scope does not know its total.
    bool isIndeterminate = false;

    // Of the outermost scope that has a unit; the next three belong to that scope too.
    xoProgressUnit unit = ProgressUnitNone;

    // Steps, including the share of nested scopes. A total of 0 is not known.
    std::uint64_t done = 0;
    std::uint64_t total = 0;

    // Smoothed; 0 before there is one.
    double unitsPerSecond = 0;

    // Milliseconds since the work began (after its end: that it took), and an estimate of those to come; -1 when there
    // is none. There is no estimate in the first 2 seconds, before anything has moved, and beyond 99 hours.
    std::int64_t elapsedMs = 0;
    std::int64_t remainingMs = -1;

    // The text of the outermost scope, and that of the innermost one below it that has a text.
    std::string title;
    std::string text;
};

namespace impl {

// What advancing touches. It is public so that advance() is inline.
struct ProgressCounter {
    std::atomic<std::uint64_t> done{0};  // steps
    std::uint64_t limit = 0;             // done stays at or below it: the total, or UINT64_MAX when that is not known
    bool hasCalls = false;               // onProgress may be due at each step
};

struct ProgressAccess;

}  // namespace impl

// Holds the state of a work. It must outlive the scopes that are opened on it.
class XOSYSTEM_API xoProgressNotifier {
public:
    // Intervals for the constructor: onProgress is never called, or when a work begins and when it ends.
    static constexpr unsigned kNoCalls = 0xFFFFFFFF;
    static constexpr unsigned kCallsAtEnds = 0xFFFFFFFE;

    // The least time between two calls of onProgress, in milliseconds; 0 calls it at each step.
    explicit xoProgressNotifier(unsigned intervalMs = kNoCalls);
    virtual ~xoProgressNotifier();
    xoProgressNotifier(const xoProgressNotifier&) = delete;
    xoProgressNotifier& operator=(const xoProgressNotifier&) = delete;

    // Asks the work to stop: from now on isCanceled() is true, and advance() returns false. Any thread may call it. It
    // orders no other memory between the threads.
    void cancel() noexcept { mCanceled->store(true, std::memory_order_relaxed); }

    // True from cancel() until reset(). Any thread may call it.
    bool isCanceled() const noexcept { return mCanceled->load(std::memory_order_relaxed); }

    // The work as it stands; after its end its last state. Any thread may call it, at any time.
    xoProgressState getState() const;

    // Calls onProgress when it is due. For loops of the owning thread that wait for others.
    void update();

    // Makes the notifier idle and not canceled, and forgets scopes that a fault left open. On a Task it does not clear
    // the cancellation, which is that of the proxy's notifier. For the owning thread, when no scope is alive.
    void reset();

protected:
    // Called on the owning thread when a work begins and ends, and between that in any call of a scope, or of update(),
    // once the interval has passed. It may call cancel() and getState(). A scope that it opens on this notifier counts
    // for nothing. What it throws is dropped.
    virtual void onProgress(const xoProgressState&) {}

private:
    friend struct impl::ProgressAccess;
    friend class xoProgressProxy;  // for its Task
    struct Private;
    xoProgressNotifier(unsigned intervalMs, xoProgressNotifier* root);  // shares the cancellation of a root

    std::unique_ptr<Private> mPrivate;
    std::atomic<bool>* mCanceled;  // its own, or that of the notifier which a Task serves
};

// A piece of work with a number of steps: a local variable of the function that does it.
//
// A nested scope fills the step at which the scope below it stands, or what earlier nested scopes have left of it. A
// scope that is complete when it ends fills its range; otherwise (an error, a cancellation, an exception) the fraction
// stays where it is. It is complete when finish() was called, or when its steps have reached the total; a current step
// that a complete nested scope has filled counts as done. So the last advance() may be missing only after a nested
// scope. When the outermost scope ends complete, the work is done, also if it was canceled too late.
//
// On a null notifier all calls do nothing, advance() returns true and isCanceled() false. A scope opened by a thread
// that does not own the notifier counts for nothing, but reports a cancellation. The first one on a notifier writes the
// CRITICAL log line "xoProgressScope made by a thread that does not own the notifier".
class XOSYSTEM_API xoProgressScope {
public:
    // A total of 0 is not known: then counts are shown, the fraction waits, and only finish() completes the scope. The
    // text is copied; of the outermost scope it is the title.
    explicit xoProgressScope(xoProgressNotifier* notifier, std::uint64_t total = 1, std::string_view text = {},
                             xoProgressUnit unit = ProgressUnitNone);

    // A group of steps that take shares of the range in proportion to their weights; equal ones if all weights are 0.
    // Without any weight the total is not known.
    xoProgressScope(xoProgressNotifier* notifier, std::initializer_list<std::uint64_t> weights,
                    std::string_view text = {});
    xoProgressScope(xoProgressNotifier* notifier, const std::vector<std::uint64_t>& weights,
                    std::string_view text = {});

    // Ends the scope, and any that a fault left open above it.
    ~xoProgressScope();
    xoProgressScope(const xoProgressScope&) = delete;
    xoProgressScope& operator=(const xoProgressScope&) = delete;

    // Completes steps, the current one with all that nested scopes have left of it. A count beyond the total stays at
    // the total. Returns false once the work is canceled. advance(0) only asks.
    bool advance(std::uint64_t steps = 1) {
        if (mCounter) {
            const std::uint64_t done = mCounter->done.load(std::memory_order_relaxed);
            const std::uint64_t left = mCounter->limit - done;
            mCounter->done.store(done + (steps < left ? steps : left), std::memory_order_relaxed);
            if (mCounter->hasCalls) callIfDue();
        }
        return !isCanceled();
    }

    // The same by the new count. A count below the present one changes nothing.
    bool advanceTo(std::uint64_t done) {
        const std::uint64_t before = mCounter ? mCounter->done.load(std::memory_order_relaxed) : done;
        return advance(done > before ? done - before : 0);
    }

    // Until the next step is completed, nested scopes fill that many steps instead of one. 0 counts as 1; steps beyond
    // the total are left out.
    void setStepSpan(std::uint64_t steps);

    // Replaces the text. It is copied.
    void setText(std::string_view text);

    // Replaces the total, at any time; 0 makes it unknown. A total below the present count is raised to it. Where a
    // larger total would make the fraction fall, the fraction waits. A group of weighted steps ignores the call.
    void setTotal(std::uint64_t total);

    // The scope is complete when it ends, whatever was counted.
    void finish();

    // Whether the work has been canceled.
    bool isCanceled() const { return mNotifier && mNotifier->isCanceled(); }

private:
    friend struct impl::ProgressAccess;
    friend class xoProgressProxy;
    void callIfDue();

    xoProgressNotifier* mNotifier;
    impl::ProgressCounter* mCounter = nullptr;  // in the notifier; null for a scope that counts for nothing
    std::uint64_t mSerial = 0;                  // of the level that is this scope's
};

// A scope that many threads advance. It is a local variable of the thread that owns the notifier, which calls the
// notifier's update() while it waits for the others: they never call onProgress.
class XOSYSTEM_API xoProgressProxy {
public:
    // As for xoProgressScope.
    xoProgressProxy(xoProgressNotifier* notifier, std::uint64_t total, std::string_view text = {},
                    xoProgressUnit unit = ProgressUnitNone);
    ~xoProgressProxy();
    xoProgressProxy(const xoProgressProxy&) = delete;
    xoProgressProxy& operator=(const xoProgressProxy&) = delete;

    // Completes steps; false once the work is canceled. Any thread may call it. All threads write to the same memory,
    // so it is for coarse steps: a loop of small ones advances a scope on a Task.
    bool advance(std::uint64_t steps = 1);

    // Replaces the text; the last one counts. Any thread may call it.
    void setText(std::string_view text);

    // Whether the work has been canceled. Any thread may call it.
    bool isCanceled() const { return mScope.isCanceled(); }

    // The scope is complete when it ends, whatever was counted. For the owning thread.
    void finish();

    // A notifier for one of the threads, which it hands to the functions that it calls. It must end before its proxy.
    //
    // The work on it fills the given number of the proxy's steps. They count when the Task ends, if its last work was
    // complete or finish() was called; until then the state of the proxy's notifier includes its share. A cancellation
    // of either notifier is one of both.
    class XOSYSTEM_API Task final : public xoProgressNotifier {
    public:
        // The thread that makes it may be any.
        explicit Task(xoProgressProxy& proxy, std::uint64_t steps = 1);
        ~Task() override;

        // The steps count when it ends, whatever its work has done.
        void finish();

    private:
        friend struct impl::ProgressAccess;
        struct Private;
        std::unique_ptr<Private> mTask;
    };

private:
    friend struct impl::ProgressAccess;
    xoProgressScope mScope;
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoProgressUnit> xoEnumEntries(xoProgressUnit);
XOSYSTEM_API xoEnumList<xoProgressState::Phase> xoEnumEntries(xoProgressState::Phase);

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
