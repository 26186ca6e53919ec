// Full initialisation for each test, the collected lines of the log, and an event that threads meet on.
#ifndef XO_TESTS_THREADS_THREADSFIXTURE_H
#define XO_TESTS_THREADS_THREADSFIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/handle.h"
#include "support/importHook.h"
#include "support/logLines.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoThread.h"

namespace xo::tests {

inline int exhaustStack(int depth) {
    volatile char frame[1000];
    frame[0] = static_cast<char>(depth);
    return depth < 0 ? 0 : exhaustStack(depth + 1) + frame[0];
}

class ThreadsTest : public testing::Test {
protected:
    ThreadsTest() {
        initializeXoSystem(InitTypeFull);
        mLog.collect();
    }
    ~ThreadsTest() override { terminateXoSystem(); }

    // Calls the test once for each way in which a body can fail, with a body that does, and wants the guard's report.
    void forEachFailure(const std::function<void(const std::function<void()>& fail)>& test) {
        const std::pair<std::function<void()>, const char*> rows[] = {
            {[] { throw std::out_of_range("too far"); }, "Catch std exception : too far"},
            {[] { throw 7; }, "Catch std exception : Unknown"},
            {[] { *static_cast<volatile int*>(nullptr) = 1; }, "Catch std exception : Catch an SEH exception"},
            {[] { exhaustStack(0); }, "Catch std exception : Catch an SEH exception"},
        };
        for (const auto& [fail, line] : rows) {
            test(fail);
            EXPECT_THAT(mLog.take(), testing::Contains(testing::HasSubstr(line)));
        }
    }

    LogLines mLog;
};

// Stays set. wait() returns false after a time in which everything here should have happened.
class Event {
public:
    void set() { ::SetEvent(mEvent.get()); }
    bool wait(DWORD timeoutMs = 20000) const { return ::WaitForSingleObject(mEvent.get(), timeoutMs) == WAIT_OBJECT_0; }

private:
    platform::KernelHandle mEvent{::CreateEventW(nullptr, /*bManualReset=*/TRUE, /*bInitialState=*/FALSE, nullptr)};
};

// Waits for what gives no signal when it happens.
inline bool becomesTrue(const std::function<bool()>& condition) {
    for (const ULONGLONG start = ::GetTickCount64(); !condition(); ::Sleep(5))
        if (::GetTickCount64() - start > 20000) return false;
    return true;
}

// While the object lives, the system starts no threads.
class NoMoreThreads {
public:
    bool isInstalled() const { return mHook.isInstalled(); }

private:
    static std::uintptr_t refuse(void*, unsigned, unsigned(__stdcall*)(void*), void*, unsigned, unsigned*) { return 0; }
    ImportHook mHook{"xoSystem.dll", "_beginthreadex", &refuse};
};

class FunctionThread final : public xoThread {
public:
    explicit FunctionThread(std::function<void()> body) : mBody(std::move(body)) {}
    ~FunctionThread() override { waitThread(INT_MAX); }

private:
    void run() override { mBody(); }
    std::function<void()> mBody;
};

}  // namespace xo::tests

#endif
