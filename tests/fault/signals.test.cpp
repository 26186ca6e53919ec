#include <climits>
#include <csignal>

#include "fault/faultFixture.h"
#include "support/child.h"
#include "support/temporaryFolder.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoThread.h"

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using xo::exception::IsSigWatcherRegistered;
using xo::tests::Child;
using xo::tests::TemporaryFolder;

using Signals = xo::tests::FaultTest;

TEST_F(Signals, AreWatchedFromFullInitialisationToTermination) {
    EXPECT_FALSE(IsSigWatcherRegistered());
    xo::initializeXoSystem(xo::InitTypeBasic);
    EXPECT_FALSE(IsSigWatcherRegistered());
    xo::initializeXoSystem(xo::InitTypeFull);
    EXPECT_TRUE(IsSigWatcherRegistered());
    xo::terminateXoSystem();
    EXPECT_TRUE(IsSigWatcherRegistered());
    takeReports();

    xo::xoLog::edit().setEchoToConsole(false);
    for (const int signal : {SIGILL, SIGFPE, SIGSEGV}) std::raise(signal);
    EXPECT_THAT(takeFirstLines(), ElementsAre("Catch signal SIGILL", "Catch signal SIGFPE", "Catch signal SIGSEGV"));
    struct Raiser : xo::xoThread {
        ~Raiser() override { waitThread(INT_MAX); }
        void run() override { std::raise(SIGSEGV); }
    };
    Raiser().startThread(nullptr);
    EXPECT_THAT(takeFirstLines(), ElementsAre("Catch signal SIGSEGV")) << "on the library's own threads, too";

    xo::initializeXoSystem(xo::InitTypeBasic);
    xo::terminateXoSystem();
    xo::terminateXoSystem();
    EXPECT_FALSE(IsSigWatcherRegistered());
    for (const int signal : {SIGFPE, SIGILL, SIGSEGV}) EXPECT_EQ(std::signal(signal, SIG_DFL), SIG_DFL) << signal;
}

TEST(CrashingProgram, LeavesItsReportAndItsCode) {
    const struct {
        const wchar_t* crash;
        DWORD exitCode;
        const char* report;
    } rows[] = {
        {L"violation", 0xC0000005, "Catch signal SIGSEGV\r\n"},
        {L"division", 0xC0000094, "Catch signal SIGFPE\r\n"},
        {L"divisionOnThread", 0xC0000094, "Catch signal SIGFPE\r\n"},
        {L"recovered", 7, "\xEF\xBB\xBF"},  // by a filter of the host's, which is there again after the termination
        {L"illegal", 0xC000001D, "Catch signal SIGILL\r\n"},
        {L"guardedAbort", 3, "\xEF\xBB\xBF"},  // nothing is caught
    };
    for (const auto& row : rows) {
        const TemporaryFolder folder;
        std::filesystem::current_path(folder.widePath());
        EXPECT_EQ(static_cast<DWORD>(Child(L"crasher", row.crash).wait()), row.exitCode) << row.report;
        EXPECT_THAT(folder.read("log"), EndsWith(row.report));
        std::filesystem::current_path(folder.widePath().parent_path());
    }
}

}  // namespace
