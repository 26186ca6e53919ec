// Guarded calls whose reports are collected: what the log's handler gets, and what goes to the system's event log.
#ifndef XO_TESTS_FAULT_FAULTFIXTURE_H
#define XO_TESTS_FAULT_FAULTFIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/importHook.h"
#include "xoSystem/xoException.h"
#include "xoSystem/xoLog.h"

namespace xo::tests {

using Reports = std::vector<std::string>;

// The code of this compiler's exceptions, the same in a report, and that of the other compiler family's.
#if defined(_MSC_VER)
constexpr char kThrow[] = "Msvc C++ Exception 0xe06d7363";
constexpr char kThrowingFunction[] = "_CxxThrowException @0x";
constexpr char kForeignThrow[] = "Msvc C++ Exception 0x20474343";
constexpr DWORD kForeignCode = 0x20474343;
#else
constexpr char kThrow[] = "Msvc C++ Exception 0x20474343";
constexpr char kThrowingFunction[] = "__cxa_throw @0x";
constexpr char kForeignThrow[] = "Msvc C++ Exception 0xe06d7363";
constexpr DWORD kForeignCode = 0xE06D7363;
#endif

constexpr char kFaultReport[] = "Catch std exception : Catch an SEH exception";

// How a guarded call ends: "returned", or the kind of the exception and its text.
template <class... Arguments>
std::string outcomeOf(Arguments... arguments) {
    try {
        exception::impl::ExecGuardedCode(arguments...);
        return "returned";
    } catch (const std::runtime_error& error) {
        return std::string("runtime_error ") + error.what();
    } catch (const std::logic_error& error) {
        return std::string("logic_error ") + error.what();
    } catch (const std::exception& error) {
        return std::string("exception ") + error.what();
    }
}

inline std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

// The first line of a report by the calling thread.
inline std::string faultLine(const std::string& nameAndCode) {
    return "Catch SEH Exception " + nameAndCode + ", PID " + std::to_string(::GetCurrentProcessId()) + " TID " +
           std::to_string(::GetCurrentThreadId());
}

class FaultTest : public testing::Test {
protected:
    FaultTest() {
        xoLog::createInstance(/*threadSafe=*/true);
        xoLog::edit().setEchoToConsole(false);
        xoLog::edit().installCustomHandler(&collect, this);
        msEvents.clear();
    }
    ~FaultTest() override { xoLog::destroyInstance(); }

    void SetUp() override { ASSERT_TRUE(mRegister.isInstalled() && mReport.isInstalled()); }

    // Since the last call.
    Reports takeReports() { return std::exchange(mReports, {}); }
    Reports takeEvents() { return std::exchange(msEvents, {}); }

    // The first lines of the log's reports. Every report has gone to both places.
    Reports takeFirstLines() {
        EXPECT_EQ(mReports, msEvents);
        takeEvents();
        Reports lines = takeReports();
        for (std::string& line : lines) line = firstLine(line);
        return lines;
    }

    // Reports have no traces from now on, each of which takes DbgHelp long to make.
    void leaveOutTraces() { mNoDebugHelp.emplace("xoSystem.dll", "LoadLibraryExW", &loadNoDebugHelp); }

    // What else the log's handler does with a report.
    void (*mAlso)(const std::string& report) = nullptr;

private:
    static void collect(const std::string& message, xoLogType type, const std::string& qualifier, void* test) {
        EXPECT_TRUE(type == xoLogCritical && qualifier.empty());
        auto& self = *static_cast<FaultTest*>(test);
        self.mReports.push_back(message);
        if (self.mAlso) self.mAlso(message);
    }

    static HMODULE WINAPI loadNoDebugHelp(LPCWSTR, HANDLE, DWORD) { return nullptr; }
    static HANDLE WINAPI registerSource(LPCSTR, LPCSTR name) {
        EXPECT_STREQ(name, "xoSystem");
        return reinterpret_cast<HANDLE>(1);
    }
    static BOOL WINAPI report(HANDLE, WORD type, WORD, DWORD, PSID, WORD, DWORD, LPCSTR* texts, LPVOID) {
        EXPECT_EQ(type, EVENTLOG_ERROR_TYPE);
        const std::lock_guard<std::mutex> locker(msMutex);
        msEvents.push_back(texts[0]);
        return TRUE;
    }

    Reports mReports;                // under the log's lock
    static inline Reports msEvents;  // under msMutex
    static inline std::mutex msMutex;
    ImportHook mRegister{"xoSystem.dll", "RegisterEventSourceA", &registerSource};
    ImportHook mReport{"xoSystem.dll", "ReportEventA", &report};
    std::optional<ImportHook> mNoDebugHelp;
};

}  // namespace xo::tests

#endif
