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
// Jobs stay the property of the caller and must exist until they have been executed or discarded. Any thread may queue
// jobs, except executeJob() of the same object: it must not call lock() or beginWake(), because endWake() waits for the
// job in progress while it holds the same lock.
//
// A job that throws or faults is reported by the guard and ends the thread. The jobs behind it stay queued, no other
// thread is left waiting, and after waitThread(INT_MAX) the thread may be started again to execute them.
//
// The owner stops the thread before it destroys the object; the destructor waits for the thread but does not stop it.
// The thread looks for the request to stop after it has slept, and between jobs while others are queued. A stop() that
// comes during the last job, or just after it, therefore waits until another thread calls beginWake() and endWake(). A
// class without such a thread keeps its own thread awake until the request has come:
//
//     void stop() override {
//         beginWake();
//         addJob(&mUntilStop);  // executeJob returns from this job when mustStop() is true:
//         addJob(&mUntilStop);  //     while (!mustStop()) msleep(1);
//         endWake();            // and the second one keeps the queue from being empty
//         xoWorkThread::stop();
//     }
//
// Other threads may queue jobs meanwhile.
#ifndef XOSYSTEM_XOWORKTHREAD_H
#define XOSYSTEM_XOWORKTHREAD_H

#include <memory>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoThread.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

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

// For clang's thread-safety analysis the object is the lock of its queue.
class XO_CAPABILITY("queue") XOSYSTEM_API xoWorkThread : public xoThread {
public:
    // Does not start the thread; startThread() does.
    xoWorkThread();

    // Waits for the thread. Queued jobs are forgotten, without onDelete().
    ~xoWorkThread() override;

    // Lock and unlock the queue. beginWake() is lock() for a caller that will end with endWake(). As with xoMutex, a
    // thread may lock more than once and then unlocks as often; to unlock, with unlock() or endWake(), what the thread
    // has not locked is undefined.
    void lock() XO_ACQUIRE();
    void unlock() XO_RELEASE();
    void beginWake() XO_ACQUIRE();

    // Waits until no job is executing, unlocks the queue and wakes the thread.
    void endWake() XO_RELEASE();

    // Queues a job. The caller holds the queue locked. Between lock() and unlock() the thread is not woken for it. Null
    // is queued too: executeJob() gets it, clearJobs() passes it over. Throws std::bad_alloc when memory runs out and
    // std::length_error ("list too long") at the queue's largest size; the queue is unchanged then.
    void addJob(xoJob* job) XO_REQUIRES(this);

    // Discards all queued jobs: calls onDelete() of each, in their order. The job in progress is not among them, and
    // jobs that onDelete() queues stay queued. The caller holds the queue locked.
    void clearJobs() XO_REQUIRES(this);

    // Asks the thread to stop and waits, without limit, until it has; see above for when it looks. Jobs that were not
    // begun stay queued. The request is never taken back: a thread started later ends at once. Not for executeJob():
    // a thread cannot wait for its own end, so that stop() then throws std::system_error.
    virtual void stop();

    // Does one job, on the thread. Only the thread calls it.
    virtual void executeJob(xoJob* job) = 0;

protected:
    // Takes jobs until it is asked to stop. Not to be overridden.
    void run() override;

    // Whether stop() was called.
    bool mustStop() const;

    // setIdle(true), called by executeJob(), has the thread sleep after the job although others are queued. The next
    // endWake() wakes it, and one that was already waiting for this job takes the request back. Any other wake-up, such
    // as a spurious one, lets the thread execute one job and sleep again.
    void setIdle(bool idle);

private:
    struct Private;

    static void serve(void* thread);

    std::unique_ptr<Private> mPrivate;
};

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
