// The workers of a pool; each serves one task at a time under the lock of the pool.
#include "xoSystem/xoConcurrentPool.h"

#include <algorithm>
#include <utility>

#include "threads/guardedBody.h"

namespace xo {

// No destructor runs for a constructor that throws, so that the workers already started are ended here.
ConcurrentPool::ConcurrentPool(unsigned int workerCount) : mWorkerCount((std::max)(workerCount, 1u)) {
    try {
        start();
    } catch (...) {
        stop();
        throw;
    }
}

ConcurrentPool::~ConcurrentPool() { stop(); }

void ConcurrentPool::start() {
    mWorkers.reserve(mWorkerCount);
    for (unsigned i = 0; i < mWorkerCount; ++i) {
        mWorkers.push_back(std::make_unique<Worker>(*this));
        mWorkers.back()->startThread(nullptr);
    }
}

// The workers are destroyed without the lock, because a worker needs it to see the request and end.
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

ConcurrentPool::Worker::Worker(ConcurrentPool& pool) : mPool(pool) {}

ConcurrentPool::Worker::~Worker() { waitThread(INT_MAX); }

void ConcurrentPool::Worker::run() {
    if (!threads::runReporting(&serve, this, {&mPool.mMutex})) loseTask();
}

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
        worker.mIsSolving = true;
        worker.mTask->solve(&pool.mMutex, &pool.mSolverCondition);
        worker.mIsSolving = false;
        worker.mTask = nullptr;
        if (--pool.mBusyCount == 0) pool.mDoneCondition.wakeAll();
    }
    pool.mMutex.unlock();
}

// The thread has ended in its task, or short of memory before it had one. The callers must learn that the task is gone.
void ConcurrentPool::Worker::loseTask() {
    const xoMutexLocker locker(mPool.mMutex);
    mKeepRunning = false;
    mIsSolving = false;
    if (std::exchange(mTask, nullptr)) --mPool.mBusyCount;
    mPool.mDoneCondition.wakeAll();
}

}  // namespace xo
