#include "xoSystem/xoLegacyThread.h"

#include <memory>

#include "threadsFixture.h"

namespace {

using xo::xoLegacyThread;
using xo::tests::Event;
using xo::tests::ImportHook;

class LegacyThread : public xo::tests::ThreadsTest {};

// A thread whose body runs a function and then clears the alive flag.
class Runner final : public xo::xoRunnable {
public:
    explicit Runner(std::function<void()> function) : mFunction(std::move(function)) {}
    void run() override {
        mFunction();
        thread.setAlive(false);
    }
    xoLegacyThread thread{this};

private:
    std::function<void()> mFunction;
};

// xoLegacyThread has no virtual destructor; this final class may be deleted.
struct Copy final : xoLegacyThread {
    explicit Copy(const xoLegacyThread& other) : xoLegacyThread(other) {}
};

TEST_F(LegacyThread, RunsUntilItIsAskedToEnd) {
    std::atomic<int> steps{0};
    unsigned idInside = 0;
    Runner runner([&] {
        idInside = runner.thread.getId();
        for (; !runner.thread.mustEnd(); xoLegacyThread::yield()) ++steps;
    });
    xoLegacyThread& thread = runner.thread;
    const auto goesOn = [&] { return xo::tests::becomesTrue([&, before = steps.load()] { return steps != before; }); };
    EXPECT_FALSE(thread.create(2)) << "no known way to begin";
    EXPECT_FALSE(thread.isAlive());
    EXPECT_TRUE(thread.create());
    EXPECT_TRUE(thread.create(0)) << "it is alive: nothing to do";
    ASSERT_TRUE(goesOn());
    thread.suspend();
    thread.suspend();  // does not nest
    const int stepsThen = steps;
    ::Sleep(30);
    EXPECT_EQ(steps, stepsThen);
    thread.resume();
    EXPECT_TRUE(goesOn());
    thread.suspend();
    const unsigned id = thread.getId();
    thread.end(true);
    EXPECT_FALSE(thread.isSuspended()) << "it could not have seen the request";
    EXPECT_FALSE(thread.isAlive());
    EXPECT_EQ(idInside, id);
}

TEST_F(LegacyThread, WaitsForTheSystemWhenItIsCreatedSuspended) {
    Event began;
    Runner runner([&] { began.set(); });
    EXPECT_TRUE(runner.thread.create(1));
    EXPECT_TRUE(runner.thread.isAlive());
    EXPECT_FALSE(runner.thread.isSuspended()) << "not by suspend()";
    runner.thread.resume();  // so this does nothing
    EXPECT_FALSE(began.wait(20));
    const xo::platform::KernelHandle system(::OpenThread(THREAD_SUSPEND_RESUME, FALSE, runner.thread.getId()));
    ::ResumeThread(system.get());
    EXPECT_TRUE(began.wait());
    runner.thread.end(true);
}

// The thread is resumed between its request to suspend itself and its stop.
Event* aboutToStop = nullptr;
Event* resumedTooEarly = nullptr;
DWORD WINAPI stopLate(HANDLE thread) {
    aboutToStop->set();
    resumedTooEarly->wait();
    return ImportHook::behind(&stopLate)(thread);
}
DWORD WINAPI resumeEarly(HANDLE thread) {
    const DWORD before = ImportHook::behind(&resumeEarly)(thread);
    if (before == 0) resumedTooEarly->set();
    return before;
}

TEST_F(LegacyThread, GoesOnWhenItIsResumedBeforeItHasStopped) {
    Event requested, early, wentOn;
    aboutToStop = &requested;
    resumedTooEarly = &early;
    const ImportHook suspend("xoSystem.dll", "SuspendThread", &stopLate);
    const ImportHook resume("xoSystem.dll", "ResumeThread", &resumeEarly);
    ASSERT_TRUE(suspend.isInstalled() && resume.isInstalled());
    Runner runner([&] {
        runner.thread.suspend();
        wentOn.set();
    });
    runner.thread.create();
    ASSERT_TRUE(requested.wait());
    EXPECT_TRUE(runner.thread.isSuspended());
    runner.thread.resume();
    EXPECT_TRUE(wentOn.wait());
    EXPECT_FALSE(runner.thread.isSuspended());
    runner.thread.end(true);
}

TEST_F(LegacyThread, IsKilledByDestroyAndByTheDestructorOfAnyCopy) {
    const unsigned before = xoLegacyThread::getNbThreads();
    const std::function<void(xoLegacyThread&)> kills[] = {[](auto& thread) { thread.destroy(); },
                                                          [](auto& thread) { const xoLegacyThread copy(thread); }};
    for (const auto& kill : kills) {
        Event began;
        Runner runner([&] {
            began.set();
            Event().wait(INFINITE);
        });
        runner.thread.create();
        ASSERT_TRUE(began.wait());
        const xo::platform::KernelHandle system(::OpenThread(SYNCHRONIZE, FALSE, runner.thread.getId()));
        kill(runner.thread);
        EXPECT_FALSE(runner.thread.isAlive());
        EXPECT_EQ(::WaitForSingleObject(system.get(), 5000), WAIT_OBJECT_0);
    }
    EXPECT_EQ(xoLegacyThread::getNbThreads(), before);
}

TEST_F(LegacyThread, SharesThreadAndFlagsWithItsCopies) {
    Runner runner([&] {
        while (!runner.thread.mustEnd()) xoLegacyThread::sleep(-1);
    });
    const unsigned before = xoLegacyThread::getNbThreads();
    auto early = std::make_unique<Copy>(runner.thread);
    runner.thread.create();
    EXPECT_TRUE(early->isAlive());
    EXPECT_FALSE(early->create()) << "it does not hold the thread that is alive";
    early->destroy();
    early.reset();
    EXPECT_TRUE(runner.thread.isAlive()) << "and so must not touch it";
    xoLegacyThread copy(runner.thread);
    xoLegacyThread assigned(nullptr);
    assigned = copy;
    EXPECT_EQ(xoLegacyThread::getNbThreads(), before + 2);
    assigned.suspend();
    EXPECT_FALSE(copy.isSuspended()) << "each notes its own";
    copy.end(true);  // would hang if it left the thread suspended
    EXPECT_TRUE(assigned.mustEnd());
    EXPECT_FALSE(assigned.isAlive());
    EXPECT_EQ(copy.getId(), runner.thread.getId());
}

TEST_F(LegacyThread, EndsWhileSuspendedHoweverOftenItWasAsked) {
    std::atomic<bool> mayEnd{false};
    Runner runner([&] {
        while (!mayEnd || !runner.thread.mustEnd()) xoLegacyThread::yield();
        runner.thread.end(true);  // does not wait for itself
    });
    std::unique_ptr<Copy> ofLifeBefore;
    for (int life = 0; life < 100; ++life) {
        mayEnd = false;
        runner.thread.create();
        EXPECT_FALSE(runner.thread.isSuspended()) << "that was the thread before";
        ofLifeBefore.reset();
        EXPECT_TRUE(runner.thread.isAlive());
        runner.thread.end(false);
        runner.thread.suspend();
        mayEnd = true;
        runner.thread.end(true);  // would hang
        runner.thread.suspend();  // must not hold it as it ends: it may have the lock of the loader
        ofLifeBefore = std::make_unique<Copy>(runner.thread);
    }
}

TEST_F(LegacyThread, IsNoLongerAliveWhenItsBodyFails) {
    forEachFailure([](const std::function<void()>& fail) {
        Runner runner(fail);
        runner.thread.create();
        runner.thread.end(true);
    });
}

}  // namespace
