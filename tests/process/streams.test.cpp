#include <atomic>
#include <functional>
#include <stdexcept>
#include <thread>

#include "platform/handle.h"
#include "process/processFixture.h"
#include "stream/memoryDevice.h"
#include "support/allocationCount.h"
#include "support/importHook.h"
#include "support/openHandles.h"
#include "xoSystem/xoNamedPipe.h"

namespace xo::tests {

using platform::KernelHandle;
using testing::ElementsAre;
using testing::HasSubstr;
using Input = xoProcess::Input;
using Output = xoProcess::Output;

constexpr std::size_t kMegabyte = 1 << 20;

std::string pattern(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>('a' + i % 26);
    return bytes;
}

class Streams : public Process {
protected:
    Streams() { mHelper = mBinaries + "\\streamChild.exe"; }

    bool start(const Texts& arguments) { return mChild.startProcess(mHelper, arguments); }
    bool complete(const Texts& arguments) { return start(arguments) && mChild.waitForFinished(60000); }
    xoProcess::RunResult runHelper(const Texts& arguments, xoProcess::RunOptions options = {}) const {
        options.workingDirectory = mFolder.path();
        return xoProcess::RunUtf8(mHelper, arguments, options);
    }
    // The name of an event of the test's own, and whether a process holds it.
    std::string eventName() const { return "xo-streams-" + std::to_string(::GetCurrentProcessId()); }
    bool isHeld() const {
        return static_cast<bool>(KernelHandle(::OpenEventA(SYNCHRONIZE, FALSE, eventName().c_str())));
    }
    // The console host that Wine gives a child keeps the child's handles for a moment longer than the child.
    static bool comesFree(const std::string& path) {
        for (int i = 0; i < 4000; ++i, ::SleepEx(5, FALSE)) {
            const platform::FileHandle file(::CreateFileW(std::filesystem::u8path("\\\\?\\" + path).c_str(),
                                                          GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
            if (file || ::GetLastError() != ERROR_SHARING_VIOLATION) return true;
        }
        return false;
    }
    // A clock that passes the time limits of the library once the event is there, and not before.
    static ULONGLONG WINAPI clockOfEvent() {
        static bool hasBeenHeld = false;
        hasBeenHeld = hasBeenHeld || KernelHandle(::OpenEventA(SYNCHRONIZE, FALSE, msEventName.c_str()));
        return hasBeenHeld ? 1000000 : 0;
    }
    static inline std::string msEventName;
    bool becomesHeld(bool held) const {
        for (int i = 0; i < 4000 && isHeld() != held; ++i) ::SleepEx(5, FALSE);
        return isHeld() == held;
    }
};

TEST_F(Streams, KeepEachOutputWholeWhateverIsWrittenFirst) {
    const std::pair<std::size_t, std::size_t> rows[] = {
        {0, 0}, {65535, 1}, {65536, 65537}, {65537, 0}, {5, 10 * kMegabyte}};
    for (const auto& [size, errorSize] : rows) {
        const auto result = runHelper({"e" + std::to_string(errorSize), "o" + std::to_string(size), "exit=3"});
        EXPECT_TRUE(result.output == pattern(size) && result.errorOutput == pattern(errorSize)) << size;
        EXPECT_TRUE(result.outcome == result.Finished && result.exitCode == 3 && !result.isSuccess());
        EXPECT_EQ(result.message, "process return an error");
    }
    xoProcess::RunOptions options;
    options.maxOutputBytes = 100;
    const auto cut = runHelper({"o100", "e101"}, options);
    EXPECT_TRUE(cut.isSuccess() && cut.outputCut && cut.errorOutput == pattern(100) && cut.message.empty());
    options.mergeError = true;
    const auto merged = runHelper({"o3", "e2", "o1"}, options);
    EXPECT_TRUE(merged.output == "abcaba" && merged.errorOutput.empty() && !merged.outputCut);
}

TEST_F(Streams, GiveAllInputToAChildThatReadsIt) {
    xoProcess::RunOptions options;
    EXPECT_EQ(runHelper({"count"}, options).output, "0") << "the null device";
    options.input = pattern(20 * kMegabyte);
    EXPECT_EQ(runHelper({"count"}, options).output, std::to_string(20 * kMegabyte));
    const auto partly = runHelper({"count=10485760"}, options);
    EXPECT_TRUE(partly.isSuccess() && partly.message.empty()) << "a child may read as little as it wants";
    const auto echoed = runHelper({"echo"}, options);
    EXPECT_TRUE(echoed.output == options.input) << "both directions are full";

    for (const std::size_t size : {std::size_t{0}, std::size_t{65536}, std::size_t{65537}}) {
        MemoryDevice source(pattern(size)), target, full;
        full.capacity = 10;
        mChild.setInput(Input::Device(&source));
        mChild.setOutput(Output::Device(&target));
        mChild.setErrorOutput(Output::Device(&full));
        ASSERT_TRUE(complete({"echo", "e70000"}));
        EXPECT_TRUE(target.bytes == source.bytes && mChild.wasOutputCut() && full.bytes.empty()) << size;
    }
}

TEST_F(Streams, UseFiles) {
    const std::string folder = mFolder.path("\xC3\xA9 " + std::string(100, 'x')) + "\\" + std::string(120, 'y');
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(folder));
    const std::string in = folder + "\\" + std::string(80, 'i'), out = folder + "\\" + std::string(80, 'o');
    mChild.setInput(Input::FileUtf8(mFolder.path("missing")));
    EXPECT_FALSE(start({"echo"}));
    EXPECT_THAT(takeLines(), ElementsAre(HasSubstr("0()xoProcess cannot open \"" + mFolder.path("missing") + "\": "),
                                         HasSubstr("0()Process not started, error 2 : ")));
    for (const bool append : {false, false, true}) {
        mChild.setInput(Input::None());
        mChild.setOutput(Output::FileUtf8(in, append));
        ASSERT_TRUE(comesFree(in) && complete({"o40"}));
    }
    mChild.setInput(Input::FileUtf8(in));
    mChild.setOutput(Output::FileUtf8(out, true));
    mChild.setErrorOutput(Output::FileUtf8(out, true));
    ASSERT_TRUE(comesFree(in) && complete({"o2", "echo", "e3"}));
    mChild.setInput(Input::FileUtf8(out));
    mChild.setOutput(Output::Text());
    mChild.setErrorOutput(Output::Null());
    ASSERT_TRUE(comesFree(out) && complete({"echo", "e9"}));
    EXPECT_EQ(mChild.getOutputText(), "ab" + pattern(40) + pattern(40) + "abc");
    EXPECT_EQ(mChild.getErrorText(), "");

    const Output file = Output::FileUtf8(mFolder.path("twice"));
    const std::pair<Output, Output> refused[] = {{file, file},
                                                 {Output::Merged(), Output::None()},
                                                 {Output::Lines(nullptr), Output::None()},
                                                 {Output::None(), Output::Device(nullptr)},
                                                 {Output::FileUtf8(mFolder.path() + "\\\xFF"), Output::None()}};
    for (const auto& [output, errorOutput] : refused) {
        mChild.setOutput(output);
        mChild.setErrorOutput(errorOutput);
        EXPECT_FALSE(start({}) || !mChild.hasFailedToStart());
    }
    EXPECT_FALSE(xoDirUtils::FileExistsUtf8(mFolder.path("\xEF\xBF\xBD"))) << "what broken UTF-8 becomes";
    mChild.clearProcess();
    EXPECT_TRUE(complete({"o1"}) && mChild.getOutputText().empty()) << "nothing is redirected any more";
}

TEST_F(Streams, HandLinesOut) {
    const std::string longLine(kMegabyte, 'x');
    const std::pair<std::string, Texts> rows[] = {
        {"", {}},
        {"a\r\nb\n\n\r\rc\n\r\nd", {"a", "b", "", "\r\rc", "", "d"}},  // the helper writes it byte by byte
        {"\r", {"\r"}},
    };
    Texts lines;
    mChild.setOutput(Output::Lines([&](const std::string& line) { lines.push_back(line); }));
    for (const auto& [text, expected] : rows) {
        lines.clear();
        mFolder.write("lines", text);
        ASSERT_TRUE(complete({"lines"}));
        EXPECT_EQ(lines, expected) << text;
    }
    const std::pair<std::string, Texts> longRows[] = {
        {longLine + "\r\n", {longLine}},
        {longLine + "\r", {longLine, "\r"}},
        {longLine + "\rx\n", {longLine, "\rx"}},
        {longLine + longLine + "yz\r\n\n", {longLine, longLine, "yz", ""}}};
    for (const auto& [text, expected] : longRows) {
        lines.clear();
        mChild.setInput(Input::Text(text));
        ASSERT_TRUE(complete({"echo"}));
        EXPECT_TRUE(lines == expected) << lines.size();
    }
}

TEST_F(Streams, GoOnBehindAHandlerThatThrows) {
    Texts lines;
    mChild.setInput(Input::Text("a\nb\nc\nd"));
    mChild.setOutput(Output::Lines([&](const std::string& line) {
        lines.push_back(line);
        if (line != "c") throw std::runtime_error(line);
        mChild.killProcess();
    }));
    ASSERT_TRUE(start({"echo", "sleep"}));
    for (const char* const expected : {"a", "b"}) {
        try {
            mChild.waitForFinished(60000);
            ADD_FAILURE() << "no exception";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), expected);
        }
    }
    EXPECT_THROW(mChild.waitForFinished(60000), std::runtime_error) << "of the last line, which has no end";
    EXPECT_TRUE(mChild.waitForFinished(60000));
    EXPECT_THAT(lines, ElementsAre("a", "b", "c", "d"));
    EXPECT_EQ(mChild.exitCode(), 65535);
}

TEST_F(Streams, AreMovedByAnyLook) {
    mChild.setOutput(Output::Text());
    ASSERT_TRUE(start({"o1048576"}));
    for (int i = 0; i < 10000 && mChild.getState() == xoProcess::StateRunning; ++i) ::SleepEx(1, FALSE);
    EXPECT_TRUE(mChild.getState() == xoProcess::StateFinished && mChild.getOutputText() == pattern(kMegabyte));
}

TEST_F(Streams, EndWithTheChildAlthoughItsOwnChildHoldsThem) {
    mChild.setOutput(Output::Text());
    mChild.setProcessTree(xoProcess::ProcessTreeOwned);
    ASSERT_TRUE(complete({"spawn=" + eventName(), "o60000"}));
    std::string text = mChild.getOutputText();
    if (text.rfind("held", 0) == 0) text.erase(0, 4);  // what it has written meanwhile may come along
    EXPECT_TRUE(text == pattern(60000) || text == pattern(60000) + "held") << text.size();
    EXPECT_TRUE(becomesHeld(true)) << "it goes on";
    mChild.killProcess();
    EXPECT_TRUE(becomesHeld(false)) << "it is ended although the child itself has gone before";
}

TEST_F(Streams, TakeTheWholeTreeAlong) {
    mFolder.write("b.bat", "@\"" + mHelper + "\" hold=\"" + eventName() + "\"\r\n");
    xoProcess::RunOptions options;
    options.timeoutMs = 3000;
    {
        msEventName = eventName();
        const ImportHook hook("xoSystem.dll", "GetTickCount64", &clockOfEvent);
        ASSERT_TRUE(hook.isInstalled());
        const auto late = xoProcess::RunUtf8(mFolder.path("b.bat"), {}, options);
        EXPECT_TRUE(late.outcome == late.TimedOut && late.message == "timeout" && late.exitCode == 65535);
        EXPECT_EQ(late.output, "held");
    }
    EXPECT_TRUE(becomesHeld(false));

    for (const bool isTied : {true, false}) {
        {
            xoProcess child;
            child.setProcessTree(isTied ? xoProcess::ProcessTreeTied : xoProcess::ProcessTreeOwned);
            ASSERT_TRUE(child.startProcess(mHelper, {"hold=" + eventName()}) && becomesHeld(true));
            if (!isTied) child.killProcess();
        }
        EXPECT_TRUE(becomesHeld(false)) << "tied: " << isTied;
    }
}

TEST_F(Streams, OfATiedTreeDoNotHoldUpItsEnd) {
    using Object = std::unique_ptr<xoProcess>;
    const std::pair<std::string, std::function<void(Object&)>> rows[] = {
        {"hold=", [](Object& child) { child.reset(); }},
        {"hold=", [](Object& child) { child->clearProcess(); }},
        {"spawn=", [&](Object& child) { EXPECT_TRUE(child->waitForFinished() && child->startProcess(mHelper)); }}};
    for (const auto& [task, end] : rows) {
        auto child = std::make_unique<xoProcess>();
        child->setProcessTree(xoProcess::ProcessTreeTied);
        child->setInput(Input::Pipe());
        ASSERT_TRUE(child->startProcess(mHelper, {task + eventName()}) && becomesHeld(true));
        xoNamedPipe& in = *child->getInputPipe();
        const std::string most = pattern(60000);  // of the pipe, and of the buffer
        EXPECT_TRUE(in.writeBytes(most.data(), most.size()) && in.flush() && in.writeBytes(most.data(), most.size()));
        end(child);
        EXPECT_TRUE(becomesHeld(false)) << task;
    }
}

int readsBeforeFailure = 0;
BOOL WINAPI failToRead(HANDLE pipe, void* buffer, DWORD size, DWORD* got, OVERLAPPED* overlapped) {
    if (readsBeforeFailure-- == 0) return ::SetLastError(ERROR_NO_SYSTEM_RESOURCES), FALSE;
    return ImportHook::behind(&failToRead)(pipe, buffer, size, got, overlapped);
}
bool refusesOnce = false;
void* refuseLargeOnce(std::size_t size) {
    if (size > 200000 && std::exchange(refusesOnce, false)) return nullptr;
    return ImportHook::behind(&refuseLargeOnce)(size);
}

TEST_F(Streams, AreCutWithoutAHole) {
    const std::string all = pattern(kMegabyte);
    xoProcess::RunOptions options;
    options.mergeError = true;  // so that there is one output
    for (const bool isRead : {false, true}) {
        const ImportHook readHook("xoSystem.dll", isRead ? "" : "ReadFile", &failToRead);
        const ImportHook memoryHook(kAllocator, isRead ? "malloc" : "", &refuseLargeOnce);
        ASSERT_TRUE((isRead ? memoryHook : readHook).isInstalled());
        readsBeforeFailure = 1;
        refusesOnce = true;
        const auto result = runHelper({"o1048576"}, options);
        EXPECT_TRUE(result.outputCut && result.output.size() < all.size()) << result.output.size();
        EXPECT_EQ(all.compare(0, result.output.size(), result.output), 0);
    }
}

HANDLE givenInput = nullptr;
BOOL WINAPI noteInput(const wchar_t* application, wchar_t* line, SECURITY_ATTRIBUTES* process,
                      SECURITY_ATTRIBUTES* thread, BOOL inherits, DWORD flags, void* environment,
                      const wchar_t* directory, STARTUPINFOW* startup, PROCESS_INFORMATION* created) {
    givenInput = startup->hStdInput;
    return ImportHook::behind(&noteInput)(application, line, process, thread, inherits, flags, environment, directory,
                                          startup, created);
}

TEST_F(Streams, InheritNothingWhereThereIsNoHandle) {
    const ImportHook hook("xoSystem.dll", "CreateProcessW", &noteInput);
    const HANDLE own = ::GetStdHandle(STD_INPUT_HANDLE);
    mChild.setInput(Input::Inherit());
    mChild.setOutput(Output::Text());
    for (const HANDLE none : {HANDLE{}, INVALID_HANDLE_VALUE}) {
        givenInput = own;
        ::SetStdHandle(STD_INPUT_HANDLE, none);
        EXPECT_TRUE(complete({"o1"}) && mChild.getOutputText() == "a" && givenInput == nullptr);
        ::SetStdHandle(STD_INPUT_HANDLE, own);
    }
}

TEST_F(Streams, ServeAConversation) {
    mChild.setInput(Input::Pipe());
    mChild.setOutput(Output::Pipe());
    ASSERT_TRUE(start({"echo"}) && !mChild.getErrorPipe());
    xoNamedPipe& in = *mChild.getInputPipe();
    xoNamedPipe& out = *mChild.getOutputPipe();
    for (const std::string& question : Texts{"one", "two"}) {
        char answer[4] = "";
        EXPECT_TRUE(in.writeBytes(question.data(), 3) == 3 && in.flush() && out.readBytes(answer, 3) == 3);
        EXPECT_EQ(answer, question);
    }
    out.setTimeLimits(30, 30);
    char byte = 0;
    EXPECT_TRUE(out.readBytes(&byte, 1) == 0 && out.getReadResult() == xoNamedPipe::ResultTimeout && !out.hasError());
    EXPECT_TRUE(in.readBytes(&byte, 1) == 0 && in.hasError() && out.writeBytes("x", 1) == 0 && out.hasError());
    EXPECT_THAT(takeLines(), ElementsAre("3()xoNamedPipe cannot read", "3()xoNamedPipe cannot write"));
    in.close();
    EXPECT_TRUE(mChild.waitForFinished(60000));
    out.setTimeLimits(60000, 60000);
    EXPECT_TRUE(out.readBytes(&byte, 1) == 0 && out.atEnd());
}

TEST_F(Streams, PassOnlyTheHandlesThatAreListed) {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    const KernelHandle event(::CreateEventW(&inheritable, TRUE, FALSE, nullptr));
    runHelper({"set=" + std::to_string(reinterpret_cast<std::uintptr_t>(event.get()))});
    EXPECT_EQ(::WaitForSingleObject(event.get(), 0), WAIT_TIMEOUT);

    std::atomic<int> whole{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 16; ++i)
        threads.emplace_back([&] { whole += runHelper({"o200000", "e200000"}).output == pattern(200000); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(whole, 16) << "an end of a pipe in another child would keep it open";

    const int before = openHandles();
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(runHelper({"o1"}).isSuccess());
        EXPECT_EQ(xoProcess::RunUtf8(mFolder.path()).outcome, xoProcess::RunResult::NotStarted);
    }
    EXPECT_EQ(openHandles(), before);
}

TEST_F(Streams, AreOfAProgramThatPathNames) {
    const std::string first = mFolder.path("first"), second = mFolder.path("se;cond");
    for (const std::string& folder : {first, second}) ASSERT_TRUE(xoDirUtils::MkpathUtf8(folder));
    mFolder.write("first/tool.cmd", "");
    mFolder.write("se;cond/tool.exe", "");
    mFolder.write("se;cond/tool.1.exe", "");
    mFolder.write("first/bare", "");
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(first + "/only.exe"));  // a folder is no program
    const auto set = [](const wchar_t* name, const std::string& text) {
        ::SetEnvironmentVariableW(name, std::filesystem::u8path(text).wstring().c_str());
    };
    set(L"PATH", ";.;relative;" + first + ";\"" + second + "\"");
    set(L"PATHEXT", ".EXE;;.CMD;");
    const std::pair<std::string, std::string> rows[] = {{"tool", first + "\\tool.cmd"},
                                                        {"TOOL.EXE", second + "\\tool.exe"},
                                                        {"tool.1", second + "\\tool.1.exe"},
                                                        {"only", ""},
                                                        {"missing", ""},
                                                        {"bare", ""},
                                                        {"first\\tool", ""},
                                                        {"", ""},
                                                        {{"tool\0", 5}, ""}};
    for (const auto& [name, path] : rows) {
        const std::string found = xoProcess::FindProgramUtf8(name);
        EXPECT_STRCASEEQ(found.c_str(), path.c_str()) << name;
    }
    const std::string missing = mFolder.path("missing.exe");
    EXPECT_EQ(xoProcess::RunUtf8(missing).message, "Fail to start process : " + missing);
    EXPECT_EQ(xoProcess::RunUtf8("").message, "Fail to start process");
}

UINT oemPage = CP_OEMCP;
int WINAPI convertFromPage(UINT page, DWORD flags, const char* text, int size, wchar_t* wide, int capacity) {
    return ImportHook::behind(&convertFromPage)(page == CP_OEMCP ? oemPage : page, flags, text, size, wide, capacity);
}
BOOL WINAPI describePage(UINT page, CPINFO* info) {
    return ImportHook::behind(&describePage)(page == CP_OEMCP ? oemPage : page, info);
}

TEST(ProcessOutput, IsUtf8OrOfTheOemCodePage) {
    const ImportHook convertHook("xoSystem.dll", "MultiByteToWideChar", &convertFromPage);
    const ImportHook describeHook("xoSystem.dll", "GetCPInfo", &describePage);
    ASSERT_TRUE(convertHook.isInstalled() && describeHook.isInstalled());
    const std::string replaced = "\xEF\xBF\xBD", accent = "\xC3\xA9";
    const std::string longLine(1500000, 'x');
    std::string kana = "x", kanaUtf8 = "x";
    for (int i = 0; i < 1000000; ++i) {
        kana += "\x82\xA0";
        kanaUtf8 += "\xE3\x81\x82";
    }
    const struct {
        UINT page;
        std::string bytes, text;
    } rows[] = {
        {437, accent, accent},
        {437, "\x82", accent},
        {437, accent + "\xC3", accent + replaced},  // cut inside the last character
        {437, accent + "\xE0", accent + replaced},
        {437, accent + "\xED\x9F", accent + replaced},
        {437, accent + "\xF0\x9F\x98", accent + replaced},
        {437, accent + "\xF4", accent + replaced},
        {437, "a\x82", "a" + accent},
        {437, accent + "\x82", "\xE2\x94\x9C\xE2\x8C\x90" + accent},
        {437, "a\xC3", "a\xE2\x94\x9C"},
        // Lines longer than a piece of the conversion.
        {437, "a\n" + longLine + "\x82\n\x82", "a\n" + longLine + accent + "\n" + accent},
        {932, kana, kanaUtf8},
    };
    for (const auto& row : rows) {
        oemPage = row.page;
        EXPECT_TRUE(xoProcess::OutputToUtf8(row.bytes) == row.text) << row.page << " " << row.bytes.substr(0, 9);
    }
    oemPage = CP_OEMCP;
}

}  // namespace xo::tests
