#include <atomic>
#include <filesystem>
#include <system_error>

#include "threadsFixture.h"

namespace {

using testing::ElementsAre;
using xo::xoThread;
using xo::tests::becomesTrue;
using xo::tests::Event;
using xo::tests::FunctionThread;
using xo::tests::ImportHook;

class Thread : public xo::tests::ThreadsTest {};

TEST_F(Thread, GoesFromIdleToRunningToEndedToIdle) {
    Event goOn;
    std::string idInside;
    FunctionThread thread([&] {
        idInside = xoThread::CurrentThreadId();
        goOn.wait();
    });
    EXPECT_TRUE(thread.isFinished());
    EXPECT_EQ(thread.getThreadId() + thread.getThreadName(), "InvalidThread");
    EXPECT_FALSE(thread.waitThread(INT_MAX)) << "there is nothing to wait for";

    thread.startThread("worker");
    const std::string id = thread.getThreadId();
    for (const int timeoutMs : {0, -5, INT_MIN, 20}) EXPECT_FALSE(thread.waitThread(timeoutMs)) << timeoutMs;
    EXPECT_TRUE(thread.isRunning() && !thread.isFinished());
    goOn.set();
    ASSERT_TRUE(becomesTrue([&] { return !thread.isRunning(); }));
    EXPECT_FALSE(thread.isFinished()) << "ended, but not waited for";
    thread.startThread("another");
    EXPECT_EQ(thread.getThreadName(), "worker " + id) << "the ended one is still held";
    EXPECT_EQ(idInside, id);

    EXPECT_TRUE(thread.waitThread(-1)) << "no time is enough now";
    EXPECT_TRUE(thread.isFinished());
    EXPECT_EQ(thread.getThreadId(), "InvalidThread");
    thread.startThread("second");
    EXPECT_TRUE(thread.waitThread(INT_MAX));
    EXPECT_NE(idInside, "");
}

// The name that a debugger receives. Thread-local, because threads of the pool are named at the same time.
thread_local std::string nameForDebugger;
LONG CALLBACK readThreadName(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode == 0x406D1388 && record.NumberParameters >= 3 && record.ExceptionInformation[0] == 0x1000)
        nameForDebugger = reinterpret_cast<const char*>(record.ExceptionInformation[1]);
    return EXCEPTION_CONTINUE_SEARCH;
}

std::string nameForSystem() {
    using GetDescription = HRESULT(WINAPI*)(HANDLE, PWSTR*);
    const auto getDescription = reinterpret_cast<GetDescription>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "GetThreadDescription")));
    xo::platform::LocalMemory<wchar_t> name;
    getDescription(::GetCurrentThread(), name.put());
    return std::filesystem::path(name.get()).u8string();
}

TEST_F(Thread, IsNamedBeforeItsBodyRuns) {
    void* const handler = ::AddVectoredExceptionHandler(/*First=*/1, &readThreadName);
    const std::pair<const char*, std::string> rows[] = {
        {"arb\xC3\xA9it", "arb\xC3\xA9it "}, {"", " "}, {nullptr, "xo::tests::FunctionThread "}};
    for (const auto& [given, expected] : rows) {
        std::vector<std::string> names;
        FunctionThread* self = nullptr;
        FunctionThread thread([&] { names = {nameForDebugger, nameForSystem(), self->getThreadName()}; });
        self = &thread;
        thread.startThread(given);
        const std::string name = expected + thread.getThreadId();
        EXPECT_TRUE(thread.waitThread(INT_MAX));
        EXPECT_THAT(names, ElementsAre(name, name, name));
    }
    ::RemoveVectoredExceptionHandler(handler);
    const xo::xoThreadPeriodicalUpdater updater(3600);
    EXPECT_EQ(updater.getThreadName(), "xo::xoThreadPeriodicalUpdater " + updater.getThreadId());
}

TEST_F(Thread, EndsAloneHoweverItsBodyFails) {
    const auto endsWith = [](const std::function<void()>& body) {
        FunctionThread thread(body);
        thread.startThread();
        EXPECT_TRUE(thread.waitThread(20000));
        EXPECT_TRUE(thread.isFinished());
    };
    forEachFailure(endsWith);
    endsWith([] { ::ExitThread(0); });
}

DWORD WINAPI failToWait(HANDLE, DWORD) { return WAIT_FAILED; }

TEST_F(Thread, ThrowsTheStandardErrors) {
    const auto errorOf = [](const std::function<void()>& action) {
        try {
            action();
        } catch (const std::system_error& error) {
            return error.code();
        }
        return std::error_code();
    };
    std::error_code selfWait;
    FunctionThread* self = nullptr;
    Event hasWaited, goOn;
    FunctionThread thread([&] {
        EXPECT_FALSE(self->waitThread(10));
        selfWait = errorOf([&] { self->waitThread(INT_MAX); });
        hasWaited.set();
        goOn.wait();
    });
    self = &thread;
    {
        const xo::tests::NoMoreThreads hook;
        ASSERT_TRUE(hook.isInstalled());
        EXPECT_EQ(errorOf([&] { thread.startThread(); }), std::errc::resource_unavailable_try_again);
        EXPECT_TRUE(thread.isFinished());
    }
    thread.startThread();
    ASSERT_TRUE(hasWaited.wait()) << "the hook below is for all threads";
    for (const int timeoutMs : {INT_MAX, 10}) {
        const ImportHook hook("xoSystem.dll", "WaitForSingleObject", &failToWait);
        ASSERT_TRUE(hook.isInstalled());
        EXPECT_EQ(errorOf([&] { thread.waitThread(timeoutMs); }), std::errc::no_such_process) << timeoutMs;
    }
    goOn.set();
    EXPECT_TRUE(thread.waitThread(INT_MAX));
    EXPECT_EQ(selfWait, std::errc::resource_deadlock_would_occur);
}

// The thread does not run until the destructor of xoThread waits for it.
HANDLE heldBack = nullptr;
DWORD WINAPI holdBack(HANDLE thread) {
    heldBack = thread;
    return 1;
}
DWORD WINAPI letGoAndWait(HANDLE handle, DWORD timeoutMs) {
    if (handle == heldBack) ImportHook::behind (&holdBack)(std::exchange(heldBack, nullptr));
    return ImportHook::behind(&letGoAndWait)(handle, timeoutMs);
}

TEST_F(Thread, RunsNothingWhenItsObjectIsGoneBeforeItBegins) {
    class Careless final : public xoThread {
        void run() override { ADD_FAILURE() << "the object is gone"; }
    };
    const ImportHook resume("xoSystem.dll", "ResumeThread", &holdBack);
    const ImportHook wait("xoSystem.dll", "WaitForSingleObject", &letGoAndWait);
    ASSERT_TRUE(resume.isInstalled() && wait.isInstalled());
    Careless().startThread("careless");
    EXPECT_THAT(mLog.take(), ElementsAre(testing::HasSubstr("before its body began: careless ")));
}

TEST_F(Thread, WarnsWhenItIsMadeTooEarly) {
    xo::terminateXoSystem();
    xo::initializeXoSystem(xo::InitTypeBasic);
    mLog.collect();
    FunctionThread([] {}).startThread();
    EXPECT_THAT(mLog.take(), ElementsAre("3()Thread create before full init of xoSystem"));
}

class Updater : public xo::tests::ThreadsTest {
protected:
    // The data of callbacks: each call appends its text, and "!" sets the event.
    struct Call {
        Updater* test;
        std::string text;
    };
    static void record(void* call) {
        const auto& [test, text] = *static_cast<Call*>(call);
        test->mCalls += text;
        if (text == "!") test->mLastCalled.set();
    }

    std::string mCalls;  // by the updater's thread alone until it is destroyed
    Event mLastCalled;
    Call mA{this, "a"};
    Call mB{this, "b"};
    Call mLast{this, "!"};
};

TEST_F(Updater, CallsAllInOrderWhenOneIsAddedAndWhenItEnds) {
    {
        xo::xoThreadPeriodicalUpdater updater(3600);
        for (Call* const call : {&mA, &mB, &mA, &mB}) updater.addCallback(&record, call);
        updater.removeCallback(&record, &mLast);  // not registered with that
        updater.removeCallback([](void*) {}, &mA);
        updater.removeCallback(&record, &mB);  // the first of the two
        updater.addCallback(&record, &mLast);
        EXPECT_TRUE(mLastCalled.wait()) << "long before the period is over";
    }
    EXPECT_THAT(mCalls, testing::EndsWith("aab!aab!")) << "in the round of the last addition and in the final one";
}

TEST_F(Updater, LetsACallbackRemoveAnyInItsRound) {
    struct Remover : Call {
        std::atomic<Call*> victim{nullptr};
        xo::xoThreadPeriodicalUpdater updater{3600};

        static void run(void* call) {
            record(call);
            auto& self = *static_cast<Remover*>(static_cast<Call*>(call));
            self.updater.removeCallback(&record, self.victim);
            self.updater.removeCallback(&run, self.victim);
        }
    };
    const std::pair<int, const char*> rows[] = {{0, "arb!arb!"}, {1, "arb!arb!"}, {2, "arb!ar!"}};
    for (const auto& [victim, calls] : rows) {
        mLastCalled = Event();
        {
            Remover remover{{this, "r"}};
            Call* const all[] = {&mA, &remover, &mB, &mLast};
            for (Call* const call : all) remover.updater.addCallback(call == &remover ? &Remover::run : &record, call);
            EXPECT_TRUE(mLastCalled.wait());
            remover.victim = all[victim];
        }
        EXPECT_THAT(mCalls, testing::EndsWith(calls)) << "the last round is that of the end";
    }
}

TEST_F(Updater, ReachesInItsRoundWhatACallbackAdds) {
    struct Adder : Call {
        Call* added;
        xo::xoThreadPeriodicalUpdater updater{3600};

        static void run(void* call) {
            auto& self = *static_cast<Adder*>(static_cast<Call*>(call));
            if (Call* const once = std::exchange(self.added, nullptr)) self.updater.addCallback(&record, once);
        }
    };
    Adder adder{{this, ""}, &mLast};
    adder.updater.addCallback(&Adder::run, static_cast<Call*>(&adder));
    EXPECT_TRUE(mLastCalled.wait()) << "long before the period is over";
}

TEST_F(Updater, CallsEverySecondWhenAskedForNoPeriod) {
    std::atomic<int> rounds{0};
    xo::xoThreadPeriodicalUpdater updater(0);
    const ULONGLONG start = ::GetTickCount64();
    updater.addCallback([](void* count) { ++*static_cast<std::atomic<int>*>(count); }, &rounds);
    EXPECT_TRUE(becomesTrue([&] { return rounds >= 2; }));
    EXPECT_GE(::GetTickCount64() - start, 950u);
}

TEST_F(Updater, LeavesNobodyWaitingWhenACallbackFails) {
    using Function = std::function<void()>;
    forEachFailure([&](const Function& fail) {
        xo::xoThreadPeriodicalUpdater updater(3600);
        updater.addCallback([](void* f) { (*static_cast<const Function*>(f))(); }, const_cast<Function*>(&fail));
        EXPECT_TRUE(becomesTrue([&] { return !updater.isRunning(); }));
        updater.addCallback(&record, &mA);
        updater.removeCallback(&record, &mA);
    });
    EXPECT_EQ(mCalls, "");
}

}  // namespace
