// ConcurrentPool: a fixed number of worker threads that solve lists of tasks.
//
//     class Square final : public xo::ConcurrentPool::SolverBase {
//         void solve(xo::xoMutex* poolMutex, xo::xoWaitCondition*) override {
//             const int side = mSide;
//             poolMutex->unlock();               // while it computes, other workers go on
//             const int area = compute(side);
//             poolMutex->lock();
//             mArea = area;
//         }
//     };
//     xo::concurrent::GetConcurrentPool().solve({&first, &second, &third});
//
// A task is called with the pool's mutex locked, so that what it does to shared data needs no further lock, but no
// other task of the pool runs meanwhile. A task that computes for longer unlocks the mutex that it is given and locks
// it again, as above. To wait for another task it waits on the condition that it is given, and a task wakes the waiting
// ones with wakeAll(), because all tasks share that condition. A task returns with the mutex locked exactly once, as it
// was called; to return without it is undefined.
//
// Tasks may wait for others of their list as long as there are enough workers for all that wait and one more; lists of
// other callers change nothing about that. A task must not call solve() of its own pool: it would wait for itself. A
// task that waits for one that has thrown waits for ever, unless its wait has a time-out.
//
// A task that throws or faults is reported by the guard and ends its worker's thread; the mutex is unlocked, the other
// workers go on with the remaining tasks, and the thread is started again when it is needed.
//
// Several threads may call solve() at once. A pool is destroyed when none of them is inside, and under the rules by
// which threads are joined (see xoThread.h). One that is never destroyed costs nothing at the end of the process.
#ifndef XOSYSTEM_XOCONCURRENTPOOL_H
#define XOSYSTEM_XOCONCURRENTPOOL_H

#include <climits>
#include <cstddef>
#include <list>
#include <memory>
#include <utility>
#include <vector>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoMutex.h"
#include "xoSystem/xoProgress.h"
#include "xoSystem/xoThread.h"
#include "xoSystem/xoWaitCondition.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

class ConcurrentPool {
public:
    // A task, and the owner of the tasks that it was split into.
    class SolverBase {
    public:
        SolverBase() = default;
        SolverBase(const SolverBase&) = delete;
        SolverBase& operator=(const SolverBase&) = delete;

        // Destroys the sub-tasks, and theirs, one after the other and without recursion: a chain may be of any length.
        virtual ~SolverBase() {
            while (!mSubTasks.empty()) {
                const std::unique_ptr<SolverBase> task = std::move(mSubTasks.front());
                mSubTasks.pop_front();
                mSubTasks.splice(mSubTasks.end(), task->mSubTasks);
            }
        }

        // Does the work, on a worker thread, with poolMutex locked.
        virtual void solve(xoMutex* poolMutex, xoWaitCondition* solverCondition) XO_REQUIRES(poolMutex) = 0;

        // Takes ownership of a sub-task. It is solved only when its caller passes it to ConcurrentPool::solve(). Null
        // is ignored.
        void addSubTask(std::unique_ptr<SolverBase> task) {
            if (task) mSubTasks.push_back(std::move(task));
        }

    private:
        std::list<std::unique_ptr<SolverBase>> mSubTasks;
    };

    // Starts the workers; 0 counts as 1. Throws what xoThread::startThread throws, std::bad_alloc or std::length_error
    // when there cannot be so many threads; none is left then. There is no use in more workers than processors, unless
    // tasks wait.
    XOSYSTEM_API explicit ConcurrentPool(unsigned int workerCount);

    // Waits for the workers to end.
    XOSYSTEM_API ~ConcurrentPool();
    ConcurrentPool(const ConcurrentPool&) = delete;
    ConcurrentPool& operator=(const ConcurrentPool&) = delete;

    // The number of workers, including those that a task has ended.
    XOSYSTEM_API unsigned int getWorkerCount() const;

    // Has the workers solve the tasks, begun in their order, and waits until all are done. The tasks stay the property
    // of the caller; null is skipped. Among several callers, free workers go to the one that called first and has tasks
    // not begun.
    //
    // False when a task threw or faulted, and when tasks were not begun because a task has ended the last worker and
    // Windows, or memory, allows no new thread.
    bool solve(const std::vector<SolverBase*>& tasks);

    // The same with a notifier, which may be null: each task is a step. The calling thread looks every 50 ms, and calls
    // the notifier without holding the pool's mutex. Once the notifier is canceled, no further task begins, and the
    // result is false if any was left. A task that waits for one of these waits for ever, unless its wait has a
    // time-out. When a guard around the call handles a fault in onProgress, no further task begins either, and the
    // guard goes on when the tasks under way are done.
    bool solve(const std::vector<SolverBase*>& tasks, xoProgressNotifier* progress);

private:
    class Batch;
    class Worker;
    class Look;

    // Tasks are handed out by code that the caller compiles, so the members below belong to the interface between the
    // caller and the DLL.
    void enter(Batch& batch) XO_REQUIRES(mMutex);
    void leave(Batch& batch) XO_REQUIRES(mMutex);
    bool abandonIfCanceled(Batch& batch) XO_REQUIRES(mMutex);
    void abandon(Batch& batch) XO_REQUIRES(mMutex);
    void abandonAndLeave(Batch& batch);
    bool awaitChange(Batch& batch, unsigned long timeoutMs) XO_REQUIRES(mMutex);
    bool offer(Batch& batch) XO_REQUIRES(mMutex);
    bool isNextToBegin(const Batch& batch) const XO_REQUIRES(mMutex);
    bool isTaken(const Batch& batch) const XO_REQUIRES(mMutex);
    void withdraw(const Batch& batch) XO_REQUIRES(mMutex);
    bool hasSeveralCallers() const XO_REQUIRES(mMutex);
    void wakeOtherCallers() XO_REQUIRES(mMutex);
    void wakeWorker() XO_REQUIRES(mMutex);
    void assign(Worker& worker, Batch& batch) XO_REQUIRES(mMutex);
    static bool revive(Worker& worker) noexcept;

    // Calls run, and then release, however run ends: also by a fault that a guard further out handles. In the DLL,
    // because not every compiler of a host has structured exception handling.
    XOSYSTEM_API static void callReleasing(void (*run)(void*), void (*release)(void*), void* argument);

    void start();
    void stop();

    std::vector<std::unique_ptr<Worker>> mWorkers;  // fixed after construction
    xoMutex mMutex;                                 // guards all below and every field of the workers
    xoWaitCondition mSolverCondition;               // for the tasks' own use
    xoWaitCondition mWorkCondition;                 // workers without a task sleep here
    xoWaitCondition mDoneCondition;  // woken when no worker has a task, and when a caller should look again
    unsigned int mBusyCount XO_GUARDED_BY(mMutex) = 0;  // workers that have a task
    unsigned int mWorkerCount;
    Batch* mOldest XO_GUARDED_BY(mMutex) = nullptr;  // one for each thread inside solve(), oldest first
};

// A thread of the pool. Its fields are guarded by the pool's mutex.
class ConcurrentPool::Worker final : public xoThread {
public:
    explicit Worker(ConcurrentPool& pool);
    ~Worker() override;

private:
    friend class ConcurrentPool;

    void run() override;
    static void serve(void* argument);
    void loseTask();

    // Tells the analysis that the pool of which this is a worker is the one whose mutex is held.
    void isOfLockedPool() const XO_THREAD_ATTRIBUTE(assert_capability(mPool.mMutex)) {}

    SolverBase* mTask XO_GUARDED_BY(mPool.mMutex) = nullptr;
    ConcurrentPool& mPool;
    bool mKeepRunning XO_GUARDED_BY(mPool.mMutex) = true;  // false also once a task has ended the thread
    bool mIsSolving XO_GUARDED_BY(mPool.mMutex) = false;   // inside mTask, which until then may be withdrawn
};

// The list of one call of solve. Each worker that takes it solves tasks until none is left.
class ConcurrentPool::Batch final : public SolverBase {
public:
    Batch(ConcurrentPool& pool, const std::vector<SolverBase*>& tasks, const xoProgressNotifier* progress)
        : mPool(pool), mTasks(tasks), mProgress(progress) {}

    void solve(xoMutex*, xoWaitCondition* solverCondition) override XO_REQUIRES(mPool.mMutex) {
        if (mTasks.size() - mBegun > 1) mPool.wakeWorker();
        while (hasTasks()) {
            if (mPool.abandonIfCanceled(*this)) break;
            SolverBase* const task = mTasks[mBegun++];
            if (!hasTasks()) mPool.withdraw(*this);
            if (task) task->solve(&mPool.mMutex, solverCondition);
            ++mDone;
        }
        mPool.wakeOtherCallers();
    }

    bool hasTasks() const { return mBegun < mTasks.size(); }  // not begun yet
    bool isDone() const { return mDone == mTasks.size(); }
    std::size_t doneCount() const { return mDone; }

private:
    friend class ConcurrentPool;

    ConcurrentPool& mPool;
    const std::vector<SolverBase*>& mTasks;
    std::size_t mBegun = 0;  // this and all below under the pool's mutex
    std::size_t mDone = 0;
    Batch* mYounger = nullptr;

    // Behind the others: a batch of a module that was built with an older header ends here.
    const xoProgressNotifier* mProgress;
};

// A call of the notifier while the tasks are solved. If it ends by a fault, solve() does not go on, so that its batch
// has to be taken back from the workers before the stack is used again.
class ConcurrentPool::Look {
    friend class ConcurrentPool;

    Look(ConcurrentPool& pool, Batch& batch, xoProgressScope& work) : mPool(pool), mBatch(batch), mWork(work) {}

    static void run(void* look) {
        Look& self = *static_cast<Look*>(look);
        self.mWork.advanceTo(self.mDone);
        self.mHasReturned = true;
    }
    static void release(void* look) {
        const Look& self = *static_cast<Look*>(look);
        if (!self.mHasReturned) self.mPool.abandonAndLeave(self.mBatch);
    }

    ConcurrentPool& mPool;
    Batch& mBatch;
    xoProgressScope& mWork;
    const std::size_t mDone = mBatch.doneCount();
    bool mHasReturned = false;
};

inline bool ConcurrentPool::solve(const std::vector<SolverBase*>& tasks) {
    constexpr unsigned long kNoLimit = 0xFFFFFFFF;
    if (tasks.empty()) return true;
    Batch batch(*this, tasks, /*progress=*/nullptr);
    const xoMutexLocker locker(mMutex);
    enter(batch);
    while (awaitChange(batch, kNoLimit)) {
    }
    leave(batch);
    return batch.isDone();
}

inline bool ConcurrentPool::solve(const std::vector<SolverBase*>& tasks, xoProgressNotifier* progress) {
    constexpr unsigned long kLookMs = 50;
    if (!progress) return solve(tasks);
    xoProgressScope work(progress, tasks.size(), {}, ProgressUnitItems);
    Batch batch(*this, tasks, progress);
    xoMutexLocker locker(mMutex);
    enter(batch);
    abandonIfCanceled(batch);
    while (awaitChange(batch, kLookMs)) {
        Look look(*this, batch, work);
        locker.unlock();
        callReleasing(&Look::run, &Look::release, &look);
        locker.lock();
        abandonIfCanceled(batch);
    }
    leave(batch);
    locker.unlock();
    if (batch.isDone()) work.finish();
    return batch.isDone();
}

// Abandons the batch once the work is canceled. True if it did now.
inline bool ConcurrentPool::abandonIfCanceled(Batch& batch) {
    if (!batch.mProgress || !batch.mProgress->isCanceled() || !batch.hasTasks()) return false;
    abandon(batch);
    return true;
}

// Leaves the tasks that are not begun for good.
inline void ConcurrentPool::abandon(Batch& batch) {
    batch.mBegun = batch.mTasks.size();
    withdraw(batch);
}

// The same, and returns when the pool does not use the batch any more.
inline void ConcurrentPool::abandonAndLeave(Batch& batch) {
    const xoMutexLocker locker(mMutex);
    abandon(batch);
    while (isTaken(batch)) mDoneCondition.wait(&mMutex);
    leave(batch);
}

// Waits until something has happened, or the time has passed. False when the batch needs no more waiting.
inline bool ConcurrentPool::awaitChange(Batch& batch, unsigned long timeoutMs) {
    if (!(batch.hasTasks() ? offer(batch) : isTaken(batch))) return false;
    mDoneCondition.wait(&mMutex, timeoutMs);
    return true;
}

inline void ConcurrentPool::enter(Batch& batch) {
    Batch** link = &mOldest;
    while (*link) link = &(*link)->mYounger;
    *link = &batch;
}

inline void ConcurrentPool::leave(Batch& batch) {
    withdraw(batch);
    Batch** link = &mOldest;
    while (*link != &batch) link = &(*link)->mYounger;
    *link = batch.mYounger;
    if (mOldest) mDoneCondition.wakeAll();  // tasks left without a worker may have kept the others waiting
}

// Gives the batch, when it is its turn, to every worker without a task and wakes one of them, which wakes the next when
// there is more to do: short lists are done before a second worker is awake. False when no worker is left.
inline bool ConcurrentPool::offer(Batch& batch) {
    if (!isNextToBegin(batch)) return true;
    bool anyAlive = false;
    bool anyAsleep = false;
    for (const auto& owned : mWorkers) {
        Worker& worker = *owned;
        worker.isOfLockedPool();
        if (!worker.mKeepRunning && !revive(worker)) continue;
        anyAlive = true;
        if (!worker.mTask) assign(worker, batch);
        anyAsleep = anyAsleep || (worker.mTask == &batch && !worker.mIsSolving);
    }
    if (anyAsleep) wakeWorker();
    return anyAlive;
}

// Strictly in the order of the calls. All tasks of the older batches are begun then, and need no further worker to end;
// so tasks that wait for others of their list wait as if the list had the pool to itself. Workers divided among several
// lists could each wait for a task that none is left to begin.
inline bool ConcurrentPool::isNextToBegin(const Batch& batch) const {
    const Batch* next = mOldest;
    while (!next->hasTasks()) next = next->mYounger;
    return next == &batch;
}

inline void ConcurrentPool::assign(Worker& worker, Batch& batch) {
    worker.isOfLockedPool();
    worker.mTask = &batch;
    ++mBusyCount;
}

// Starts a worker again whose thread was ended by a task. False when there is no thread, or no memory, for it.
inline bool ConcurrentPool::revive(Worker& worker) noexcept {
    worker.isOfLockedPool();
    try {
        worker.waitThread(INT_MAX);  // not for long: it has left the pool's lock for good
        worker.startThread(nullptr);
    } catch (...) {
        return false;
    }
    worker.mKeepRunning = true;
    return true;
}

inline bool ConcurrentPool::isTaken(const Batch& batch) const {
    for (const auto& owned : mWorkers) {
        const Worker& worker = *owned;
        worker.isOfLockedPool();
        if (worker.mTask == &batch) return true;
    }
    return false;
}

// Takes the batch, whose tasks are all begun, away from the workers that have not woken for it yet.
inline void ConcurrentPool::withdraw(const Batch& batch) {
    for (const auto& owned : mWorkers) {
        Worker& worker = *owned;
        worker.isOfLockedPool();
        if (worker.mTask != &batch || worker.mIsSolving) continue;
        worker.mTask = nullptr;
        --mBusyCount;
    }
    wakeOtherCallers();
}

inline bool ConcurrentPool::hasSeveralCallers() const { return mOldest && mOldest->mYounger; }

// A worker is free, or will be when it leaves the lock.
inline void ConcurrentPool::wakeOtherCallers() {
    if (hasSeveralCallers()) mDoneCondition.wakeAll();
}

// With one caller every sleeping worker has its batch, so that any of them will do.
inline void ConcurrentPool::wakeWorker() {
    if (hasSeveralCallers())
        mWorkCondition.wakeAll();
    else
        mWorkCondition.wakeOne();
}

namespace concurrent {

// The pool of the process, with one worker per processor (the environment variable NUMBER_OF_PROCESSORS), or fewer when
// not so many threads can be started. It exists from initializeXoSystem(InitTypeFull) to the outermost termination;
// outside that time this throws std::system_error. A host that never terminates the library leaves it to the end of the
// process, which does not wait for it.
XOSYSTEM_API ConcurrentPool& GetConcurrentPool();

}  // namespace concurrent
}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
