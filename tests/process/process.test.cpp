#include "platform/handle.h"
#include "process/processFixture.h"
#include "support/allocationCount.h"
#include "support/importHook.h"
#include "support/openHandles.h"

namespace xo::tests {

using platform::KernelHandle;
using testing::ElementsAre;

DWORD sleptMs = 0;
DWORD workingSetFlags = 0;

TEST_F(Process, IsLeftAloneWhileItRuns) {
    EXPECT_TRUE(mChild.waitForFinished(0) && mChild.hasFailedToStart() && mChild.getState() == 0) << "never started";
    const auto count = +[](DWORD ms) { sleptMs += ms; };
    const ImportHook hook("xoSystem.dll", "Sleep", count);
    const auto limit = +[](HANDLE, SIZE_T, SIZE_T, DWORD flags) -> BOOL { return (workingSetFlags = flags) != 0; };
    const ImportHook limitHook("xoSystem.dll", "SetProcessWorkingSetSizeEx", limit);
    ASSERT_TRUE(mChild.startProcess(mHelper, {"sleep"}) && waitForResult("sleep"));
    const std::uint32_t pid = mChild.getPid();
    EXPECT_FALSE(mChild.waitForFinished(0) || mChild.waitForFinished(150));
    EXPECT_FALSE(mChild.startProcess(mHelper, {"exit", "3"}) || mChild.resetState());
    EXPECT_TRUE(mChild.getState() == 1 && mChild.getPid() == pid && mChild.exitCode() == 0);
    EXPECT_EQ(xoProcess::GetParentProcessId(pid), xoProcess::GetCurrentProcessId());
    EXPECT_TRUE(mChild.getCurrentRamInUse() > 100000 && mChild.setWorkingSetMaxSize(64 << 20));
    EXPECT_EQ(workingSetFlags, QUOTA_LIMITS_HARDWS_MAX_ENABLE + 0u);
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
    // The last one is that of fail-fast, and of abort of the universal C runtime.
    for (const unsigned code :
         {0x80000001u, 0x80000002u, 0x80000003u, 0x80000004u, 0xE06D7363u, 0x20474343u, 0xC0000409u})
        EXPECT_EQ(run({"exit", std::to_string(code)}), -3) << code;
    ASSERT_TRUE(mChild.startProcess(mHelper, {"fault"}) && mChild.waitForFinished());
    EXPECT_TRUE(mChild.hasCrashed() && mChild.exitCode() == static_cast<int>(EXCEPTION_ACCESS_VIOLATION));
    EXPECT_EQ(mError, "process has crashed");
}

HANDLE killed = nullptr;
int waitsAfterKill = 0;
BOOL WINAPI keepAndTerminate(HANDLE process, UINT code) {
    const HANDLE self = ::GetCurrentProcess();
    return ::DuplicateHandle(self, process, self, &killed, 0, FALSE, DUPLICATE_SAME_ACCESS) &&
           ImportHook::behind(&keepAndTerminate)(process, code);
}
DWORD WINAPI countAndWait(HANDLE handle, DWORD ms) {
    waitsAfterKill += killed ? 1 : 0;
    return ImportHook::behind(&countAndWait)(handle, ms);
}

TEST_F(Process, IsGoneAfterATimeOut) {
    const ImportHook hook("xoSystem.dll", "TerminateProcess", &keepAndTerminate);
    const ImportHook waitHook("xoSystem.dll", "WaitForSingleObject", &countAndWait);
    EXPECT_EQ(run({"sleep"}, 50), -2);
    EXPECT_EQ(mError, "timeout");
    EXPECT_GT(waitsAfterKill, 0);
    const KernelHandle child(std::exchange(killed, nullptr));
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
    ASSERT_TRUE(xoDirUtils::CopyFileUtf8(mHelper, mFolder.path("\xEF\xBF\xBD.exe")));  // what broken UTF-8 becomes
    for (const std::string& program :
         Texts{"", mFolder.path(), mHelper + '\0', '"' + mHelper + '"', mFolder.path() + "\\\xFF.exe"})
        EXPECT_EQ(runOther(program, {"exit", "3"}), -1) << program;
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(mFolder.path("\xEF\xBF\xBD")));
    for (const std::string& directory : Texts{mFolder.path("missing"), {"C:\\\0x", 5}, mFolder.path() + "\\\xFF"})
        EXPECT_EQ(xoProcess::ExecUtf8(mHelper, {"exit", "3"}, directory), -1) << directory;
}

TEST_F(Process, GetsItsEnvironmentSorted) {
    const std::string big = "BIG=" + std::string(30000, 'x');
    mChild.setEnvironmentUtf8({"b_1=old", big, "=C:=C:\\windows", "a b=\xC3\xA9==", "B_1=", "BA=1"});
    ASSERT_TRUE(mChild.startProcess(mHelper, {"environment"}) && mChild.waitForFinished());
    const std::string expected = joined({"=C:=C:\\windows", "a b=\xC3\xA9==", "BA=1", big, "B_1="});
    EXPECT_EQ(mFolder.read("result").compare(0, expected.size(), expected), 0);  // Wine adds entries behind these
    for (const std::string& bad : Texts{"a", "", "=a", {"a=\0b", 4}, "a=\xFF"}) {
        mChild.setEnvironmentUtf8({"b=c", bad});
        EXPECT_TRUE(!mChild.startProcess(mHelper) && mChild.hasFailedToStart() && mChild.getState() == 2) << bad;
    }
    mChild.clearProcess();
    EXPECT_TRUE(mChild.getEnvironmentUtf8().empty() && mChild.getWorkingDirectoryUtf8().empty());
}

TEST_F(Process, InheritsNoHandleAndLeavesNoneBehind) {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    const KernelHandle event(::CreateEventW(&inheritable, TRUE, FALSE, nullptr));
    EXPECT_NE(run({"event", std::to_string(reinterpret_cast<std::uintptr_t>(event.get()))}), -1);
    EXPECT_EQ(::WaitForSingleObject(event.get(), 0), WAIT_TIMEOUT);

    const int before = openHandles();
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(run({"exit", "0"}) == 0 && runOther("missing", {}) == -1);
    EXPECT_EQ(openHandles(), before);
    EXPECT_EQ(mError, "Fail to start process");
}

DWORD creationFlags = 0;
DWORD startupFlags = 0;

TEST_F(Process, TakesItsPriority) {  // Wine ignores it, so the call is refused and looked at
    const auto refuse = +[](void*, void*, void*, void*, BOOL, DWORD flags, void*, void*, const STARTUPINFOW* startup) {
        creationFlags = flags;
        startupFlags = startup->dwFlags;
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
        EXPECT_EQ(startupFlags, STARTF_USESTDHANDLES + 0u);
        EXPECT_THAT(takeLines(), ElementsAre("0()CreateProcessW return an error 5"));
    }
    ::SetPriorityClass(::GetCurrentProcess(), NORMAL_PRIORITY_CLASS);
}

TEST_F(Process, RunsOnDetached) {
    std::uint32_t pid = 1;
    EXPECT_TRUE(!xoProcess::StartDetachedUtf8(mFolder.path("missing"), {}, {}, &pid) && pid == 0);
    EXPECT_TRUE(xoProcess::StartDetachedUtf8(mBinaries + "/processChild", {"arguments", "x"}, mFolder.path()));
    EXPECT_TRUE(waitForResult(joined({"x"})));
    ASSERT_TRUE(xoProcess::StartDetachedUtf8(mHelper, {"sleep"}, mFolder.path(), &pid) && waitForResult("sleep"));
    const KernelHandle child(::OpenProcess(PROCESS_TERMINATE, FALSE, pid));
    EXPECT_TRUE(::TerminateProcess(child.get(), 1));
}

DWORD timeStep = 0;

TEST_F(Process, KnowsItsParentAndItsMemory) {
    EXPECT_EQ(run({"parent"}), static_cast<int>(::GetCurrentProcessId()));
    EXPECT_EQ(xoProcess::GetParentProcessId(0xFFFFFFF0), 0u);
    ASSERT_TRUE(mChild.startProcess(mHelper, {"sleep"}));
    const auto parent = [&] { return xoProcess::GetParentProcessId(mChild.getPid()); };
    const auto tell = +[](HANDLE, FILETIME* start, FILETIME*, FILETIME*, FILETIME*) -> BOOL {
        static DWORD time = 100;
        *start = {time += timeStep, 0};
        return TRUE;
    };
    {
        const ImportHook hook("xoSystem.dll", "GetProcessTimes", tell);  // of the parent, then of the child
        EXPECT_EQ(parent(), ::GetCurrentProcessId()) << "the clock is coarse: both may have started at one time";
        timeStep = 0xFFFFFFFF;
        EXPECT_EQ(parent(), 0u) << "a younger process only has the identifier of the parent";
    }
    for (const int error : {ERROR_ACCESS_DENIED, ERROR_INVALID_PARAMETER}) {
        static int refusal;
        refusal = error;
        const auto refuse =
            +[](DWORD, BOOL, DWORD) -> HANDLE { return ::SetLastError(static_cast<DWORD>(refusal)), nullptr; };
        const ImportHook hook("xoSystem.dll", "OpenProcess", refuse);
        EXPECT_EQ(parent() != 0, error == ERROR_ACCESS_DENIED) << "a service may be the parent";
    }

    const std::uint64_t before = xoProcess().getCurrentRamInUse();
    const std::vector<char> memory(32 << 20, 'x');
    EXPECT_NEAR(static_cast<double>(xoProcess().getCurrentRamInUse() - before), 32 << 20, 4 << 20) << memory[7];
    const KernelHandle child(::OpenProcess(SYNCHRONIZE, FALSE, mChild.getPid()));
    mChild.killProcess();
    EXPECT_EQ(::WaitForSingleObject(child.get(), 20000), WAIT_OBJECT_0);
    EXPECT_GT(mChild.getCurrentRamInUse(), 32u << 20) << "of this process, once the child has ended";
}

TEST_F(Process, GetsEachArgumentThroughItsOwnSplitter) {
    Texts texts = {"",        " ",         "\t a\n",  "\\",     "a\\\\",
                   "a b\\\\", "\"",        "\\\"",    "\"\"\"", "a\\\\\"b",
                   "%PATH%",  "^ & | < >", "*.exe ?", "-x='y'", "\xC3\xA9\xF0\x9F\x98\x80"};
    const std::string expected = joined(texts);
    texts.insert(texts.begin(), "arguments");
    EXPECT_EQ(run(texts), 0);
    EXPECT_EQ(mFolder.read("result"), expected);

    const std::size_t longest = 32766 - mHelper.size() - std::string("\"\" \"exit\" \"3\" \"\"").size();
    EXPECT_EQ(run({"exit", "3", std::string(longest, 'x')}), 3);
    EXPECT_EQ(run({"exit", "3", std::string(longest + 1, 'x')}), -1);
    EXPECT_THAT(takeLines(), ElementsAre("0()Process not started, error 206 : " + mHelper));
    for (const std::string& bad : Texts{{"a\0b", 3}, "\xFF"}) EXPECT_EQ(run({"exit", "3", bad}), -1);
}

HANDLE started = nullptr;
BOOL WINAPI keepAndRefuse(HANDLE, HANDLE process) {
    const HANDLE self = ::GetCurrentProcess();
    ::DuplicateHandle(self, process, self, &started, 0, FALSE, DUPLICATE_SAME_ACCESS);
    return ::SetLastError(ERROR_ACCESS_DENIED), FALSE;
}
BOOL WINAPI startAndRefuseMemory(const wchar_t* application, wchar_t* line, SECURITY_ATTRIBUTES* process,
                                 SECURITY_ATTRIBUTES* thread, BOOL inherits, DWORD flags, void* environment,
                                 const wchar_t* directory, STARTUPINFOW* startup, PROCESS_INFORMATION* created) {
    const BOOL isStarted = ImportHook::behind(&startAndRefuseMemory)(application, line, process, thread, inherits,
                                                                     flags, environment, directory, startup, created);
    const HANDLE self = ::GetCurrentProcess();
    ::DuplicateHandle(self, created->hProcess, self, &started, 0, FALSE, DUPLICATE_SAME_ACCESS);
    AllocationCount::refuseAll(true);
    return isStarted;
}

TEST_F(Process, IsEndedWhenItsStartFails) {
    for (const bool isRefusedByJob : {true, false}) {
        const ImportHook jobHook("xoSystem.dll", isRefusedByJob ? "AssignProcessToJobObject" : "", &keepAndRefuse);
        const AllocationCount memory;
        const ImportHook startHook("xoSystem.dll", isRefusedByJob ? "" : "CreateProcessW", &startAndRefuseMemory);
        ASSERT_TRUE((isRefusedByJob ? jobHook : startHook).isInstalled() && memory.isCounting());
        mChild.setProcessTree(isRefusedByJob ? xoProcess::ProcessTreeOwned : xoProcess::ProcessTreeLoose);
        mChild.setOutput(xoProcess::Output::Text());
        bool isStarted = false, hasThrown = false;
        try {
            isStarted = mChild.startProcess(mHelper, {"sleep"});
        } catch (const std::bad_alloc&) {
            hasThrown = true;
        }
        AllocationCount::refuseAll(false);
        EXPECT_TRUE(!isStarted && hasThrown != isRefusedByJob);
        EXPECT_EQ(takeLines(), isRefusedByJob ? Texts{"0()Process not started, error 5 : " + mHelper} : Texts());
        const KernelHandle child(std::exchange(started, nullptr));
        EXPECT_EQ(::WaitForSingleObject(child.get(), 20000), WAIT_OBJECT_0);
        EXPECT_TRUE(mChild.hasFailedToStart() && mChild.getPid() == 0 && mChild.getState() == 2);
    }
}

TEST_F(Process, OfABatchFileGetsOnlyWhatCannotBecomeACommand) {
    const std::string name = "b \xC3\xA9.BAT";
    mFolder.write(name, "@echo [%1][%2][%3]> result\r\n@exit /b 5\r\n");
    const std::string batch = mFolder.path(name);
    EXPECT_EQ(runOther(batch, {"a b&exit 9", "", "^|>x\\"}), 5);
    EXPECT_EQ(mFolder.read("result"), "[\"a b&exit 9\"][\"\"][\"^|>x\\\"]\r\n");

    wchar_t system[MAX_PATH];
    const std::size_t used = ::GetSystemDirectoryW(system, MAX_PATH) + (mFolder.widePath() / L"").wstring().size() +
                             std::wstring(L"\"\\cmd.exe\" /c \"\"b e.BAT\" \"\"\"").size();
    EXPECT_EQ(runOther(batch, {std::string(8191 - used, 'x')}), 5);
    for (const std::string& bad : Texts{"\"&exit 9", "%PATH%", "a\nb", "a\rb", std::string(8192 - used, 'x')})
        EXPECT_EQ(runOther(batch, {bad}), -1) << bad;
    EXPECT_EQ(runOther(batch + ". ", {"\""}), -1) << "Windows ignores what follows the name";
    EXPECT_EQ(runOther(mFolder.path("missing.cmd"), {}), -1);

    const auto workingFolder = std::filesystem::current_path();
    std::filesystem::current_path(mFolder.widePath());
    ASSERT_TRUE(xoDirUtils::MkpathUtf8("other"));
    EXPECT_EQ(xoProcess::ExecUtf8(name, {}, "other", /*makeAbsolute=*/false), 5) << "not searched for there";
    std::filesystem::current_path(workingFolder);
}

TEST_F(Process, OfABatchFileRunsWhereItsPathIsKept) {
    const auto makeBatch = [&](const std::string& folder) {
        EXPECT_TRUE(xoDirUtils::MkpathUtf8(mFolder.path(folder)));
        mFolder.write(folder + "/b.bat", "@exit /b 5\r\n");
        return mFolder.path(folder) + "\\b.bat";
    };
    const std::size_t longest = 259 - mFolder.widePath().wstring().size() - std::string("\\\\b.bat").size();
    const std::pair<std::string, int> rows[] = {{"100%", 5},
                                                {"%xo none%%%", 5},
                                                {"%none%x%", 5},
                                                {"%pAth%", -1},
                                                {"a%x%b%cD%", -1},
                                                {"%=C%", -1},
                                                {"%xo set%", -1},
                                                {std::string(longest, 'x'), 5},
                                                {std::string(longest + 1, 'x'), -1}};
    ::SetEnvironmentVariableW(L"XO set", L"1");
    for (const auto& [folder, code] : rows) EXPECT_EQ(runOther(makeBatch(folder), {}), code) << folder;
    ::SetEnvironmentVariableW(L"XO set", nullptr);
    mChild.setEnvironmentUtf8({"=C:=C:\\", "XO none=1"});
    EXPECT_FALSE(mChild.startProcess(makeBatch("%xo none%%%")));
    EXPECT_TRUE(mChild.startProcess(makeBatch("%xo set%")) && mChild.waitForFinished() && mChild.exitCode() == 5);
}

TEST_F(Process, PassesACommandToTheInterpreterOnly) {
    const std::pair<Texts, int> rows[] = {{{"/D", "/c", "echo x>result&", "exit 3"}, 3},
                                          {{"/d/c", "exit 4"}, 4},
                                          {{"/cexit", "5"}, 5},
                                          {{"/K", "exit 6"}, 6},
                                          {{"/q", "/v:on/Cexit 7"}, 7},
                                          {{"/c", "exit 8"}, 8}};
    mFolder.write("exit 8.bat", "@exit /b 1\r\n");  // a command is no name of a file
    for (const auto& [arguments, code] : rows) EXPECT_EQ(runOther("C:/windows/system32/cmd", arguments), code) << code;
    EXPECT_EQ(mFolder.read("result"), "x\r\n");

    const std::string copy = mFolder.path("CMD.exe");
    ASSERT_TRUE(xoDirUtils::CopyFileUtf8(mHelper, copy));
    mChild.setEnvironmentUtf8({"PATH=" + mBinaries, "SystemRoot=C:\\windows"});
    ASSERT_TRUE(mChild.startProcess(copy, {"arguments", "/c", "a\"b"}) && mChild.waitForFinished());
    EXPECT_EQ(mFolder.read("result"), joined({"/c", "a\"b"})) << "a command follows switches only";
}

TEST_F(Process, SplitsACommandLineAsThePlatformDoes) {
    Texts words;
    const std::string line = " \"C:\\a b\\\" \"x\\\\\" y\\\\\\\"z \"\" \"\"q\"\"\t\xC3\xA9 \"open end";
    EXPECT_TRUE(xoProcess::SplitCommandLine(line.substr(1), words));
    EXPECT_THAT(words, ElementsAre("C:\\a b\\", "x\\", "y\\\"z", "", "q", "\xC3\xA9", "open end"));
    EXPECT_TRUE(xoProcess::SplitCommandLine(line, words) && words[0].empty()) << "a blank stands before the program";
    words = {"a b", ""};
    EXPECT_TRUE(xoProcess::SplitCommandLine(words[0], words));
    EXPECT_THAT(words, ElementsAre("a", "b"));
    for (const std::string& bad : Texts{"", " \t", {"a\0b", 3}, "a \xFF"}) {
        EXPECT_TRUE(!xoProcess::SplitCommandLine(bad, words) && words.empty());
        EXPECT_THAT(takeLines(), ElementsAre("3()Invalid command line : " + bad));
    }
}

}  // namespace xo::tests
