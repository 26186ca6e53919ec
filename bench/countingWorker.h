// A work thread that counts its jobs.
#ifndef XO_BENCH_COUNTINGWORKER_H
#define XO_BENCH_COUNTINGWORKER_H

#include <atomic>
#include <cstddef>

#include "xoSystem/xoSemaphore.h"
#include "xoSystem/xoWorkThread.h"

namespace bench {

// Tells when all expected jobs are done. One thread expects and awaits, any number of them post.
class CountingWorker final : public xo::xoWorkThread {
public:
    CountingWorker() { startThread("bench"); }
    ~CountingWorker() override { stop(); }

    void stop() override {
        beginWake();
        addJob(&mUntilStop);
        addJob(&mUntilStop);
        endWake();
        xo::xoWorkThread::stop();
    }

    void expect(std::size_t jobs) { mLeft = jobs; }
    // Between beginWake and endWake.
    void post() XO_NO_THREAD_SAFETY_ANALYSIS { addJob(&mJob); }
    void await() { mDone.acquire(); }

    void doJobs(std::size_t count) {
        expect(count);
        beginWake();
        for (std::size_t i = 0; i < count; ++i) post();
        endWake();
        await();
    }

private:
    void executeJob(xo::xoJob* job) override {
        if (job == &mUntilStop) {
            while (!mustStop()) msleep(1);
        } else if (--mLeft == 0) {
            mDone.release();
        }
    }

    xo::xoJob mJob, mUntilStop;
    std::atomic<std::size_t> mLeft{0};
    xo::xoSemaphore mDone{0};
};

}  // namespace bench

#endif
