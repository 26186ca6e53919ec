#include "process/processFixture.h"

#include "platform/handle.h"

namespace {

using testing::ElementsAre;
using xo::xoProcess;
using xo::platform::KernelHandle;
using xo::tests::ImportHook;

class Process : public xo::tests::ProcessTest {};

TEST_F(Process, IsLeftAloneWhileItRuns) {
    EXPECT_TRUE(mChild.waitForFinished(0) && mChild.hasFailedToStart()) << "never started";
    EXPECT_EQ(mChild.getState(), 0u);
    ASSERT_TRUE(begin("sleep"));
    const std::uint32_t pid = mChild.getPid();
    EXPECT_FALSE(mChild.waitForFinished(0) || mChild.waitForFinished(150));
    EXPECT_FALSE(mChild.startProcess(mHelper, {"exit", "3"}) || mChild.resetState());
    EXPECT_TRUE(mChild.getState() == 1 && mChild.getPid() == pid && mChild.exitCode() == 0);
    EXPECT_EQ(xoProcess::GetParentProcessId(pid), xoProcess::GetCurrentProcessId());
    EXPECT_GT(mChild.getCurrentRamInUse(), 100000u);
    EXPECT_TRUE(mChild.setWorkingSetMaxSize(64 << 20));

    mChild.killProcess();
    EXPECT_TRUE(mChild.waitForFinished());
    EXPECT_EQ(mChild.exitCode(), 65535);
    EXPECT_TRUE(mChild.getState() == 2 && mChild.getPid() == 0 && !mChild.hasCrashed() && !mChild.hasFailedToStart());
    EXPECT_TRUE(mChild.resetState() && mChild.getState() == 0 && mChild.exitCode() == 0);
}

TEST_F(Process, EndsInOneOfFourWays) {
    const std::tuple<std::vector<std::string>, int, const char*> rows[] = {
        {{"exit", "0"}, 0, "untouched"},
        {{"exit", "259"}, 259, "process return an error"},  // which also means "still running"
        {{"exit", "3221225786"}, static_cast<int>(STATUS_CONTROL_C_EXIT), "process return an error"},
        {{"exit", "4294967295"}, -1, "process return an error"},
        {{"exit", "2147500037"}, static_cast<int>(0x80004005), "process return an error"},
        {{"fault"}, -3, "process has crashed"},
        {{"exit", "2147483651"}, -3, "process has crashed"},  // a breakpoint
        {{"exit", "3765269347"}, -3, "process has crashed"},  // a C++ exception
    };
    for (const auto& [arguments, code, error] : rows) {
        mError = "untouched";
        EXPECT_EQ(run(arguments), code) << arguments.back();
        EXPECT_EQ(mError, error) << arguments.back();
    }
    EXPECT_EQ(xoProcess::ExecUtf8(mFolder.path("missing"), {}, {}, true, 0, &mError), -1);
    EXPECT_EQ(mError, "Fail to start process");
    ASSERT_TRUE(mChild.startProcess(mHelper, {"fault"}) && mChild.waitForFinished());
    EXPECT_TRUE(mChild.hasCrashed() && mChild.exitCode() == static_cast<int>(EXCEPTION_ACCESS_VIOLATION));
}

HANDLE killed = nullptr;

BOOL WINAPI keepAndTerminate(HANDLE process, UINT code) {
    ::DuplicateHandle(::GetCurrentProcess(), process, ::GetCurrentProcess(), &killed, 0, FALSE, DUPLICATE_SAME_ACCESS);
    return ::TerminateProcess(process, code);
}

TEST_F(Process, IsGoneAfterATimeOut) {
    const ImportHook hook("xoSystem.dll", "TerminateProcess", &keepAndTerminate);
    EXPECT_EQ(run({"sleep"}, 50), -2);
    EXPECT_EQ(mError, "timeout");
    const KernelHandle child(killed);
    DWORD code = 0;
    EXPECT_EQ(::WaitForSingleObject(child.get(), 0), WAIT_OBJECT_0);
    EXPECT_TRUE(::GetExitCodeProcess(child.get(), &code) && code == 65535);
}

TEST_F(Process, IsFoundWithoutItsExtension) {
    const std::string copy = mFolder.path("\xC3\xA9 copy");
    ASSERT_TRUE(xo::xoDirUtils::MkpathUtf8(copy));  // a folder is no program
    ASSERT_TRUE(xo::xoDirUtils::CopyFileUtf8(mHelper, copy + ".exe"));
    const std::string binaries = xo::xoDirUtils::GetParentPathUtf8(mHelper);  // the copy looks there for its DLLs
    for (const bool makeAbsolute : {true, false})
        EXPECT_EQ(xoProcess::ExecUtf8(copy, {"exit", "3"}, binaries, makeAbsolute), makeAbsolute ? 3 : -1);
    for (const std::string& directory : {mFolder.path("missing"), std::string("C:\\\0x", 5)})
        EXPECT_EQ(xoProcess::ExecUtf8(mHelper, {"exit", "3"}, directory), -1);
    for (const std::string& program : {std::string(), mFolder.path(), mHelper + '\0', '"' + mHelper + '"'})
        EXPECT_EQ(xoProcess::ExecUtf8(program, {"exit", "3"}), -1) << program;
}

TEST_F(Process, GetsItsEnvironmentSorted) {
    const std::string big = "BIG=" + std::string(30000, 'x');
    mChild.setEnvironmentUtf8(
        {"b_1=old", big, "=C:=C:\\windows", "SystemRoot=C:\\windows", "a b=\xC3\xA9==", "B_1=", "BA=1"});
    ASSERT_TRUE(mChild.startProcess(mHelper, {"environment"}) && mChild.waitForFinished());
    std::string expected;
    for (const char* const entry : {"=C:=C:\\windows", "a b=\xC3\xA9==", "BA=1", big.c_str(), "B_1="})
        expected.append(entry).push_back('\0');
    EXPECT_TRUE(mFolder.read("told").compare(0, expected.size(), expected) == 0) << "Wine adds entries behind these";
    for (const std::string& bad :
         {std::string("a"), std::string(), std::string("=a"), std::string("a=\0b", 4), std::string("a=\xFF")}) {
        mChild.setEnvironmentUtf8({"b=c", bad});
        EXPECT_FALSE(mChild.startProcess(mHelper, {"exit", "0"})) << bad;
    }
    EXPECT_TRUE(mChild.hasFailedToStart() && mChild.getState() == 2);
    mChild.clearProcess();
    EXPECT_TRUE(mChild.getEnvironmentUtf8().empty() && mChild.getWorkingDirectoryUtf8().empty() &&
                mChild.getState() == 0);
}

TEST_F(Process, InheritsNoHandle) {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    const KernelHandle event(::CreateEventW(&inheritable, TRUE, FALSE, nullptr));
    run({"event", std::to_string(reinterpret_cast<std::uintptr_t>(event.get()))});
    EXPECT_EQ(::WaitForSingleObject(event.get(), 0), WAIT_TIMEOUT);
}

DWORD creationFlags = 0;

BOOL WINAPI refuseToCreate(LPCWSTR, LPWSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD flags, LPVOID,
                           LPCWSTR, LPSTARTUPINFOW, LPPROCESS_INFORMATION) {
    creationFlags = flags;
    ::SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

TEST_F(Process, TakesItsPriority) {
    const ImportHook hook("xoSystem.dll", "CreateProcessW", &refuseToCreate);
    const std::tuple<int, const char*, DWORD> rows[] = {{0, "Low", IDLE_PRIORITY_CLASS},
                                                        {1, "Normal", NORMAL_PRIORITY_CLASS},
                                                        {2, "High", HIGH_PRIORITY_CLASS},
                                                        {3, "Inherit", BELOW_NORMAL_PRIORITY_CLASS},
                                                        {4, "Unknown", BELOW_NORMAL_PRIORITY_CLASS},
                                                        {-1, "Unknown", BELOW_NORMAL_PRIORITY_CLASS}};
    ::SetPriorityClass(::GetCurrentProcess(), BELOW_NORMAL_PRIORITY_CLASS);
    for (const auto& [priority, name, expected] : rows) {
        EXPECT_EQ(xo::ProcessPriorityToString(priority), name);
        EXPECT_FALSE(mChild.startProcess(mHelper, {}, false, priority));
        EXPECT_EQ(creationFlags, expected | CREATE_NO_WINDOW | CREATE_UNICODE_ENVIRONMENT) << name;
        EXPECT_THAT(takeLines(), ElementsAre("0()CreateProcessW return an error 5"));
    }
    ::SetPriorityClass(::GetCurrentProcess(), NORMAL_PRIORITY_CLASS);
}

TEST_F(Process, RunsOnDetached) {
    std::uint32_t pid = 1;
    EXPECT_FALSE(xoProcess::StartDetachedUtf8(mFolder.path("missing"), {}, {}, &pid));
    EXPECT_EQ(pid, 0u);
    ASSERT_TRUE(xoProcess::StartDetachedUtf8(mHelper, {"sleep"}, mFolder.path(), &pid));
    const KernelHandle child(::OpenProcess(PROCESS_ALL_ACCESS, FALSE, pid));
    EXPECT_TRUE(child && ::WaitForSingleObject(child.get(), 100) == WAIT_TIMEOUT && ::TerminateProcess(child.get(), 1));
    const std::string said("x\0", 2);
    EXPECT_TRUE(xoProcess::StartDetachedUtf8(mHelper, {"arguments", "x"}, mFolder.path()));
    for (int i = 0; i < 2000 && mFolder.read("told") != said; ++i) ::Sleep(5);
    EXPECT_EQ(mFolder.read("told"), said);
}

TEST_F(Process, KnowsItsRelativesAndItsMemory) {
    EXPECT_EQ(run({"parent"}), static_cast<int>(::GetCurrentProcessId()));
    EXPECT_EQ(xoProcess::GetParentProcessId(0xFFFFFFF0), 0u);
    const std::uint64_t before = mChild.getCurrentRamInUse();
    std::vector<char> memory(32 << 20, 'x');
    EXPECT_NEAR(static_cast<double>(mChild.getCurrentRamInUse() - before), 32 << 20, 4 << 20) << memory[7];
}

TEST_F(Process, LeavesNoHandleBehind) {
    const auto freshHandle = [] {
        return reinterpret_cast<std::uintptr_t>(KernelHandle(::CreateEventW(nullptr, TRUE, FALSE, nullptr)).get());
    };
    run({"exit", "0"});
    const std::uintptr_t before = freshHandle();
    for (int i = 0; i < 10; ++i) EXPECT_TRUE(run({"exit", "0"}) == 0 && xoProcess::ExecUtf8(mFolder.path("x")) == -1);
    EXPECT_EQ(freshHandle(), before);
}

}  // namespace
