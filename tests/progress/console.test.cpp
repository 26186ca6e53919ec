#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "platform/wideText.h"
#include "support/allocationCount.h"
#include "support/child.h"
#include "support/importHook.h"
#include "xoSystem/xoException.h"
#include "xoSystem/xoProgressConsole.h"
#include "xoSystem/xoStringUtils.h"

namespace {

using xo::xoProgressConsole;
using xo::xoProgressScope;
using xo::xoStringUtils;
using xo::tests::ImportHook;
using State = xo::xoProgressState;

State importing() {
    State state;
    state.phase = State::PhaseRunning;
    state.fraction = 0.719;
    state.unit = xo::ProgressUnitItems;
    state.done = 20856;
    state.total = 29000;
    state.unitsPerSecond = 12300.4;
    state.elapsedMs = 12000;
    state.remainingMs = 5000;
    state.title = "Import";
    state.text = "a long path/that is cut/in its middle";
    return state;
}

TEST(ProgressConsole, LineLosesWhatMattersLeastFirst) {
    const struct {
        unsigned columns;
        const char* line;
    } rows[] = {
        {120,
         "Import: a long path/that is cut/in its middle  [==================>       ]  71 %  20,856 of 29,000  "
         "12,300/s  0:05 left"},
        {92, "Import: a long path/that is cut/in its middle  [=====>  ]  71 %  20,856 of 29,000  0:05 left"},
        {75, "Import: a long path/that is cut/in its middle  [======>  ]  71 %  0:05 left"},
        {60, "Import: a long pat...its middle  [=====>  ]  71 %  0:05 left"},
        {40, "Import: a lo...dle  [========>   ]  71 %"},
        {24, "Import: a lo...dle  71 %"},
        {12, "Import  71 %"},
        {10, "I...  71 %"},
        {4, "71 %"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(xoProgressConsole::FormatLine(importing(), row.columns), row.line) << row.columns;
}

TEST(ProgressConsole, LineFitsEveryWidth) {
    State states[] = {importing(), importing(), importing()};
    states[1].title = "\xE6\x97\xA5\xE6\x9C\xAC";                                             // wide characters
    states[1].text = "e\xCC\x81 \xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x94\xA7 \x1B[2J\n\xFF";  // of many units, harmful
    states[2].isIndeterminate = true;
    states[2].total = 0;
    states[2].unit = xo::ProgressUnitBytes;
    for (const State& state : states)
        for (unsigned columns = 4; columns <= 120; ++columns)
            for (const unsigned tick : {0u, 7u, 4711u}) {
                const std::string line = xoProgressConsole::FormatLine(state, columns, tick);
                EXPECT_LE(xoStringUtils::GetDisplayWidth(line), columns) << line;
                EXPECT_LE(xo::platform::toWide(line).size(), columns) << "a console may need a cell for each unit";
                EXPECT_NE(line.find(state.isIndeterminate ? "<=>" : "71 %"), std::string::npos) << columns;
                EXPECT_EQ(line.find('\x1B'), std::string::npos);
            }
    for (unsigned columns = 0; columns < 4; ++columns)
        EXPECT_EQ(xoProgressConsole::FormatLine(importing(), columns), "71 %");
}

TEST(ProgressConsole, FractionsOutsideTheRangeCountAsItsEnds) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr char kEmpty[] = "[>        ]   0 %  0:00";
    constexpr char kFull[] = "[========]  100 %  0:00";
    const std::pair<double, const char*> rows[] = {{-1, kEmpty}, {-kInfinity, kEmpty}, {std::nan(""), kEmpty},
                                                   {1, kFull},   {1.5, kFull},         {kInfinity, kFull}};
    for (const auto& [fraction, line] : rows) {
        State state;
        state.fraction = fraction;
        EXPECT_EQ(xoProgressConsole::FormatLine(state, 23), line) << fraction;
    }
}

TEST(ProgressConsole, BarMovesWhileTheTotalIsUnknown) {
    State state;
    state.phase = State::PhaseRunning;
    state.isIndeterminate = true;
    state.title = "Count";
    state.unit = xo::ProgressUnitBytes;
    state.done = 1468006;
    EXPECT_EQ(xoProgressConsole::FormatLine(state, 33, 0), "Count  [<=>     ]  1.40 MiB  0:00");
    EXPECT_EQ(xoProgressConsole::FormatLine(state, 33, 5), "Count  [     <=>]  1.40 MiB  0:00");
    EXPECT_EQ(xoProgressConsole::FormatLine(state, 33, 6), "Count  [    <=> ]  1.40 MiB  0:00");
    EXPECT_EQ(xoProgressConsole::FormatLine(state, 33, 10), "Count  [<=>     ]  1.40 MiB  0:00");
}

// Views whose timer, clock and console are the test's.
class ProgressView : public testing::Test {
protected:
    ProgressView() {
        msNowMs = 1000000;
        msWritten.clear();
        msTick = nullptr;
        msIsConsole = false;
        msHasTimer = true;
    }
    void SetUp() override {
        for (const ImportHook& hook : mHooks) ASSERT_TRUE(hook.isInstalled());
    }

    // What the timer writes so many milliseconds after the begin of the work.
    static std::string tickAt(ULONGLONG elapsedMs) {
        msNowMs = 1000000 + elapsedMs;
        msTick(nullptr, msTicked, nullptr);
        return takeWritten();
    }
    static std::string takeWritten() { return std::exchange(msWritten, {}); }

    static inline bool msIsConsole, msHasTimer;
    static inline ULONGLONG msNowMs;

private:
    static ULONGLONG WINAPI clock() { return msNowMs; }
    static BOOL WINAPI getMode(HANDLE, DWORD*) { return msIsConsole; }
    static BOOL WINAPI getInfo(HANDLE, CONSOLE_SCREEN_BUFFER_INFO*) { return FALSE; }
    static BOOL WINAPI writeFile(HANDLE, const void* data, DWORD size, DWORD* written, OVERLAPPED*) {
        msWritten.append(static_cast<const char*>(data), *written = size);
        return TRUE;
    }
    static BOOL WINAPI writeConsole(HANDLE, const void* data, DWORD size, DWORD* written, void*) {
        msWritten += xo::platform::toUtf8({static_cast<const wchar_t*>(data), *written = size});
        return TRUE;
    }
    static PTP_TIMER WINAPI createTimer(PTP_TIMER_CALLBACK callback, void* argument, PTP_CALLBACK_ENVIRON) {
        msTick = callback;
        msTicked = argument;
        return msHasTimer ? reinterpret_cast<PTP_TIMER>(1) : nullptr;
    }
    static void WINAPI setTimer(PTP_TIMER, FILETIME*, DWORD, DWORD) {}
    static void WINAPI awaitTimer(PTP_TIMER, BOOL) {}
    static void WINAPI closeTimer(PTP_TIMER) {}

    static inline std::string msWritten;
    static inline PTP_TIMER_CALLBACK msTick;
    static inline void* msTicked;

    static constexpr char kLibrary[] = "xoSystem.dll";
    const ImportHook mHooks[9] = {{kLibrary, "GetTickCount64", &clock},
                                  {kLibrary, "GetConsoleMode", &getMode},
                                  {kLibrary, "GetConsoleScreenBufferInfo", &getInfo},
                                  {kLibrary, "WriteFile", &writeFile},
                                  {kLibrary, "WriteConsoleW", &writeConsole},
                                  {kLibrary, "CreateThreadpoolTimer", &createTimer},
                                  {kLibrary, "SetThreadpoolTimer", &setTimer},
                                  {kLibrary, "WaitForThreadpoolTimerCallbacks", &awaitTimer},
                                  {kLibrary, "CloseThreadpoolTimer", &closeTimer}};
};

TEST_F(ProgressView, PlainLinesComeEverMoreRarely) {
    xoProgressConsole view;
    const xoProgressScope work(&view, 2, "Import");
    std::vector<int> seconds;
    for (int second = 0; second <= 800; ++second)
        if (!tickAt(static_cast<ULONGLONG>(second) * 1000).empty()) seconds.push_back(second);
    EXPECT_EQ(seconds, (std::vector<int>{10, 20, 40, 80, 160, 460, 760}));
    EXPECT_EQ(tickAt(5000000), "Import,  0 %, 1:23:20\r\n") << "one line for the time in which the machine slept";
    EXPECT_EQ(tickAt(5000100), "");
}

TEST_F(ProgressView, GoesOnWhenAFaultHasEndedItsFunction) {
    static xoProgressConsole* view = nullptr;
    EXPECT_ANY_THROW(xo::exception::impl::ExecGuardedCode([] {
        xoProgressConsole local;
        view = &local;
        xoProgressScope work(view, 2, "Lost");
        work.advance();
        *static_cast<volatile int*>(nullptr) = 1;
    }));
    // What the view's memory holds once the stack is used again.
    std::memset(static_cast<void*>(view), 0, sizeof *view);
    EXPECT_EQ(tickAt(10000), "Lost, 50 %, 0:10 left\r\n");
}

TEST_F(ProgressView, DrawsNoMoreAfterAReset) {
    msIsConsole = true;
    xoProgressConsole view(0, 0);
    EXPECT_ANY_THROW(xo::exception::impl::ExecGuardedCode(
        [](void* notifier) {
            const xoProgressScope work(static_cast<xoProgressConsole*>(notifier), 2, "Lost");
            *static_cast<volatile int*>(nullptr) = 1;
        },
        &view));
    const std::string bar = tickAt(100);
    EXPECT_EQ(bar.substr(0, 10), "Lost  [>  ");
    view.reset();
    EXPECT_EQ(tickAt(200), "\r" + std::string(bar.size(), ' ') + "\r");
    EXPECT_EQ(tickAt(300), "");
}

TEST_F(ProgressView, LeavesItsLineOnceTheDelayIsOverThoughNoBarWasShown) {
    const std::pair<ULONGLONG, const char*> rows[] = {{499, ""}, {500, "Import: done in 0:00\r\n"}};
    msIsConsole = true;
    for (const bool hasTimer : {true, false}) {
        msHasTimer = hasTimer;
        for (const auto& [elapsedMs, line] : rows) {
            xoProgressConsole view;
            {
                xoProgressScope work(&view, 1, "Import");
                work.advance();
                msNowMs += elapsedMs;
            }
            EXPECT_EQ(takeWritten(), line) << hasTimer << elapsedMs;
        }
    }
}

TEST_F(ProgressView, GivesTheBottomLineUpWithoutMemory) {
    msIsConsole = true;
    xoProgressConsole first(0, 0);
    const xoProgressScope firstWork(&first, 1, "First");
    EXPECT_NE(tickAt(100), "");
    xoProgressConsole second(0, 0);
    const xoProgressScope secondWork(&second, 1, "Second");
    EXPECT_EQ(tickAt(200), "") << "the first one has the line";
    {
        const xo::tests::AllocationCount allocations;
        ASSERT_TRUE(allocations.isCounting());
        xo::tests::AllocationCount::refuseAll(true);
        first.setVisible(false);
        xo::tests::AllocationCount::refuseAll(false);
    }
    EXPECT_EQ(tickAt(300).substr(0, 8), "Second  ");
}

TEST(ProgressConsole, DrawsBelowTheLinesOfAConsole) {
    const xo::tests::Child child(L"progressShower", {}, CREATE_NEW_CONSOLE);
    const int result = child.wait();
    if (result == 2) GTEST_SKIP() << "no console can be made here";
    EXPECT_EQ(result, 0);
}

}  // namespace
