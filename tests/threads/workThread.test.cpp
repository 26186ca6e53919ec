#include "xoSystem/xoWorkThread.h"

#include <list>

#include "threadsFixture.h"

namespace {

using testing::ElementsAre;
using xo::tests::Event;
using xo::tests::FunctionThread;
using xo::tests::ImportHook;

struct Job final : xo::xoJob {
    Job(std::function<void()> b, std::function<void()> d) : body(std::move(b)), discard(std::move(d)) {}
    void onDelete() override { discard(); }
    std::function<void()> body;
    std::function<void()> discard;
};

// Stops as the header recommends for a class that no other thread wakes.
class Worker final : public xo::xoWorkThread {
public:
    ~Worker() override { stop(); }
    void stop() override {
        submit({&mUntilStop, &mUntilStop});
        if (beforeRequest) beforeRequest();
        xoWorkThread::stop();
    }
    void stopAtOnce() { xoWorkThread::stop(); }
    void submit(const std::vector<xo::xoJob*>& jobs) {
        beginWake();
        for (xo::xoJob* const job : jobs) addJob(job);
        endWake();
    }
    using xoWorkThread::setIdle;

    Event lastJobBegan;
    std::function<void()> beforeRequest;

private:
    void executeJob(xo::xoJob* job) override {
        if (job != &mUntilStop) return static_cast<Job*>(job)->body();
        lastJobBegan.set();
        while (!mustStop()) msleep(1);
    }

    xo::xoJob mUntilStop;
};

class WorkThread : public xo::tests::ThreadsTest {
protected:
    // A job that does something, and notes its number when it is discarded.
    Job* doing(std::function<void()> body, int number = 0) {
        return &mJobs.emplace_back(std::move(body), [=] { mDiscarded.push_back(number); });
    }
    // A job that notes its number when it is executed.
    Job* noting(int number) {
        return doing([=] { mDone.push_back(number); }, number);
    }
    // Has the worker execute a job that lasts until mGoOn is set.
    void beginLongJob() {
        worker.startThread("worker");
        worker.submit({doing([&] {
            mBegan.set();
            mGoOn.wait();
            mDone.push_back(0);
        })});
        ASSERT_TRUE(mBegan.wait());
    }

    Event mBegan;
    Event mGoOn;
    std::vector<int> mDone;  // by the worker alone until it is stopped
    std::vector<int> mDiscarded;
    std::list<Job> mJobs;
    Worker worker;
};

TEST_F(WorkThread, ExecutesEachJobOnceInOrder) {
    worker.submit({noting(1)});  // before the start
    worker.startThread("worker");
    worker.submit({noting(2), noting(3)});
    worker.submit({noting(4), doing([&] { mGoOn.set(); })});
    EXPECT_TRUE(mGoOn.wait());
    worker.stop();
    EXPECT_TRUE(worker.isFinished());
    EXPECT_THAT(mDone, ElementsAre(1, 2, 3, 4));
}

TEST_F(WorkThread, DiscardsWhatIsQueuedButNotTheJobUnderWay) {
    beginLongJob();
    worker.lock();
    Job* const again = noting(1);
    again->discard = [&, again]() XO_NO_THREAD_SAFETY_ANALYSIS {
        mDiscarded.push_back(1);
        if (mDiscarded.size() == 1) worker.addJob(again);
    };
    worker.addJob(again);
    worker.addJob(noting(2));
    worker.clearJobs();
    EXPECT_THAT(mDiscarded, ElementsAre(1, 2)) << "what is queued meanwhile stays";
    worker.clearJobs();
    worker.clearJobs();
    worker.unlock();
    EXPECT_THAT(mDiscarded, ElementsAre(1, 2, 1));
    FunctionThread producer([&] { worker.submit({}); });
    producer.startThread("producer");
    EXPECT_FALSE(producer.waitThread(30)) << "endWake() returns between jobs only";
    mGoOn.set();
    EXPECT_TRUE(producer.waitThread(20000));
    worker.stop();
    EXPECT_THAT(mDone, ElementsAre(0));
}

Event* joining = nullptr;
DWORD WINAPI signalJoin(HANDLE handle, DWORD timeoutMs) {
    if (timeoutMs == INFINITE) joining->set();
    return ImportHook::behind(&signalJoin)(handle, timeoutMs);
}

TEST_F(WorkThread, SeesAStopDuringTheLastJobAtTheNextWake) {
    beginLongJob();
    Event joined;
    joining = &joined;
    const ImportHook hook("xoSystem.dll", "WaitForSingleObject", &signalJoin);
    FunctionThread owner([&] { worker.stopAtOnce(); });
    owner.startThread("owner");
    ASSERT_TRUE(joined.wait());  // the request has been made and its wake-up is over
    mGoOn.set();
    EXPECT_FALSE(owner.waitThread(50));
    EXPECT_TRUE(xo::tests::becomesTrue([&] {
        worker.submit({});
        return owner.waitThread(1);
    }));
    worker.startThread("again");
    EXPECT_TRUE(worker.waitThread(20000)) << "a stopped one must not work again";
}

TEST_F(WorkThread, StopsThoughAnotherThreadQueuesJobsMeanwhile) {
    worker.startThread("worker");
    FunctionThread producer([&] {
        EXPECT_TRUE(worker.lastJobBegan.wait());
        worker.beginWake();
        mGoOn.set();
        worker.endWake();  // waits, with the queue locked, for a job that lasts until the request to stop
    });
    producer.startThread("producer");
    worker.beforeRequest = [&] { EXPECT_TRUE(mGoOn.wait()); };
    FunctionThread owner([&] { worker.stop(); });
    owner.startThread("owner");
    EXPECT_TRUE(owner.waitThread(20000));
    EXPECT_TRUE(producer.waitThread(20000));
}

TEST_F(WorkThread, SleepsWithJobsQueuedWhenToldTo) {
    worker.startThread("worker");
    worker.submit({doing([&] {
                       worker.setIdle(true);
                       mBegan.set();
                   }),
                   doing([&] { mGoOn.set(); })});
    ASSERT_TRUE(mBegan.wait());
    EXPECT_FALSE(mGoOn.wait(20));
    worker.submit({});
    EXPECT_TRUE(mGoOn.wait());
}

TEST_F(WorkThread, LosesOnlyTheJobThatFails) {
    forEachFailure([&](const std::function<void()>& fail) {
        worker.startThread("worker");
        worker.submit({doing(fail), noting(1)});
        EXPECT_TRUE(worker.waitThread(20000));
        worker.submit({});  // would wait for ever if the job's lock had died with its thread
    });
    worker.submit({doing([&] { mGoOn.set(); })});
    worker.startThread("last");
    EXPECT_TRUE(mGoOn.wait());
    EXPECT_EQ(mDone, std::vector<int>(4, 1)) << "those behind the failed ones";
}

}  // namespace
