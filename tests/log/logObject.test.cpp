#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <limits>
#include <regex>
#include <stdexcept>
#include <thread>

#include "log/logFixture.h"
#include "log/settableClock.h"
#include "support/allocationCount.h"
#include "support/capturedOutput.h"
#include "support/importHook.h"
#include "support/temporaryFolder.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using xo::xoLog;
using xo::xoLogObject;
using xo::tests::SettableClock;

class LogObject : public xo::tests::LogTest {};

TEST_F(LogObject, FollowsTheFlagsOfItsType) {
    const auto writeOneOfEach = [] {
        for (const int type : {0, 1, 2, 3, 9}) xoLogObject(static_cast<xo::xoLogType>(type)) << "x";
    };
    writeOneOfEach();
    EXPECT_THAT(takeLines(), ElementsAre("1()x", "2()x", "3()x", "9()x")) << "DEBUG is off at first";
    for (const int type : {1, 2, 3, 9}) log().setLogTypeEnabled(static_cast<xo::xoLogType>(type), false);
    log().setLogTypeEnabled(xo::xoLogDebug, true);
    writeOneOfEach();
    EXPECT_THAT(takeLines(), ElementsAre("0()x", "9()x")) << "a type without a flag cannot be switched off";
}

TEST_F(LogObject, WritesOnceAndOnlyIfTextCameIn) {
    { const xoLogObject silent(xo::xoLogCritical, "net"); }
    EXPECT_THAT(takeLines(), IsEmpty());
    xoLogObject(xo::xoLogInfo) << "";
    EXPECT_THAT(takeLines(), ElementsAre("1()")) << "an empty text is a text";
    xoLogObject(xo::xoLogInfo, "") << static_cast<const char*>(nullptr) << nullptr;
    EXPECT_THAT(takeLines(), ElementsAre("1()[NullPtr][NullPtr]"));
    {
        xoLogObject first(xo::xoLogWarning, "net");
        first << "half ";
        xoLogObject second(std::move(first));
        second << "whole";
        first << "lost";
    }
    EXPECT_THAT(takeLines(), ElementsAre("2(net)half whole"));
}

TEST_F(LogObject, TakesTextAndNumbersInTheClassicLocale) {
    std::setlocale(LC_ALL, "German");
    const std::string text = "a\0b"s;
    char buffer[] = "buffer";
    xoLogObject(xo::xoLogInfo) << text << '|' << std::string_view("view") << '|' << buffer;
    xoLogObject(xo::xoLogInfo) << INT_MIN << ' ' << std::numeric_limits<std::int64_t>::min() << ' '
                               << std::numeric_limits<std::uint64_t>::max() << ' ' << static_cast<short>(-3) << ' '
                               << static_cast<unsigned char>(200);
    xoLogObject(xo::xoLogInfo) << 0.1 << ' ' << 1.5f << ' ' << 1234567.0 << ' ' << 1e-300L << ' ' << true << ' '
                               << false;
    std::setlocale(LC_ALL, "C");
    EXPECT_THAT(takeLines(),
                ElementsAre("1()a\0b|view|buffer"s, "1()-2147483648 -9223372036854775808 18446744073709551615 -3 200",
                            "1()0.1 1.5 1.23457e+06 1e-300 true false"));

    xoLogObject(xo::xoLogInfo) << std::string(1 << 20, 'x') << "end";
    EXPECT_EQ(takeLines().at(0).size(), 3u + (1 << 20) + 3);
}

TEST_F(LogObject, CostsNoAllocationWhenNotWanted) {
    log().setLogTypeEnabled(xo::xoLogInfo, false);
    log().setLogTypeEnabled(xo::xoLogDebug, true);
    constexpr char kQualifier[] = "a qualifier that is too long to be kept without an allocation";
    log().setDebugSubTypeEnabled("a,qualifier,that,is", false);
    log().isDebugSubTypeEnabled("a");  // writes the pending notice
    const std::string text(100, 'x');

    const xo::tests::AllocationCount allocations;
    ASSERT_TRUE(allocations.isCounting());
    for (int i = 0; i < 100; ++i) {
        xoLogObject(xo::xoLogInfo, kQualifier) << text << i << 0.5;
        xoLogObject(xo::xoLogDebug, "qualifier") << text << i << 0.5;
    }
    EXPECT_EQ(allocations.count(), 0);
    xoLogObject(xo::xoLogWarning, kQualifier) << text;
    EXPECT_GT(allocations.count(), 0) << "the counter does not count";
}

TEST_F(LogObject, CostsNoAllocationWithinAnotherLine) {
    static std::string last;
    log().installCustomHandler(
        [](const std::string& message, xo::xoLogType, const std::string&, void*) { last = message; }, nullptr);
    xoLogObject outer(xo::xoLogInfo);
    outer << "outer";
    const xo::tests::AllocationCount allocations;
    ASSERT_TRUE(allocations.isCounting());
    xoLogObject(xo::xoLogInfo) << "inner";
    EXPECT_EQ(allocations.count(), 0);
    EXPECT_EQ(last, "inner");
}

TEST_F(LogObject, DropsWhatThereIsNoMemoryFor) {
    static bool isCut = false;
    log().installCustomHandler(
        [](const std::string& message, xo::xoLogType, const std::string&, void*) { isCut = message == "short "; },
        nullptr);
    constexpr char kQualifier[] = "a qualifier that is too long to be kept without an allocation";
    static constexpr char kLong[9000] = "";
    log().setLogTypeEnabled(xo::xoLogDebug, true);
    log().setDebugSubTypeEnabled("other", false);
    log().setEchoToConsole(true);  // for which a line is composed with its prefix
    const xo::tests::AllocationCount allocations;
    xo::tests::AllocationCount::refuseAll(true);
    EXPECT_NO_THROW(xoLogObject(xo::xoLogDebug, "net") << "behind the notice of the blacklist, which is dropped");
    log().setEchoToConsole(false);
    EXPECT_NO_THROW(xoLogObject(xo::xoLogInfo, kQualifier) << "dropped");
    EXPECT_NO_THROW(xoLogObject(xo::xoLogInfo) << "short " << std::string_view(kLong, sizeof kLong));
    xo::tests::AllocationCount::refuseAll(false);
    EXPECT_TRUE(isCut);
    const int before = allocations.count();
    xoLogObject(xo::xoLogInfo) << "again";
    EXPECT_EQ(allocations.count(), before) << "the place of the dropped line is free again";
}

const std::string kTime = R"([A-Z][a-z]{2} [A-Z][a-z]{2} \d\d \d\d:\d\d:\d\d \d{4} )";

TEST_F(LogObject, WithoutALogGoesToStandardOutput) {
    xoLog::destroyInstance();
    const xo::tests::CapturedOutput output;
    xoLogObject(xo::xoLogDebug, "net") << "no filter here";
    EXPECT_TRUE(std::regex_match(output.text(), std::regex("DEBUG\\(net\\) : " + kTime + "no filter here\n")))
        << output.text();
}

class Log : public xo::tests::LogTest {};

TEST_F(Log, EchoesLinesWithTheirPrefix) {
    const xo::tests::CapturedOutput output;
    xoLogObject(xo::xoLogInfo) << "unseen";
    log().setEchoToConsole(true);
    std::string pattern;
    const char* const names[] = {"DEBUG", "INFO", "WARNING", "CRITICAL", "UNKNOWN", "UNKNOWN"};
    for (int type = 0; type < 6; ++type) {
        log().Write("\xC3\xA9t\xC3\xA9", static_cast<xo::xoLogType>(type), type == 2 ? "net" : "");
        pattern += names[type] + std::string(type == 2 ? "\\(net\\)" : "") + " : " + kTime + "\xC3\xA9t\xC3\xA9\n";
    }
    EXPECT_TRUE(std::regex_match(output.text(), std::regex(pattern))) << output.text();
}

TEST_F(Log, ShowsTheLocalTimeOfTheCall) {
    const SettableClock clock;
    ASSERT_TRUE(clock.isInstalled());
    ::_putenv("TZ=XOT-3");
    ::_tzset();
    const struct {
        std::int64_t second;
        const char* text;
    } rows[] = {
        {1583233509, "Tue Mar 03 14:05:09 2020"},
        {1583233510, "Tue Mar 03 14:05:10 2020"},
        {1577836799, "Wed Jan 01 02:59:59 2020"},  // the clock was set back
        {0, "Thu Jan 01 03:00:00 1970"},
        {-1, "Thu Jan 01 03:00:00 1970"},  // times that the C runtime does not convert
        {910692730084, "Thu Jan 01 02:59:59 3001"},
        {32535215999, "Thu Jan 01 02:59:59 3001"},
    };
    log().setEchoToConsole(true);
    // The handler runs before the line is put together; its time must not be the line's.
    log().installCustomHandler(
        [](const std::string&, xo::xoLogType, const std::string&, void*) { SettableClock::second = 1600000000; },
        nullptr);
    for (const auto& row : rows) {
        const xo::tests::CapturedOutput output;
        SettableClock::second = row.second;
        log().Write("x", xo::xoLogInfo, {});
        EXPECT_EQ(output.text(), "INFO : " + std::string(row.text) + " x\n");
        SettableClock::second = row.second;
        EXPECT_EQ(xoLog::GetTime(), row.text);
    }
}

// A host's buffer may log, and may throw.
struct LoggingBuffer : std::stringbuf {
    std::streamsize xsputn(const char*, std::streamsize) override {
        if (std::exchange(isFirst, false)) xoLogObject(xo::xoLogInfo) << "from the buffer";
        throw std::runtime_error("buffer");
    }
    bool isFirst = true;
};

TEST_F(Log, SurvivesTheHostsOutput) {
    const xo::tests::TemporaryFolder folder;
    log().installFileHandlerExUtf8(folder.path("app.log"), xo::xoLogFileEcho, -1, 0);
    LoggingBuffer buffer;
    std::streambuf* const before = std::cout.rdbuf(&buffer);
    EXPECT_NO_THROW(log().Write("line", xo::xoLogInfo, {}));
    std::cout.rdbuf(before);
    EXPECT_TRUE(std::regex_match(folder.read("app.log"), std::regex("\xEF\xBB\xBFINFO : " + kTime +
                                                                    "from the buffer\r\nINFO : " + kTime + "line\r\n")))
        << folder.read("app.log");
}

std::vector<std::wstring> consoleTexts;
BOOL WINAPI getConsoleMode(HANDLE, LPDWORD) { return TRUE; }
BOOL WINAPI writeConsole(HANDLE, const void* text, DWORD size, LPDWORD written, LPVOID) {
    consoleTexts.emplace_back(static_cast<const wchar_t*>(text), size);
    *written = size;
    return TRUE;
}
struct CountedBuffer : std::stringbuf {
    int sync() override { return flushed = str(), 0; }
    std::string flushed;
};

TEST_F(Log, WritesWideTextToAConsoleWindowAlone) {
    const xo::tests::ImportHook mode("xoSystem.dll", "GetConsoleMode", &getConsoleMode);
    const xo::tests::ImportHook write("xoSystem.dll", "WriteConsoleW", &writeConsole);
    ASSERT_TRUE(mode.isInstalled() && write.isInstalled());
    constexpr std::size_t kMostPerCall = 8192;
    constexpr std::size_t kPrefix = 32;
    log().setEchoToConsole(true);
    log().Write(std::string(kMostPerCall - kPrefix - 1, 'x') + "\xF0\x9F\x98\x80", xo::xoLogInfo, {});
    ASSERT_EQ(consoleTexts.size(), 2u);
    EXPECT_EQ(consoleTexts[0].size(), kMostPerCall - 1);
    EXPECT_EQ(consoleTexts[1], L"\U0001F600\r\n") << "one character stays whole";
    log().Write("\nfeed\n\nboth\r\nreturn\rlast", xo::xoLogInfo, {});
    ASSERT_EQ(consoleTexts.size(), 3u);
    EXPECT_EQ(consoleTexts[2].substr(kPrefix), L"\r\nfeed\r\n\r\nboth\r\nreturn\rlast\r\n");

    CountedBuffer buffer;
    std::streambuf* const before = std::cout.rdbuf(&buffer);
    log().Write("redirected", xo::xoLogInfo, {});
    std::cout.rdbuf(before);
    EXPECT_EQ(consoleTexts.size(), 3u);
    EXPECT_NE(buffer.flushed.find("redirected\n"), std::string::npos);
}

TEST_F(Log, BlacklistsQualifiersOfDebugLinesAlone) {
    log().setLogTypeEnabled(xo::xoLogDebug, true);
    log().setDebugSubTypeEnabled("a, b;c|d\\e", false);
    for (const char* qualifier : {"a", "b", "c", "d", "e", "A", "f", ""}) xoLogObject(xo::xoLogDebug, qualifier) << "x";
    xoLogObject(xo::xoLogDebug) << "x";
    xoLogObject(xo::xoLogInfo, "a") << "x";
    EXPECT_THAT(takeLines(), ElementsAre("0()xoDebug qualifier(s) blacklist : 'a' 'b' 'c' 'd' 'e'", "0(A)x", "0(f)x",
                                         "0()x", "0()x", "1(a)x"));

    log().setDebugSubTypeEnabled("b / \tc\t,,d e", true);
    log().setDebugSubTypeEnabled(nullptr, false);
    log().setLogTypeEnabled(xo::xoLogDebug, false);
    EXPECT_TRUE(log().isDebugSubTypeEnabled(nullptr)) << "and no notice yet";
    EXPECT_THAT(takeLines(), IsEmpty());
    EXPECT_TRUE(log().isDebugSubTypeEnabled("b"));
    EXPECT_FALSE(log().isDebugSubTypeEnabled("a"));
    EXPECT_THAT(takeLines(), ElementsAre("0()xoDebug qualifier(s) blacklist : 'a'")) << "once, though DEBUG is off";
}

TEST_F(Log, SurvivesItsHandler) {
    log().installCustomHandler(
        [](const std::string&, xo::xoLogType type, const std::string&, void*) {
            if (type == xo::xoLogInfo) xoLogObject(xo::xoLogWarning) << "from the handler";
            log().makeThreadSafe();  // during a Write that has not locked
            throw std::runtime_error("handler");
        },
        nullptr);
    log().setEchoToConsole(true);
    const xo::tests::CapturedOutput output;
    xoLogObject(xo::xoLogInfo) << "line";
    log().installCustomHandler(nullptr, nullptr);
    EXPECT_NE(output.text().find("from the handler\n"), std::string::npos);
    EXPECT_NE(output.text().find("line\n"), std::string::npos) << "the other places still get the line";
    std::thread([&] { log().Write("lock is free", xo::xoLogInfo, {}); }).join();
    EXPECT_NE(output.text().find("lock is free\n"), std::string::npos);
}

}  // namespace
