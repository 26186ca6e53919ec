#include "xoSystem/xoConcurrentPool.h"

#include <algorithm>
#include <atomic>
#include <list>

#include "support/allocationCount.h"
#include "threadsFixture.h"
#include "xoSystem/xoException.h"

namespace {

using xo::ConcurrentPool;
using xo::xoMutex;
using xo::xoWaitCondition;
using xo::tests::Event;
using xo::tests::FunctionThread;
using xo::tests::ImportHook;

class Pool : public xo::tests::ThreadsTest {};

using Tasks = std::vector<ConcurrentPool::SolverBase*>;

class Task final : public ConcurrentPool::SolverBase {
public:
    using Body = std::function<void(xoMutex*, xoWaitCondition*)>;
    explicit Task(Body body) : mBody(std::move(body)) {}
    explicit Task(std::function<void()> body) : mBody([=](xoMutex*, xoWaitCondition*) { body(); }) {}
    void solve(xoMutex* mutex, xoWaitCondition* condition) override { mBody(mutex, condition); }

    // A body that is executed without the lock.
    static Body unlocked(std::function<void()> body) {
        return [=](xoMutex* mutex, xoWaitCondition*) XO_NO_THREAD_SAFETY_ANALYSIS {
            mutex->unlock();
            body();
            mutex->lock();
        };
    }

private:
    Body mBody;
};

TEST_F(Pool, SolvesMoreTasksThanWorkersEachOnceInOrder) {
    EXPECT_EQ(ConcurrentPool(0).getWorkerCount(), 1u);
    for (const unsigned workers : {1u, 2u, 7u}) {
        ConcurrentPool pool(workers);
        EXPECT_TRUE(pool.solve({}));
        for (const int count : {1, 2, 300}) {
            std::vector<int> begun;
            std::list<Task> owned;
            Tasks tasks{nullptr};
            for (int i = 0; i < count; ++i) tasks.push_back(&owned.emplace_back([&begun, i] { begun.push_back(i); }));
            EXPECT_TRUE(pool.solve(tasks));
            EXPECT_EQ(begun.size(), owned.size());
            EXPECT_TRUE(std::is_sorted(begun.begin(), begun.end()));
        }
    }
}

TEST_F(Pool, RunsTasksSideBySideWhereTheyWait) {
    constexpr int kWorkers = 3;
    ConcurrentPool pool(kWorkers);
    int arrived = 0;
    Task waiting([&](xoMutex* mutex, xoWaitCondition* condition) XO_NO_THREAD_SAFETY_ANALYSIS {
        if (++arrived == kWorkers) condition->wakeAll();
        while (arrived < kWorkers) condition->wait(mutex);
    });
    EXPECT_TRUE(pool.solve(Tasks(kWorkers, &waiting)));
}

TEST_F(Pool, ServesSeveralCallers) {
    ConcurrentPool pool(3);
    int solved = 0;  // under the pool's lock
    std::atomic<int> solvedOutside{0};
    Task inside([&] { ++solved; });
    Task outside(Task::unlocked([&] { ++solvedOutside; }));
    const auto call = [&] {
        for (int round = 0; round < 100; ++round)
            EXPECT_TRUE(pool.solve({&inside, &outside, &inside, &outside, &inside, &outside}));
    };
    {
        FunctionThread callers[] = {FunctionThread(call), FunctionThread(call), FunctionThread(call)};
        for (FunctionThread& caller : callers) caller.startThread("caller");
    }
    EXPECT_EQ(solved, 900);
    EXPECT_EQ(solvedOutside, 900);
}

// Lists of two tasks that wait for each other, and one worker that is busy when they are offered.
TEST_F(Pool, GivesFreeWorkersToTheOldestListThatHasTasksToBegin) {
    struct Pair {
        Task task{[this](xoMutex* mutex, xoWaitCondition* condition) XO_NO_THREAD_SAFETY_ANALYSIS {
            begun.set();
            if (++arrived == 2) condition->wakeAll();
            while (arrived < 2 && !isAlone) isAlone = !condition->wait(mutex, 10000);
        }};
        Event begun;
        int arrived = 0;  // this and the next under the pool's lock
        bool isAlone = false;
    };
    for (int round = 0; round < 10; ++round) {
        ConcurrentPool pool(2);
        Event computing;
        Event endComputation;
        Pair pairs[5];
        Task computation(Task::unlocked([&] {
            computing.set();
            EXPECT_TRUE(endComputation.wait());
        }));
        std::list<FunctionThread> callers;
        const auto call = [&](const Tasks& tasks) {
            callers.emplace_back([&pool, tasks] { EXPECT_TRUE(pool.solve(tasks)); }).startThread("caller");
        };
        call({&computation});
        ASSERT_TRUE(computing.wait());
        for (Pair& pair : pairs) {
            call({&pair.task, &pair.task});
            if (&pair == pairs) ASSERT_TRUE(pair.begun.wait());
        }
        endComputation.set();
        callers.clear();
        for (const Pair& pair : pairs) ASSERT_FALSE(pair.isAlone);
    }
}

TEST_F(Pool, GoesOnWhenTasksFail) {
    // With the lock as it was handed over, released, and taken once more; and with a worker left or none.
    for (const auto& [levels, workers] : {std::pair(1, 1u), std::pair(0, 2u), std::pair(2, 1u)}) {
        ConcurrentPool pool(workers);
        forEachFailure([&, level = levels](const std::function<void()>& fail) {
            int solved = 0;
            Task good([&] { ++solved; });
            Task bad([&](xoMutex* mutex, xoWaitCondition*) XO_NO_THREAD_SAFETY_ANALYSIS {
                if (level == 0) mutex->unlock();
                if (level == 2) mutex->lock();
                fail();
            });
            EXPECT_FALSE(pool.solve({&good, &bad, &good}));
            EXPECT_EQ(solved, 2) << "the others are solved";
            EXPECT_TRUE(pool.solve({&good}));
        });
    }
}

TEST_F(Pool, TakesTheTasksBackWhenTheNotifierFaults) {
    // Faults at its second call, which comes from solve(), while the first task is being solved.
    class Faulty final : public xo::xoProgressNotifier {
    public:
        explicit Faulty(Event& goOn) : xoProgressNotifier(0), mGoOn(goOn) {}

    private:
        void onProgress(const xo::xoProgressState&) override {
            if (++mCalls != 2) return;
            mGoOn.set();
            *static_cast<volatile int*>(nullptr) = 1;
        }
        Event& mGoOn;
        int mCalls = 0;
    };
    ConcurrentPool pool(1);
    Event goOn;
    Faulty faulty(goOn);
    std::atomic<int> begun{0}, solved{0};
    Task task(Task::unlocked([&] {
        ++begun;
        goOn.wait();
        ++solved;
    }));
    std::function<void()> solve = [&] { pool.solve(Tasks(1000, &task), &faulty); };
    EXPECT_ANY_THROW(xo::exception::impl::ExecGuardedCode(
        [](void* function) { (*static_cast<std::function<void()>*>(function))(); }, &solve));
    EXPECT_EQ(begun, solved) << "the pool has nothing that is on the abandoned stack";
    EXPECT_TRUE(pool.solve({&task}));
    EXPECT_EQ(begun, solved);
}

DWORD threadWithoutMemory = 0;
void* allocateForOthers(std::size_t size) {
    return ::GetCurrentThreadId() == threadWithoutMemory ? nullptr : ImportHook::behind(&allocateForOthers)(size);
}

TEST_F(Pool, ReturnsThoughTheLastWorkerCannotBeReplaced) {
    ConcurrentPool pool(2);
    int solved = 0;
    Task good([&] { ++solved; });
    Task bad([] { throw std::runtime_error("bad"); });
    const Tasks lists[] = {{&bad, &bad, &good}, {&good}};
    const auto expectNothingSolved = [&] {
        for (const Tasks& tasks : lists) EXPECT_FALSE(pool.solve(tasks));
        EXPECT_EQ(solved, 0);
    };
    {
        const xo::tests::NoMoreThreads hook;
        ASSERT_TRUE(hook.isInstalled());
        expectNothingSolved();
        EXPECT_THROW(ConcurrentPool(2), std::system_error);
    }
    EXPECT_TRUE(pool.solve(lists[1]));
    solved = 0;
    {
        const ImportHook hook(xo::tests::kAllocator, "malloc", &allocateForOthers);
        ASSERT_TRUE(hook.isInstalled());
        threadWithoutMemory = ::GetCurrentThreadId();
        expectNothingSolved();
        threadWithoutMemory = 0;
    }
    EXPECT_TRUE(pool.solve(lists[1]));
}

TEST_F(Pool, DestroysAChainOfSubTasksOfAnyLength) {
    static int alive = 0;
    struct Part final : ConcurrentPool::SolverBase {
        Part() { ++alive; }
        ~Part() override { --alive; }
        void solve(xoMutex*, xoWaitCondition*) override {}
    };
    auto root = std::make_unique<Part>();
    for (int i = 0; i < 200000; ++i) {
        auto parent = std::make_unique<Part>();
        parent->addSubTask(std::exchange(root, nullptr));
        root = std::move(parent);
    }
    root.reset();
    EXPECT_EQ(alive, 0);
}

}  // namespace
