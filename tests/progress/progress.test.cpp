#include "xoSystem/xoProgress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <random>
#include <thread>
#include <vector>

#include "support/allocationCount.h"
#include "xoSystem/xoException.h"
#include "xoSystem/xoLog.h"

namespace {

using testing::ElementsAre;
using xo::xoProgressNotifier;
using xo::xoProgressProxy;
using xo::xoProgressScope;
using State = xo::xoProgressState;

// Called at each step; keeps what it was called with.
class Recorder : public xoProgressNotifier {
public:
    Recorder() : xoProgressNotifier(0) {}
    std::vector<State> states;

    std::vector<int> percents() const {
        std::vector<int> all;
        for (const State& state : states) all.push_back(static_cast<int>(state.fraction * 100 + 0.5));
        return all;
    }

private:
    void onProgress(const State& state) override { states.push_back(state); }
};

double fractionOf(const xoProgressNotifier& notifier) { return notifier.getState().fraction; }

// The per cent at each call of a scope: its begin, its steps, its end.
TEST(Progress, StepsAndNestedScopesShareTheRange) {
    const struct {
        std::function<void(xoProgressNotifier*)> work;
        std::vector<int> percents;
    } rows[] = {
        {[](xoProgressNotifier* notifier) {
             xoProgressScope scope(notifier, 4);
             EXPECT_TRUE(scope.advance());
             scope.advance(2);
             scope.advanceTo(2);  // lower: nothing
             scope.advance(100);  // beyond the total
         },
         {0, 25, 75, 75, 100, 100}},
        {[](xoProgressNotifier* notifier) {
             xoProgressScope scope(notifier, {70, 0, 30});
             scope.setTotal(9);  // ignored
             for (int i = 0; i < 3; ++i) scope.advance();
         },
         {0, 0, 70, 70, 100, 100}},
        {[](xoProgressNotifier* notifier) {
             xoProgressScope(notifier, std::vector<std::uint64_t>{0, 0}).advance();  // equal
         },
         {0, 50, 50}},
        {[](xoProgressNotifier* notifier) {
             xoProgressScope outer(notifier, {50, 40, 10});
             xoProgressScope(notifier, 2).advance();  // incomplete: stays
             {
                 xoProgressScope rest(notifier, 4);  // what the first has left: from 25 % to 50 %
                 rest.advance(2);
                 xoProgressScope deeper(notifier, 2);
                 deeper.advance();
                 deeper.finish();
             }
             outer.advance();
             outer.setStepSpan(2);
             xoProgressScope(notifier, 2).advance(2);
             xoProgressScope(notifier, 2).advance();  // nothing is left
         },
         {0, 0, 25, 25, 25, 38, 38, 41, 44, 44, 50, 50, 100, 100, 100, 100, 100, 100}},
    };
    for (const auto& row : rows) {
        Recorder recorder;
        row.work(&recorder);
        EXPECT_EQ(recorder.percents(), row.percents);
        for (const State& state : recorder.states)
            EXPECT_EQ(state.fraction == 1, state.phase == State::PhaseDone) << "1 only when done";
    }
}

TEST(Progress, AScopeIsCompleteByItsStepsByANestedScopeOrByFinish) {
    enum Inner { kNone, kComplete, kIncomplete };
    const struct {
        int steps;
        Inner inner;
        bool finishes, cancels;
        State::Phase phase;
    } rows[] = {
        {2, kNone, false, false, State::PhaseDone},        {1, kNone, false, false, State::PhaseStopped},
        {1, kComplete, false, false, State::PhaseDone},    {1, kIncomplete, false, false, State::PhaseStopped},
        {0, kComplete, false, false, State::PhaseStopped}, {0, kNone, true, false, State::PhaseDone},
        {1, kNone, false, true, State::PhaseCanceled},     {2, kNone, false, true, State::PhaseDone},  // too late
    };
    for (const auto& row : rows) {
        Recorder notifier;
        {
            xoProgressScope scope(&notifier, 2, "title");
            for (int i = 0; i < row.steps; ++i) scope.advance();
            if (row.inner != kNone) {
                xoProgressScope inner(&notifier, 2);
                inner.advance(row.inner == kComplete ? 2 : 1);
            }
            if (row.finishes) scope.finish();
            if (row.cancels) notifier.cancel();
            EXPECT_EQ(scope.advance(0), !row.cancels);
        }
        const State last = notifier.getState();
        const auto at = ::testing::Message() << row.steps << row.inner << row.finishes << row.cancels;
        EXPECT_EQ(last.phase, row.phase) << at;
        EXPECT_EQ(last.fraction == 1, row.phase == State::PhaseDone) << at;
        EXPECT_EQ(last.title, "title");
        EXPECT_EQ(notifier.states.back().phase, row.phase) << at << "the end is told";
    }
}

TEST(Progress, AnUnknownTotalCountsAndWaits) {
    xoProgressNotifier notifier;
    {
        xoProgressScope outer(&notifier, 2);
        {
            xoProgressScope scope(&notifier, 0, "counting", xo::ProgressUnitBytes);
            scope.advance(500);
            State state = notifier.getState();
            EXPECT_TRUE(state.isIndeterminate);
            EXPECT_EQ(state.fraction, 0);
            EXPECT_EQ(state.done, 500u);
            EXPECT_EQ(state.total, 0u);
            scope.setTotal(1000);
            EXPECT_NEAR(fractionOf(notifier), 0.25, 1e-9);
            scope.setTotal(100000);  // the fraction would fall
            EXPECT_NEAR(fractionOf(notifier), 0.25, 1e-9);
            scope.advanceTo(75000);
            EXPECT_NEAR(fractionOf(notifier), 0.375, 1e-9);
            scope.setTotal(7);  // below the count
            EXPECT_EQ(notifier.getState().total, 75000u);
            scope.finish();
        }
        EXPECT_NEAR(fractionOf(notifier), 0.5, 1e-9);
        outer.advance();
        outer.advance();
    }
    EXPECT_EQ(notifier.getState().phase, State::PhaseDone);
}

TEST(Progress, StateHasTheOutermostUnitAndTheTexts) {
    xoProgressNotifier notifier;
    EXPECT_EQ(notifier.getState().phase, State::PhaseIdle);
    xoProgressScope work(&notifier, 1, "Copy");
    xoProgressScope bytes(&notifier, 1000, "first", xo::ProgressUnitBytes);
    bytes.advance(100);
    bytes.setStepSpan(400);
    {
        xoProgressScope file(&notifier, 10, {}, xo::ProgressUnitItems);
        file.advance(5);
        State state = notifier.getState();
        EXPECT_EQ(state.unit, xo::ProgressUnitBytes);
        EXPECT_EQ(state.done, 300u) << "with the nested share of the span";
        EXPECT_EQ(state.total, 1000u);
        EXPECT_EQ(state.title + "|" + state.text, "Copy|first");
        file.setText("second");
        EXPECT_EQ(notifier.getState().text, "second");
    }
    bytes.setText("third");
    EXPECT_EQ(notifier.getState().text, "third");
}

TEST(Progress, NullNotifierDoesNothing) {
    xoProgressScope scope(nullptr, {1, 2}, "nobody looks");
    EXPECT_TRUE(scope.advance(7) && scope.advanceTo(9) && !scope.isCanceled());
    scope.setText("x");
    scope.setTotal(3);
    scope.setStepSpan(2);
    scope.finish();
    xoProgressProxy proxy(nullptr, 5);
    xoProgressProxy::Task task(proxy, 2);
    xoProgressScope inner(&task, 2);
    inner.advance();
    EXPECT_NEAR(fractionOf(task), 0.5, 1e-9);
    task.cancel();
    EXPECT_FALSE(inner.advance());
    EXPECT_TRUE(proxy.advance());
}

// Random trees of scopes. The fraction never falls, and is 1 exactly when all of them were complete.
void workOn(xoProgressNotifier* notifier, std::mt19937& random, int depth, bool& isComplete) {
    const unsigned total = random() % 5;
    xoProgressScope scope(notifier, total);
    if (total == 0 || random() % 8 == 0) scope.finish();
    const unsigned steps = random() % 12 == 0 && total > 0 ? random() % total : total;
    for (unsigned i = 0; i < steps; ++i) {
        for (unsigned children = depth > 0 ? random() % 3 : 0; children > 0; --children) {
            bool isChildComplete = true;
            workOn(notifier, random, depth - 1, isChildComplete);
        }
        if (random() % 4 == 0) scope.setStepSpan(1 + random() % 3);
        scope.advance();
    }
    isComplete = isComplete && steps == total;
}

TEST(Progress, NeverFallsWithinAWork) {
    std::mt19937 random(4711);
    for (int round = 0; round < 300; ++round) {
        Recorder notifier;
        bool isComplete = true;
        workOn(&notifier, random, 4, isComplete);
        double before = 0;
        for (const State& state : notifier.states) {
            EXPECT_GE(state.fraction, before) << round;
            EXPECT_EQ(state.fraction == 1, state.phase == State::PhaseDone) << round;
            before = state.fraction;
        }
        if (isComplete) {
            EXPECT_EQ(notifier.getState().phase, State::PhaseDone) << round;
        }
    }
}

TEST(Progress, CallsComeFromTheOwningThreadAndTolerateWhatTheyDo) {
    class Rude : public xoProgressNotifier {
    public:
        Rude() : xoProgressNotifier(0) {}
        int calls = 0;
        double inner = -1;

    private:
        void onProgress(const State& state) override {
            ++calls;
            xoProgressScope scope(this, 2);  // counts for nothing
            scope.advance();
            inner = getState().fraction - state.fraction;
            if (calls == 2) cancel();
            throw 4711;
        }
    } rude;
    xoProgressScope scope(&rude, 4);
    EXPECT_FALSE(scope.advance());
    EXPECT_EQ(rude.calls, 2);
    EXPECT_EQ(rude.inner, 0);
    rude.update();
    EXPECT_EQ(rude.calls, 3);

    class Seldom : public xoProgressNotifier {
    public:
        Seldom() : xoProgressNotifier(60000) {}
        int calls = 0;

    private:
        void onProgress(const State&) override { ++calls; }
    } seldom;
    {
        xoProgressScope work(&seldom, 1000);
        for (int i = 0; i < 1000; ++i) work.advance();
        seldom.update();
    }
    EXPECT_EQ(seldom.calls, 2) << "at the beginning and at the end";
    seldom.update();
    EXPECT_EQ(seldom.calls, 2);
}

TEST(Progress, ScopesOfOtherThreadsCountForNothing) {
    xo::xoLog::createInstance(true);
    std::vector<std::string> lines;
    xo::xoLog::edit().setEchoToConsole(false);
    xo::xoLog::edit().installCustomHandler(
        [](const std::string& line, xo::xoLogType, const std::string&, void* all) {
            static_cast<std::vector<std::string>*>(all)->push_back(line);
        },
        &lines);
    xoProgressNotifier notifier;
    {
        xoProgressScope mine(&notifier, 4);
        std::thread([&notifier] {
            for (int i = 0; i < 2; ++i) {
                xoProgressScope foreign(&notifier, 1);
                EXPECT_TRUE(foreign.advance());
                notifier.cancel();
                EXPECT_TRUE(foreign.isCanceled());
                notifier.reset();
            }
        }).join();
    }
    xo::xoLog::destroyInstance();
    EXPECT_THAT(lines, ElementsAre("xoProgressScope made by a thread that does not own the notifier"));
}

TEST(Progress, ScopesThatAFaultLeftOpenEndWithTheNextBelow) {
    static xoProgressNotifier notifier;
    std::atomic<bool> isOver{false};
    std::thread looker([&isOver] {
        while (!isOver) EXPECT_LE(notifier.getState().fraction, 1);
    });
    {
        xoProgressScope outer(&notifier, 2);
        EXPECT_ANY_THROW(xo::exception::impl::ExecGuardedCode(+[] {
            xoProgressScope first(&notifier, 2);
            first.advance();
            xoProgressScope second(&notifier, 2);
            second.advance();
            *static_cast<volatile int*>(nullptr) = 1;
        }));
        EXPECT_NEAR(fractionOf(notifier), 0.375, 1e-9);
        outer.advance();
        EXPECT_NEAR(fractionOf(notifier), 0.5, 1e-9);
        outer.advance();
    }
    EXPECT_EQ(notifier.getState().phase, State::PhaseDone);
    isOver = true;
    looker.join();
    notifier.cancel();
    notifier.reset();
    EXPECT_EQ(notifier.getState().phase, State::PhaseIdle);
    EXPECT_FALSE(notifier.isCanceled());
}

TEST(Progress, CallsGoOnAfterAFaultInOne) {
    class Faulty : public xoProgressNotifier {
    public:
        Faulty() : xoProgressNotifier(0) {}
        int calls = 0;

    private:
        void onProgress(const State&) override {
            if (++calls == 2) *static_cast<volatile int*>(nullptr) = 1;
        }
    } faulty;
    xoProgressScope outer(&faulty, 2);
    EXPECT_ANY_THROW(xo::exception::impl::ExecGuardedCode(
        [](void* scope) { static_cast<xoProgressScope*>(scope)->advance(); }, &outer));
    outer.advance();
    EXPECT_EQ(faulty.calls, 3);
    { xoProgressScope(&faulty, 2).advance(); }
    EXPECT_EQ(faulty.calls, 6) << "begin, step and end of a nested scope, which counts again";
}

// Ends only by an overflow of the stack.
__declspec(noinline) void openScopes(xoProgressNotifier& notifier, int depth) {
    if (depth < 0) return;
    xoProgressScope scope(&notifier, 2);
    openScopes(notifier, depth + 1);
    scope.advance();
}

TEST(Progress, ARecursionThatOpensScopesForEverLeavesNothingLocked) {
    xoProgressNotifier notifier;
    EXPECT_ANY_THROW(xo::exception::impl::ExecGuardedCode(
        [](void* argument) { openScopes(*static_cast<xoProgressNotifier*>(argument), 0); }, &notifier));
    EXPECT_EQ(notifier.getState().phase, State::PhaseRunning);
    notifier.reset();
    EXPECT_EQ(notifier.getState().phase, State::PhaseIdle);
}

TEST(Progress, EndsWithoutMemoryAsWithIt) {
    const std::string title = "a title that is too long for a string without memory of its own";
    xoProgressNotifier notifier;
    State without;
    {
        const xo::tests::AllocationCount allocations;
        ASSERT_TRUE(allocations.isCounting());
        {
            xoProgressScope scope(&notifier, 1, title);
            scope.advance();
            xo::tests::AllocationCount::refuseAll(true);
        }
        without = notifier.getState();
        xo::tests::AllocationCount::refuseAll(false);
    }
    EXPECT_EQ(without.phase, State::PhaseDone);
    EXPECT_EQ(without.title, "") << "there is no memory for a copy";
    EXPECT_EQ(notifier.getState().title, title);
}

TEST(ProgressProxy, ThreadsAdvanceOneWork) {
    xoProgressNotifier notifier;
    {
        xoProgressScope outer(&notifier, 2);
        {
            xoProgressProxy proxy(&notifier, 4000, "threads", xo::ProgressUnitItems);
            std::vector<std::thread> threads;
            for (int i = 0; i < 4; ++i)
                threads.emplace_back([&proxy, i] {
                    if (i % 2 == 0) {
                        for (int step = 0; step < 1000; ++step) proxy.advance();
                        return;
                    }
                    xoProgressProxy::Task task(proxy, 1000);
                    xoProgressScope scope(&task, 10);
                    for (int step = 0; step < 10; ++step) scope.advance();
                });
            double before = 0;
            for (int i = 0; i < 1000; ++i) {
                const double now = fractionOf(notifier);
                EXPECT_GE(now, before);
                before = now;
            }
            for (std::thread& thread : threads) thread.join();
            EXPECT_EQ(notifier.getState().done, 4000u);
        }
        outer.advance(2);
    }
    EXPECT_EQ(notifier.getState().phase, State::PhaseDone);
}

TEST(ProgressProxy, TasksShowTheirShareAndCountWhenTheyAreComplete) {
    xoProgressNotifier notifier;
    {
        xoProgressProxy proxy(&notifier, 10);
        {
            xoProgressProxy::Task task(proxy, 5);
            {
                xoProgressScope scope(&task, 2);
                scope.advance();
                EXPECT_NEAR(fractionOf(notifier), 0.25, 1e-9);
                scope.advance();
            }
            EXPECT_NEAR(fractionOf(notifier), 0.5, 1e-9);
        }
        EXPECT_NEAR(fractionOf(notifier), 0.5, 1e-9);
        {
            xoProgressProxy::Task task(proxy, 5);
            xoProgressScope scope(&task, 2);
            task.cancel();
            EXPECT_TRUE(notifier.isCanceled() && proxy.isCanceled());
            EXPECT_FALSE(scope.advance());
        }  // incomplete: its steps do not count
        EXPECT_FALSE(proxy.advance(0));
        xoProgressProxy::Task(proxy, 4).finish();
        EXPECT_NEAR(fractionOf(notifier), 0.9, 1e-9);
    }
    EXPECT_EQ(notifier.getState().phase, State::PhaseCanceled);
}

}  // namespace
