// A thread that executes a queue of jobs, one at a time.
#include "xoSystem/xoWorkThread.h"

#include <atomic>
#include <climits>
#include <deque>
#include <stdexcept>

#include "threads/guardedBody.h"
#include "xoSystem/xoMutex.h"
#include "xoSystem/xoWaitCondition.h"

namespace xo {

xoJob::~xoJob() = default;

void xoJob::onDelete() {}

struct xoWorkThread::Private {
    // Tells the analysis that the caller has locked the queue.
    void isQueueLocked() const XO_THREAD_ATTRIBUTE(assert_capability(queueMutex)) {}

    xoWaitCondition condition;  // the thread sleeps here
    xoMutex queueMutex;         // never waited for by a thread that holds jobMutex
    xoMutex jobMutex;           // held while a job executes
    std::atomic<bool> mustStop{false};
    std::atomic<bool> isIdle{true};  // true: sleeps before it takes a job; set by derived classes and endWake()
    std::deque<xoJob*> queue XO_GUARDED_BY(queueMutex);  // not owned; may contain null
    bool isAsleep XO_GUARDED_BY(queueMutex) = false;     // the thread waits in `condition`
};

xoWorkThread::xoWorkThread() : mPrivate(std::make_unique<Private>()) {}

// Joins here and not only in the base class, because the thread uses the record.
xoWorkThread::~xoWorkThread() { waitThread(INT_MAX); }

void xoWorkThread::lock() XO_NO_THREAD_SAFETY_ANALYSIS { mPrivate->queueMutex.lock(); }

void xoWorkThread::unlock() XO_NO_THREAD_SAFETY_ANALYSIS { mPrivate->queueMutex.unlock(); }

void xoWorkThread::beginWake() XO_NO_THREAD_SAFETY_ANALYSIS { mPrivate->queueMutex.lock(); }

void xoWorkThread::endWake() XO_NO_THREAD_SAFETY_ANALYSIS {
    // Waits for the job in progress to end.
    mPrivate->jobMutex.lock();
    mPrivate->jobMutex.unlock();
    setIdle(false);
    // Read under the lock. The wake-up itself comes after it, so that the thread need not wait for the lock again.
    const bool wake = mPrivate->isAsleep;
    mPrivate->queueMutex.unlock();
    if (wake) mPrivate->condition.wakeAll();
}

void xoWorkThread::addJob(xoJob* job) {
    mPrivate->isQueueLocked();
    if (mPrivate->queue.size() == mPrivate->queue.max_size()) throw std::length_error("list too long");
    mPrivate->queue.push_back(job);
}

void xoWorkThread::clearJobs() {
    mPrivate->isQueueLocked();
    std::deque<xoJob*>& queue = mPrivate->queue;
    // Only as many as are queued now, since onDelete() may queue its job again.
    for (std::size_t left = queue.size(); left != 0 && !queue.empty(); --left) {
        xoJob* const job = queue.front();
        queue.pop_front();
        if (job) job->onDelete();
    }
}

void xoWorkThread::stop() {
    // Before the lock is taken: another thread may hold it in endWake() and wait for a job that only this request ends.
    mPrivate->mustStop = true;
    {
        const xoMutexLocker locker(mPrivate->queueMutex);
        mPrivate->condition.wakeAll();
    }
    waitThread(INT_MAX);
}

bool xoWorkThread::mustStop() const { return mPrivate->mustStop.load(std::memory_order_relaxed); }

void xoWorkThread::setIdle(bool idle) { mPrivate->isIdle.store(idle, std::memory_order_relaxed); }

void xoWorkThread::run() { threads::runReporting(&serve, this, {&mPrivate->jobMutex, &mPrivate->queueMutex}); }

// The loop of the thread.
void xoWorkThread::serve(void* thread) {
    auto& self = *static_cast<xoWorkThread*>(thread);
    Private& state = *self.mPrivate;
    if (self.mustStop()) return;
    for (;;) {
        // Without lockers, here and below: a fault runs no destructor, and runReporting releases what is held then.
        state.queueMutex.lock();
        if (state.queue.empty() || state.isIdle.load(std::memory_order_relaxed)) {
            self.setIdle(true);
            state.isAsleep = true;
            state.condition.wait(&state.queueMutex);
            state.isAsleep = false;
        }
        // The only place where the request to stop is read. A request that comes during the last job is therefore seen
        // only after the next wake-up, as the header documents.
        if (self.mustStop()) break;
        if (state.queue.empty()) {
            state.queueMutex.unlock();
            continue;
        }
        xoJob* const job = state.queue.front();
        state.queue.pop_front();
        state.queueMutex.unlock();

        state.jobMutex.lock();
        self.executeJob(job);
        state.jobMutex.unlock();
    }
    state.queueMutex.unlock();
}

}  // namespace xo
