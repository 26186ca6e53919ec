#include <csignal>

#include "fault/faultFixture.h"
#include "support/child.h"
#include "support/temporaryFolder.h"
#include "xoSystem/xoInit.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
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
        {L"violation", 0xC0000005, "Catch signal SIGSEGV"},
        {L"division", 0xC0000094, "Catch signal SIGFPE"},
        {L"illegal", 0xC000001D, "Catch signal SIGILL"},
        {L"guardedAbort", 3, nullptr},
    };
    for (const auto& row : rows) {
        const TemporaryFolder folder;
        const Child child(L"crasher", std::wstring(row.crash) + L" \"" + folder.widePath().wstring() + L"\"");
        EXPECT_EQ(static_cast<DWORD>(child.wait()), row.exitCode) << row.report;
        const std::string log = folder.read("log");
        if (row.report)
            EXPECT_THAT(log, HasSubstr(row.report));
        else
            EXPECT_THAT(log, testing::Not(HasSubstr("Catch")));
    }
}

TEST(UnloadingProgram, GetsItsCrashHelpOutOfTheWay) { EXPECT_EQ(Child(L"unloader").wait(), 0); }

}  // namespace
