// The workers of a pool. Each runs one task at a time, with the pool's mutex locked; the task may unlock it meanwhile.
// The functions that distribute the tasks are in the public header, because the caller's module compiles them.
#include "xoSystem/xoConcurrentPool.h"

#include <algorithm>
#include <utility>

#include "platform/structuredCall.h"
#include "threads/guardedBody.h"

namespace xo {

// The destructor does not run when the constructor throws, so the workers that were started already are ended here.
ConcurrentPool::ConcurrentPool(unsigned int workerCount) : mWorkerCount((std::max)(workerCount, 1u)) {
    try {
        start();
    } catch (...) {
        stop();
        throw;
    }
}

ConcurrentPool::~ConcurrentPool() { stop(); }

// Adds one worker after the other, so that stop() finds exactly those that exist.
void ConcurrentPool::start() {
    mWorkers.reserve(mWorkerCount);
    for (unsigned i = 0; i < mWorkerCount; ++i) {
        mWorkers.push_back(std::make_unique<Worker>(*this));
        mWorkers.back()->startThread(nullptr);
    }
}

// The workers are destroyed, which joins them, without the lock: a worker needs it to see the request and end. A
// running task is not interrupted.
void ConcurrentPool::stop() {
    {
        const xoMutexLocker locker(mMutex);
        for (const auto& owned : mWorkers) {
            Worker& worker = *owned;
            worker.isOfLockedPool();
            worker.mKeepRunning = false;
        }
        mWorkCondition.wakeAll();
    }
    mWorkers.clear();
}

unsigned int ConcurrentPool::getWorkerCount() const { return mWorkerCount; }

void ConcurrentPool::callReleasing(void (*run)(void*), void (*release)(void*), void* argument) {
    platform::callReleasing(run, release, argument);
}

ConcurrentPool::Worker::Worker(ConcurrentPool& pool) : mPool(pool) {}

// Joins without a time limit. Here and not only in the base class, because the thread uses the members of Worker.
ConcurrentPool::Worker::~Worker() { waitThread(INT_MAX); }

void ConcurrentPool::Worker::run() {
    if (!threads::runReporting(&serve, this, {&mPool.mMutex})) loseTask();
}

// The loop of the thread. A worker without a task sleeps in mWorkCondition, whose wait releases the mutex.
void ConcurrentPool::Worker::serve(void* argument) {
    auto& worker = *static_cast<Worker*>(argument);
    ConcurrentPool& pool = worker.mPool;
    // Not by a locker: when a task fails, runReporting releases the lock if the task still holds it.
    pool.mMutex.lock();
    worker.isOfLockedPool();
    while (worker.mKeepRunning) {
        if (!worker.mTask) {
            pool.mWorkCondition.wait(&pool.mMutex);
            continue;
        }
        // From here on the task can no longer be withdrawn by the caller of solve().
        worker.mIsSolving = true;
        worker.mTask->solve(&pool.mMutex, &pool.mSolverCondition);
        worker.mIsSolving = false;
        worker.mTask = nullptr;
        // mBusyCount was incremented when the task was assigned.
        if (--pool.mBusyCount == 0) pool.mDoneCondition.wakeAll();
    }
    pool.mMutex.unlock();
}

// Called when serve() has failed: in its task, or for lack of memory. Marks the worker as ended, so that it can be
// started again, and wakes the callers of solve(), because nobody else will complete the task.
void ConcurrentPool::Worker::loseTask() {
    const xoMutexLocker locker(mPool.mMutex);
    mKeepRunning = false;
    mIsSolving = false;
    if (std::exchange(mTask, nullptr)) --mPool.mBusyCount;
    mPool.mDoneCondition.wakeAll();
}

}  // namespace xo
