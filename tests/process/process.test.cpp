#include "platform/handle.h"
#include "process/processFixture.h"
#include "support/importHook.h"

namespace xo::tests {

using platform::KernelHandle;
using testing::ElementsAre;

DWORD sleptMs = 0;

TEST_F(Process, IsLeftAloneWhileItRuns) {
    EXPECT_TRUE(mChild.waitForFinished(0) && mChild.hasFailedToStart() && mChild.getState() == 0) << "never started";
    const auto count = +[](DWORD ms) { sleptMs += ms; };
    const ImportHook hook("xoSystem.dll", "Sleep", count);
    ASSERT_TRUE(mChild.startProcess(mHelper, {"sleep"}) && waitUntilTold("sleep"));
    const std::uint32_t pid = mChild.getPid();
    EXPECT_FALSE(mChild.waitForFinished(0) || mChild.waitForFinished(150));
    EXPECT_FALSE(mChild.startProcess(mHelper, {"exit", "3"}) || mChild.resetState());
    EXPECT_TRUE(mChild.getState() == 1 && mChild.getPid() == pid && mChild.exitCode() == 0);
    EXPECT_EQ(xoProcess::GetParentProcessId(pid), xoProcess::GetCurrentProcessId());
    EXPECT_TRUE(mChild.getCurrentRamInUse() > 100000 && mChild.setWorkingSetMaxSize(64 << 20));
    mChild.killProcess();
    EXPECT_TRUE(mChild.waitForFinished() && mChild.getState() == 2 && mChild.exitCode() == 65535);
    EXPECT_TRUE(mChild.getPid() == 0 && !mChild.hasCrashed() && !mChild.hasFailedToStart());
    EXPECT_TRUE(mChild.resetState() && mChild.getState() == 0 && mChild.exitCode() == 0);
    EXPECT_EQ(sleptMs, 10u) << "after the start; all other waiting is for the child";
}

TEST_F(Process, TellsACrashFromAnOrdinaryEnd) {
    EXPECT_EQ(run({"exit", "0"}), 0);
    EXPECT_EQ(mError, "untouched");
    for (const unsigned code : {1u, 259u, 0xFFFFFFFFu, 0x80004005u, 0xC000013Au}) {  // 259 reads "still active" too
        EXPECT_EQ(run({"exit", std::to_string(code)}), static_cast<int>(code));
        EXPECT_EQ(mError, "process return an error");
    }
    for (const unsigned code : {0x80000003u, 0xE06D7363u, 0x20474343u})
        EXPECT_EQ(run({"exit", std::to_string(code)}), -3);
    ASSERT_TRUE(mChild.startProcess(mHelper, {"fault"}) && mChild.waitForFinished());
    EXPECT_TRUE(mChild.hasCrashed() && mChild.exitCode() == static_cast<int>(EXCEPTION_ACCESS_VIOLATION));
    EXPECT_EQ(mError, "process has crashed");
}

HANDLE killed = nullptr;
BOOL WINAPI keepAndTerminate(HANDLE process, UINT code) {
    const HANDLE self = ::GetCurrentProcess();
    return ::DuplicateHandle(self, process, self, &killed, 0, FALSE, DUPLICATE_SAME_ACCESS) &&
           ImportHook::behind(&keepAndTerminate)(process, code);
}

TEST_F(Process, IsGoneAfterATimeOut) {
    const ImportHook hook("xoSystem.dll", "TerminateProcess", &keepAndTerminate);
    EXPECT_EQ(run({"sleep"}, 50), -2);
    EXPECT_EQ(mError, "timeout");
    const KernelHandle child(killed);
    DWORD code = 0;
    EXPECT_TRUE(::GetExitCodeProcess(child.get(), &code) && code == 65535);
    EXPECT_EQ(::WaitForSingleObject(child.get(), 0), WAIT_OBJECT_0);
}

TEST_F(Process, IsFoundWithoutItsExtension) {
    const std::string copy = mFolder.path("\xC3\xA9 copy");
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(copy));  // a folder is no program
    ASSERT_TRUE(xoDirUtils::CopyFileUtf8(mHelper, copy + ".exe"));
    for (const bool makeAbsolute : {true, false})  // the copy looks for its DLLs in its working directory
        EXPECT_EQ(xoProcess::ExecUtf8(copy, {"exit", "3"}, mBinaries, makeAbsolute), makeAbsolute ? 3 : -1);
    for (const std::string& program : Texts{"", mFolder.path(), mHelper + '\0', '"' + mHelper + '"'})
        EXPECT_EQ(runOther(program, {"exit", "3"}), -1) << program;
    for (const std::string& directory : Texts{mFolder.path("missing"), {"C:\\\0x", 5}})
        EXPECT_EQ(xoProcess::ExecUtf8(mHelper, {"exit", "3"}, directory), -1) << directory;
}

TEST_F(Process, GetsItsEnvironmentSorted) {
    const std::string big = "BIG=" + std::string(30000, 'x');
    mChild.setEnvironmentUtf8({"b_1=old", big, "=C:=C:\\windows", "a b=\xC3\xA9==", "B_1=", "BA=1"});
    ASSERT_TRUE(mChild.startProcess(mHelper, {"environment"}) && mChild.waitForFinished());
    const std::string expected = joined({"=C:=C:\\windows", "a b=\xC3\xA9==", "BA=1", big, "B_1="});
    EXPECT_EQ(mFolder.read("told").compare(0, expected.size(), expected), 0);  // Wine adds entries behind these
    for (const std::string& bad : Texts{"a", "", "=a", {"a=\0b", 4}, "a=\xFF"}) {
        mChild.setEnvironmentUtf8({"b=c", bad});
        EXPECT_TRUE(!mChild.startProcess(mHelper) && mChild.hasFailedToStart() && mChild.getState() == 2) << bad;
    }
    mChild.clearProcess();
    EXPECT_TRUE(mChild.getEnvironmentUtf8().empty() && mChild.getWorkingDirectoryUtf8().empty());
}

TEST_F(Process, InheritsNoHandleAndLeavesNoneBehind) {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    const auto create = [&] { return KernelHandle(::CreateEventW(&inheritable, TRUE, FALSE, nullptr)); };
    const KernelHandle event = create();
    EXPECT_NE(run({"event", std::to_string(reinterpret_cast<std::uintptr_t>(event.get()))}), -1);
    EXPECT_EQ(::WaitForSingleObject(event.get(), 0), WAIT_TIMEOUT);

    const HANDLE before = create().get();  // the lowest value that is free
    for (int i = 0; i < 10; ++i) EXPECT_TRUE(run({"exit", "0"}) == 0 && runOther("missing", {}) == -1);
    EXPECT_EQ(create().get(), before);
    EXPECT_EQ(mError, "Fail to start process");
}

DWORD creationFlags = 0;

TEST_F(Process, TakesItsPriority) {  // which Wine would ignore
    const auto refuse = +[](void*, void*, void*, void*, BOOL, DWORD flags) {
        creationFlags = flags;
        return ::SetLastError(ERROR_ACCESS_DENIED), FALSE;
    };
    const ImportHook hook("xoSystem.dll", "CreateProcessW", refuse);
    ::SetPriorityClass(::GetCurrentProcess(), BELOW_NORMAL_PRIORITY_CLASS);
    const char* const names[] = {"Low", "Normal", "High", "Inherit", "Unknown"};
    const DWORD classes[] = {IDLE_PRIORITY_CLASS, NORMAL_PRIORITY_CLASS, HIGH_PRIORITY_CLASS,
                             BELOW_NORMAL_PRIORITY_CLASS, BELOW_NORMAL_PRIORITY_CLASS};
    for (int priority = 0; priority < 5; ++priority) {
        EXPECT_EQ(ProcessPriorityToString(priority), names[priority]);
        EXPECT_FALSE(mChild.startProcess(mHelper, {}, false, priority));
        EXPECT_EQ(creationFlags, classes[priority] | CREATE_NO_WINDOW | CREATE_UNICODE_ENVIRONMENT);
        EXPECT_THAT(takeLines(), ElementsAre("0()CreateProcessW return an error 5"));
    }
    ::SetPriorityClass(::GetCurrentProcess(), NORMAL_PRIORITY_CLASS);
}

TEST_F(Process, RunsOnDetached) {
    std::uint32_t pid = 1;
    EXPECT_TRUE(!xoProcess::StartDetachedUtf8(mFolder.path("missing"), {}, {}, &pid) && pid == 0);
    EXPECT_TRUE(xoProcess::StartDetachedUtf8(mHelper, {"arguments", "x"}, mFolder.path()));
    EXPECT_TRUE(waitUntilTold(joined({"x"})));
    ASSERT_TRUE(xoProcess::StartDetachedUtf8(mHelper, {"sleep"}, mFolder.path(), &pid) && waitUntilTold("sleep"));
    const KernelHandle child(::OpenProcess(PROCESS_TERMINATE, FALSE, pid));
    EXPECT_TRUE(::TerminateProcess(child.get(), 1));
}

DWORD processTime = 0;

TEST_F(Process, KnowsItsParentAndItsMemory) {
    EXPECT_EQ(run({"parent"}), static_cast<int>(::GetCurrentProcessId()));
    EXPECT_EQ(xoProcess::GetParentProcessId(0xFFFFFFF0), 0u);
    const auto tellLess = +[](HANDLE, FILETIME* start, FILETIME*, FILETIME*, FILETIME*) -> BOOL {
        *start = {--processTime, 0};
        return TRUE;
    };
    const ImportHook hook("xoSystem.dll", "GetProcessTimes", tellLess);
    EXPECT_TRUE(mChild.startProcess(mHelper, {"sleep"}));
    EXPECT_EQ(xoProcess::GetParentProcessId(mChild.getPid()), 0u) << "one younger than its child only has the number";

    const std::uint64_t before = xoProcess().getCurrentRamInUse();
    const std::vector<char> memory(32 << 20, 'x');
    EXPECT_NEAR(static_cast<double>(xoProcess().getCurrentRamInUse() - before), 32 << 20, 4 << 20) << memory[7];
}

TEST_F(Process, GetsEachArgumentThroughItsOwnSplitter) {
    Texts texts = {"",        " ",         "\t a\n",  "\\",     "a\\\\",
                   "a b\\\\", "\"",        "\\\"",    "\"\"\"", "a\\\\\"b",
                   "%PATH%",  "^ & | < >", "*.exe ?", "-x='y'", "\xC3\xA9\xF0\x9F\x98\x80"};
    const std::string expected = joined(texts);
    texts.insert(texts.begin(), "arguments");
    EXPECT_EQ(run(texts), 0);
    EXPECT_EQ(mFolder.read("told"), expected);

    const std::size_t room = 32766 - mHelper.size() - std::string("\"\" \"exit\" \"3\" \"\"").size();
    EXPECT_EQ(run({"exit", "3", std::string(room, 'x')}), 3);
    EXPECT_EQ(run({"exit", "3", std::string(room + 1, 'x')}), -1);
    EXPECT_THAT(takeLines(), ElementsAre("0()CreateProcessW return an error 206"));
    for (const std::string& bad : Texts{{"a\0b", 3}, "\xFF"}) EXPECT_EQ(run({"exit", "3", bad}), -1);
}

TEST_F(Process, OfABatchFileGetsOnlyWhatCannotBecomeACommand) {
    mFolder.write("b \xC3\xA9.BAT", "@echo [%1][%2][%3]> told\r\n@exit /b 5\r\n");
    const std::string batch = mFolder.path("b \xC3\xA9.BAT");
    EXPECT_EQ(runOther(batch, {"a b&exit 9", "", "^|>x\\"}), 5);
    EXPECT_EQ(mFolder.read("told"), "[\"a b&exit 9\"][\"\"][\"^|>x\\\"]\r\n");
    for (const std::string& bad : Texts{"\"&exit 9", "%PATH%", "a\nb", std::string(8200, 'x')})
        EXPECT_EQ(runOther(batch, {bad}), -1) << bad;
    EXPECT_EQ(runOther(batch + ". ", {"\""}), -1) << "Windows drops what stands behind the name";
    EXPECT_EQ(runOther(mFolder.path("missing.cmd"), {}), -1);
    EXPECT_EQ(runOther("C:/windows/system32/cmd", {"/D", "/c", "echo x>told&", "exit 3"}), 3);
    EXPECT_EQ(mFolder.read("told"), "x\r\n");
}

TEST_F(Process, SplitsACommandLineAsThePlatformDoes) {
    Texts words;
    const std::string line = " \"C:\\a b\\\" \"x\\\\\" y\\\\\\\"z \"\" \"\"q\"\"\t\xC3\xA9 \"open end";
    EXPECT_TRUE(xoProcess::SplitCommandLine(line.substr(1), words));
    EXPECT_THAT(words, ElementsAre("C:\\a b\\", "x\\", "y\\\"z", "", "q", "\xC3\xA9", "open end"));
    EXPECT_TRUE(xoProcess::SplitCommandLine(line, words) && words[0].empty()) << "a blank stands before the program";
    for (const std::string& bad : Texts{"", " \t", {"a\0b", 3}, "a \xFF"}) {
        EXPECT_TRUE(!xoProcess::SplitCommandLine(bad, words) && words.empty());
        EXPECT_THAT(takeLines(), ElementsAre("3()Invalid command line : " + bad));
    }
}

}  // namespace xo::tests
