#include "xoSystem/xoWorkThread.h"

#include <climits>
#include <stdexcept>

#include "threads/guardedBody.h"

namespace xo {

xoJob::~xoJob() = default;

void xoJob::onDelete() {}

xoWorkThread::xoWorkThread() = default;

// Here rather than in the base class: the thread uses the locks of this one.
xoWorkThread::~xoWorkThread() { waitThread(INT_MAX); }

void xoWorkThread::endWake() {
    mJobMutex.lock();
    mJobMutex.unlock();
    setIdle(false);
    const bool wake = mAsleep;
    mQueueMutex.unlock();
    if (wake) mCondition.wakeAll();
}

void xoWorkThread::addJob(xoJob* job) {
    if (mQueue.size() == mQueue.max_size()) throw std::length_error("list too long");
    mQueue.push_back(job);
}

void xoWorkThread::clearJobs() {
    // As many as there are now: onDelete() may queue its job again.
    for (std::size_t left = mQueue.size(); left != 0 && !mQueue.empty(); --left) {
        xoJob* const job = mQueue.front();
        mQueue.pop_front();
        if (job) job->onDelete();
    }
}

void xoWorkThread::stop() {
    // Before the lock is taken: another thread may hold it in endWake() and wait for a job that only this request ends.
    mStop = true;
    {
        const xoMutexLocker locker(mQueueMutex);
        mCondition.wakeAll();
    }
    waitThread(INT_MAX);
}

void xoWorkThread::run() { threads::runGuarded(&serve, this, {&mJobMutex, &mQueueMutex}); }

void xoWorkThread::serve(void* thread) {
    auto& self = *static_cast<xoWorkThread*>(thread);
    if (self.mustStop()) return;
    for (;;) {
        self.mQueueMutex.lock();
        if (self.mQueue.empty() || self.mIdle.load(std::memory_order_relaxed)) {
            self.setIdle(true);
            self.mAsleep = true;
            self.mCondition.wait(&self.mQueueMutex);
            self.mAsleep = false;
        }
        // Looked at only here: a stop that finds the queue empty and a job under way is seen after the next wake-up.
        if (self.mustStop()) break;
        self.executeNext();
    }
    self.mQueueMutex.unlock();
}

void xoWorkThread::executeNext() {
    if (mQueue.empty()) return mQueueMutex.unlock();
    xoJob* const job = mQueue.front();
    mQueue.pop_front();
    mQueueMutex.unlock();

    // By hand: when the job fails, runGuarded releases the lock, whether destructors have run or not.
    mJobMutex.lock();
    executeJob(job);
    mJobMutex.unlock();
}

}  // namespace xo
