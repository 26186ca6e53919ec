#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "log/logFixture.h"
#include "platform/handle.h"
#include "support/capturedOutput.h"
#include "support/temporaryFolder.h"
#include "xoSystem/xoInit.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using xo::xoLogObject;

const std::string kMark = "\xEF\xBB\xBF";

class LogFile : public xo::tests::LogTest {
protected:
    std::string path(const std::string& name = "app.log") const { return mFolder.path(name); }

    static void writeLine(const std::string& text) { log().Write(text, xo::xoLogInfo, {}); }

    // The file's texts, without prefixes, as one string "first|second|".
    std::string texts(const std::string& name = "app.log") const {
        static const std::regex kPrefix("INFO : .{24} ");
        static const std::regex kEnd("\r\n");
        return std::regex_replace(std::regex_replace(mFolder.read(name), kPrefix, ""), kEnd, "|");
    }

    xo::tests::TemporaryFolder mFolder;
};

TEST_F(LogFile, StartsWithAMarkAndIsAppendedTo) {
    log().installFileHandlerUtf8(path());
    EXPECT_EQ(log().getCurrentLogFileNameUtf8(), path());
    writeLine("\xE6\x97\xA5");
    EXPECT_TRUE(std::regex_match(mFolder.read("app.log"), std::regex(kMark + "INFO : .{24} \xE6\x97\xA5\r\n")));
    log().installFileHandlerUtf8(path());
    writeLine("again");
    log().removeFileHandler();
    EXPECT_EQ(log().getCurrentLogFileNameUtf8(), "");
    writeLine("nowhere");
    EXPECT_EQ(texts(), kMark + "\xE6\x97\xA5|again|");

    log().installFileHandlerUtf8(path());
    std::filesystem::remove(mFolder.widePath() / L"app.log");
    writeLine("the file was deleted meanwhile");
    EXPECT_EQ(texts(), "the file was deleted meanwhile|");
}

TEST_F(LogFile, InstallsAsItsFlagsSay) {
    const struct {
        int flags;
        const char* file;
        const char* backup;
        const char* console;
    } rows[] = {
        {0, "old|new|", "older|", ""},
        {xo::xoLogFileTruncate, "\xEF\xBB\xBFnew|", "older|", ""},
        {xo::xoLogFileRotate, "old|new|", "older|", ""},  // rotation needs both bits
        {xo::xoLogFileTruncate | xo::xoLogFileRotate, "\xEF\xBB\xBFnew|", "old|", ""},
        {xo::xoLogFileEcho, "old|new|", "older|", "new\n"},
    };
    for (const auto& row : rows) {
        mFolder.write("app.log", "old\r\n");
        mFolder.write("app.log_0.back", "older\r\n");
        const xo::tests::CapturedOutput output;
        log().setEchoToConsole(true);
        log().installFileHandlerExUtf8(path(), row.flags, -1, 1);
        writeLine("new");
        EXPECT_EQ(texts(), row.file) << row.flags;
        EXPECT_EQ(texts("app.log_0.back"), row.backup) << row.flags;
        EXPECT_EQ(std::regex_replace(output.text(), std::regex("INFO : .{24} "), ""), row.console) << row.flags;
        log().removeFileHandler();
    }
}

TEST_F(LogFile, RotatesWhatIsTooLargeBeforeItWrites) {
    const std::string full(100, 'x');
    mFolder.write("app.log", full);
    mFolder.write("app.log_0.back", "zero");
    mFolder.write("app.log_1.back", "one");
    log().installFileHandlerExUtf8(path(), 0, 100, 2);
    writeLine("one more");
    EXPECT_EQ(texts(), full + "one more|") << "the limit itself is not too large";
    writeLine("first");
    EXPECT_EQ(texts("app.log_0.back"), full + "one more|");
    EXPECT_EQ(mFolder.read("app.log_1.back"), "zero");
    EXPECT_FALSE(mFolder.has("app.log_2.back"));
    writeLine("second");
    writeLine("third");
    EXPECT_EQ(texts(), "first|second|third|") << "the file may exceed the limit by one line";
    writeLine("fourth");
    EXPECT_EQ(texts(), "fourth|");
    EXPECT_EQ(texts("app.log_0.back"), "first|second|third|");
}

TEST_F(LogFile, KeepsAsManyBackupsAsAsked) {
    mFolder.write("app.log", std::string(10, 'x'));
    log().installFileHandlerExUtf8(path(), 0, 5, 0);
    writeLine("no backup");
    EXPECT_EQ(texts(), "no backup|");
    EXPECT_FALSE(mFolder.has("app.log_0.back"));

    mFolder.write("app.log_127.back", "the oldest that there may be");
    log().installFileHandlerExUtf8(path(), 0, 5, 500);
    writeLine("128 backups");
    EXPECT_TRUE(mFolder.has("app.log_0.back"));
    EXPECT_FALSE(mFolder.has("app.log_127.back") || mFolder.has("app.log_128.back"));
}

TEST_F(LogFile, GrowsOnWhileItCannotBeMovedAside) {
    mFolder.write("app.log", "precious\r\n");
    log().installFileHandlerExUtf8(path(), 0, 5, 1);
    xo::platform::FileHandle reader(::CreateFileW((mFolder.widePath() / L"app.log").c_str(), GENERIC_READ,
                                                  FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                                  nullptr));
    ASSERT_TRUE(reader);
    writeLine("kept");
    EXPECT_EQ(texts(), "precious|kept|");
    reader.reset();
    const std::filesystem::path backup = mFolder.widePath() / L"app.log_0.back";
    std::filesystem::create_directory(backup);
    writeLine("though it could be deleted");
    EXPECT_EQ(texts(), "precious|kept|though it could be deleted|");
    std::filesystem::remove(backup);
    writeLine("moved");
    EXPECT_EQ(texts(), "moved|");
}

TEST_F(LogFile, SaysWhenItCannotBeMade) {
    const std::string places[] = {mFolder.path("missing") + "\\app.log", mFolder.path(),
                                  mFolder.path("a") + std::string(1, '\0') + "b.log"};
    for (const std::string& place : places) {
        const xo::tests::CapturedOutput output;
        log().installFileHandlerExUtf8(place, xo::xoLogFileEcho, -1, 0);
        EXPECT_THAT(takeLines(), ElementsAre("3()Fail to install log file handler to " + place));
        EXPECT_NE(output.text().find("Fail to install"), std::string::npos) << "the flag asked for the console";
        EXPECT_EQ(log().getCurrentLogFileNameUtf8(), "");
    }
    log().installFileHandlerUtf8("");
    EXPECT_THAT(takeLines(), IsEmpty()) << "no file is no failure";
}

TEST_F(LogFile, IsFoundAgainFromAnotherFolderAndUnderALongPath) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(mFolder.widePath());
    log().installFileHandlerUtf8("relative.log");
    std::filesystem::current_path(before);
    writeLine("here");
    EXPECT_EQ(texts("relative.log"), kMark + "here|");

    std::string deep;
    for (int i = 0; i < 12; ++i) deep += "d\xC3\xA9p" + std::string(30, 'p') + "\\";
    std::filesystem::create_directories(LR"(\\?\)" + (mFolder.widePath() / std::filesystem::u8path(deep)).wstring());
    log().installFileHandlerExUtf8(path(deep + "app.log"), 0, 100, 1);
    for (int i = 0; i < 4; ++i) writeLine(std::string(50, 'x'));
    EXPECT_THAT(takeLines(), testing::Each(testing::StartsWith("1()")));
    EXPECT_TRUE(std::filesystem::exists(
        LR"(\\?\)" + (mFolder.widePath() / std::filesystem::u8path(deep + "app.log_0.back")).wstring()));
}

}  // namespace
