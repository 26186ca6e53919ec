// xoWorkThread: one thread that executes queued jobs, one at a time, first in, first out.
//
//     class Printer final : public xo::xoWorkThread {
//         void executeJob(xo::xoJob* job) override { static_cast<Page*>(job)->print(); }
//     };
//     Printer printer;
//     printer.startThread("printer");
//     printer.beginWake();
//     printer.addJob(&page);
//     printer.endWake();
//     ...
//     printer.stop();  // when all is printed; see below
//
// Jobs stay the property of whoever queues them, and live until they were executed or discarded. Any thread may queue
// jobs. executeJob must not call lock() or beginWake() of its own thread: endWake() waits for the job under way while
// it holds the same lock.
//
// A job that throws or faults is reported by the guard and ends the thread; the jobs behind it stay queued, nobody
// waits for ever, and after waitThread(INT_MAX) the thread may be started again to go on with them.
//
// The owner stops the thread before it destroys the object; the destructor waits for the thread to end but does not ask
// it to. The thread looks for the request to stop only after it has slept or while jobs are queued. So stop it while it
// sleeps; a stop() that comes while the last job runs, or just after, goes on waiting until some other thread calls
// beginWake() and endWake(). Where nobody else would, let the class keep the thread from falling asleep between the
// two:
//
//     void stop() override {
//         beginWake();
//         addJob(&mUntilStop);  // executeJob returns from this job when mustStop() is true:
//         addJob(&mUntilStop);  //     while (!mustStop()) msleep(1);
//         endWake();            // and the second one keeps the queue filled
//         xoWorkThread::stop();
//     }
#ifndef XOSYSTEM_XOWORKTHREAD_H
#define XOSYSTEM_XOWORKTHREAD_H

#include <atomic>
#include <deque>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoMutex.h"
#include "xoSystem/xoThread.h"
#include "xoSystem/xoWaitCondition.h"

namespace xo {

// Something to do for an xoWorkThread, whose class knows what is in it.
class XOSYSTEM_API xoJob {
public:
    xoJob() = default;
    xoJob(const xoJob&) = default;
    xoJob& operator=(const xoJob&) = default;
    virtual ~xoJob();

    // The job was discarded by clearJobs: its owner may free or reuse it here. Does nothing by default.
    virtual void onDelete();
};

class XOSYSTEM_API xoWorkThread : public xoThread {
public:
    // Does not start the thread; startThread() does.
    xoWorkThread();
    ~xoWorkThread() override;

    // Hold the queue still. beginWake() is lock() for a caller that will end with endWake().
    void lock() XO_ACQUIRE(mQueueMutex) { mQueueMutex.lock(); }
    void unlock() XO_RELEASE(mQueueMutex) { mQueueMutex.unlock(); }
    void beginWake() XO_ACQUIRE(mQueueMutex) { mQueueMutex.lock(); }

    // Waits until no job is executing, unlocks the queue and wakes the thread.
    void endWake() XO_RELEASE(mQueueMutex);

    // Queues a job. The caller holds the queue locked. Between lock() and unlock() the thread is not woken for it.
    void addJob(xoJob* job) XO_REQUIRES(mQueueMutex);

    // Discards all queued jobs: calls onDelete() of each, in their order. The job under way is not among them. The
    // caller holds the queue locked.
    void clearJobs() XO_REQUIRES(mQueueMutex);

    // Asks the thread to stop and waits, without limit, until it has; see above for when it looks. Jobs that it did not
    // come to stay queued. Once stopped, the object does not work again: a thread started later ends at once.
    virtual void stop();

protected:
    // Takes jobs until it is asked to stop. Not to be overridden.
    void run() override;

    // Does one job, on the thread.
    virtual void executeJob(xoJob* job) = 0;

    // Whether stop() was called.
    bool mustStop() const { return mStop.load(std::memory_order_relaxed); }

    // True, from executeJob, makes the thread sleep once the job is done, though others are queued, until the next
    // endWake().
    void setIdle(bool idle) { mIdle.store(idle, std::memory_order_relaxed); }

private:
    static void serve(void* thread);
    void executeNext() XO_EXCLUDES(mJobMutex) XO_RELEASE(mQueueMutex);

    xoWaitCondition mCondition;
    xoMutex mQueueMutex;  // never waited for by a thread that holds mJobMutex
    xoMutex mJobMutex;    // held while a job executes
    std::atomic<bool> mStop{false};
    std::atomic<bool> mIdle{true};
    std::deque<xoJob*> mQueue XO_GUARDED_BY(mQueueMutex);
    bool mAsleep XO_GUARDED_BY(mQueueMutex) = false;  // there is somebody to wake
};

}  // namespace xo

#endif
