#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "log/logFixture.h"
#include "log/settableClock.h"
#include "platform/handle.h"
#include "support/allocationCount.h"
#include "support/capturedOutput.h"
#include "support/importHook.h"
#include "support/temporaryFolder.h"
#include "xoSystem/xoInit.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using xo::platform::FileHandle;
using xo::tests::SettableClock;

const std::string kMark = "\xEF\xBB\xBF";

class LogFile : public xo::tests::LogTest {
protected:
    std::string path(const std::string& name = "app.log") const { return mFolder.path(name); }

    std::filesystem::path wide(const std::string& name) const { return mFolder.widePath() / name; }
    static std::string backup(const std::string& number) { return "app.log_" + number + ".back"; }

    // Without shared deletion, as fopen opens a file.
    FileHandle openShared(const std::string& name, DWORD share = kSharesWriting) const {
        FileHandle handle(
            ::CreateFileW(wide(name).c_str(), GENERIC_READ | GENERIC_WRITE, share, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_TRUE(handle) << name;
        return handle;
    }
    static constexpr DWORD kSharesWriting = FILE_SHARE_READ | FILE_SHARE_WRITE;

    static void writeLine(const std::string& text) { log().Write(text, xo::xoLogInfo, {}); }

    // The lines of a file without their prefixes, each followed by "|".
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
        DWORD readersShare = 0;  // of a program that has the file open
    } rows[] = {
        {0, "old|new|", "older|", ""},
        {xo::xoLogFileTruncate, "\xEF\xBB\xBFnew|", "older|", ""},
        {xo::xoLogFileTruncate, "\xEF\xBB\xBFnew|", "older|", "", kSharesWriting},
        {xo::xoLogFileTruncate, "\xEF\xBB\xBFnew|", "older|", "", kSharesWriting | FILE_SHARE_DELETE},
        {~7, "old|new|", "older|", ""},                   // unknown flags
        {xo::xoLogFileRotate, "old|new|", "older|", ""},  // rotation needs both bits
        {xo::xoLogFileTruncate | xo::xoLogFileRotate, "\xEF\xBB\xBFnew|", "old|", ""},
        {xo::xoLogFileEcho, "old|new|", "older|", "new\n"},
    };
    for (const auto& row : rows) {
        mFolder.write("app.log", "old\r\n");
        mFolder.write("app.log_0.back", "older\r\n");
        const FileHandle reader = row.readersShare != 0 ? openShared("app.log", row.readersShare) : FileHandle();
        const xo::tests::CapturedOutput output;
        log().setEchoToConsole(true);
        log().installFileHandlerExUtf8(path(), row.flags, -1, 1);
        writeLine("new");
        EXPECT_EQ(texts(), row.file) << row.flags;
        EXPECT_EQ(texts("app.log_0.back"), row.backup) << row.flags;
        EXPECT_TRUE(!reader || ::GetFileSize(reader.get(), nullptr) != 0) << "emptied, not made anew";
        log().removeFileHandler();
        writeLine("unseen");  // the echo ends with the file
        EXPECT_EQ(std::regex_replace(output.text(), std::regex("INFO : .{24} "), ""), row.console) << row.flags;
    }
}

TEST_F(LogFile, RotatesWhatIsTooLargeBeforeItWrites) {
    const std::string full(100, 'x');
    for (const int flags : {0, int{xo::xoLogFileKeepOpen}}) {
        mFolder.write("app.log", full);
        mFolder.write("app.log_0.back", "zero");
        mFolder.write("app.log_1.back", "one");
        log().installFileHandlerExUtf8(path(), flags, 100, 2);
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
        log().removeFileHandler();
    }
}

TEST_F(LogFile, KeepsAsManyBackupsAsAsked) {
    for (const int backupCount : {0, -1}) {
        mFolder.write("app.log", std::string(10, 'x'));
        ::CreateHardLinkW(wide("other name").c_str(), wide("app.log").c_str(), nullptr);
        FileHandle reader = openShared("app.log");
        log().installFileHandlerExUtf8(path(), 0, 5, backupCount);
        writeLine("no backup");
        EXPECT_EQ(texts(), "no backup|");
        EXPECT_EQ(texts("other name"), "no backup|") << "emptied, not made anew";
        EXPECT_FALSE(mFolder.has("app.log_0.back"));
        reader.reset();
        std::filesystem::remove(wide("other name"));
    }
    mFolder.write("app.log", std::string(10, 'x'));
    log().installFileHandlerExUtf8(path(), 0, 0, 1);
    writeLine("|no limit");
    EXPECT_EQ(texts(), std::string(10, 'x') + "|no limit|");

    for (int i = 0; i < 128; ++i) mFolder.write("app.log_" + std::to_string(i) + ".back", std::to_string(i));
    log().installFileHandlerExUtf8(path(), 0, 5, 500);
    writeLine("128 backups");
    EXPECT_EQ(mFolder.read("app.log_127.back"), "126");
    EXPECT_FALSE(mFolder.has("app.log_128.back"));
}

TEST_F(LogFile, TouchesNothingUnlessAllFilesCanBeMoved) {
    for (const char* held : {"app.log", "app.log_0.back", "app.log_2.back"}) {
        mFolder.write("app.log", "precious\r\n");
        for (const char* number : {"0", "1", "2"}) mFolder.write(backup(number), number);
        log().installFileHandlerExUtf8(path(), 0, 5, 3);
        FileHandle reader = openShared(held);
        writeLine("kept");
        writeLine("too");
        log().installFileHandlerExUtf8(path(), xo::xoLogFileTruncate | xo::xoLogFileRotate, 5, 3);
        EXPECT_EQ(texts(), "precious|kept|too|") << held;
        for (const char* number : {"0", "1", "2"}) EXPECT_EQ(mFolder.read(backup(number)), number) << held;
        reader.reset();
        writeLine("moved");
        EXPECT_EQ(texts(), "moved|") << held;
        EXPECT_EQ(texts(backup("0")), "precious|kept|too|") << held;
        EXPECT_EQ(mFolder.read(backup("1")) + mFolder.read(backup("2")), "01") << held;
    }
    std::filesystem::remove(wide(backup("1")));
    writeLine("as far as the lowest free number");
    EXPECT_EQ(texts(backup("1")), "precious|kept|too|");
    EXPECT_EQ(mFolder.read(backup("2")), "1");
}

BOOL WINAPI refuseRename(HANDLE, FILE_INFO_BY_HANDLE_CLASS, void*, DWORD) { return FALSE; }

TEST_F(LogFile, KeepsTheOldestBackupWhenNoFileCanBeRenamed) {
    for (const int backupCount : {1, 3}) {
        mFolder.write("app.log", "precious\r\n");
        for (const char* number : {"0", "1", "2"}) mFolder.write(backup(number), number);
        log().installFileHandlerExUtf8(path(), 0, 5, backupCount);
        const xo::tests::ImportHook rename("xoSystem.dll", "SetFileInformationByHandle", &refuseRename);
        ASSERT_TRUE(rename.isInstalled());
        writeLine("kept");
        EXPECT_EQ(texts(), "precious|kept|");
        for (const char* number : {"0", "1", "2"}) EXPECT_EQ(mFolder.read(backup(number)), number) << backupCount;
    }
}

int opened = 0;
HANDLE WINAPI createFile(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                         DWORD flags, HANDLE model) {
    ++opened;
    return xo::tests::ImportHook::behind(&createFile)(path, access, share, security, disposition, flags, model);
}

TEST_F(LogFile, TriesARotationAgainOnlyWhenTheFileHasGrownByTheLimit) {
    mFolder.write("app.log", std::string(201, 'x'));
    log().installFileHandlerExUtf8(path(), 0, 200, 5);
    const FileHandle reader = openShared("app.log");
    const xo::tests::ImportHook hook("xoSystem.dll", "CreateFileW", &createFile);
    ASSERT_TRUE(hook.isInstalled());
    std::vector<int> calls;
    for (int i = 0; i < 4; ++i) {
        opened = 0;
        writeLine(std::string(100, 'x'));
        calls.push_back(opened);
    }
    EXPECT_THAT(calls, ElementsAre(2, 1, 2, 1)) << "the second line finds 336 bytes, the third 471, the fourth 606";
}

BOOL WINAPI writeInPieces(HANDLE file, LPCVOID bytes, DWORD size, LPDWORD written, LPOVERLAPPED overlapped) {
    if (size < 20) return *written = 0, TRUE;  // a full disk
    return xo::tests::ImportHook::behind(&writeInPieces)(file, bytes, 20, written, overlapped);
}

TEST_F(LogFile, MayStayOpen) {
    const SettableClock clock;
    ASSERT_TRUE(clock.isInstalled());
    SettableClock::second = 1583233509;
    log().installFileHandlerExUtf8(path(), xo::xoLogFileKeepOpen, -1, 0);
    {
        const xo::tests::ImportHook hook("xoSystem.dll", "CreateFileW", &createFile);
        ASSERT_TRUE(hook.isInstalled());
        opened = 0;
        for (int i = 0; i < 1000; ++i) writeLine("x");
        EXPECT_EQ(opened, 1) << "once a second, to see whether the file still has its name";
    }
    EXPECT_EQ(mFolder.read("app.log").size(),
              kMark.size() + 1000 * std::string_view("INFO : Tue Mar 03 14:05:09 2020 x\r\n").size());

    std::filesystem::rename(wide("app.log"), wide("moved.log"));
    writeLine("same second");
    ++SettableClock::second;
    writeLine("next second");
    EXPECT_EQ(texts(), "next second|");
    EXPECT_NE(mFolder.read("moved.log").find("same second"), std::string::npos);
    std::filesystem::remove(wide("app.log"));
    const bool isDeleted = !mFolder.has("app.log");  // Wine deletes an open file when its last handle is closed
    ++SettableClock::second;
    writeLine("anew");
    EXPECT_EQ(texts(), isDeleted ? "anew|" : "next second|anew|");
    log().removeFileHandler();
    std::filesystem::remove(wide("app.log"));  // would fail if somebody had the file open without sharing
    EXPECT_FALSE(mFolder.has("app.log"));
}

TEST_F(LogFile, WithALimitStaysOpenForOneWriterOnly) {
    mFolder.write("app.log", "old\r\n");
    const auto openToWrite = [&] {
        return FileHandle(::CreateFileW(wide("app.log").c_str(), FILE_APPEND_DATA,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                        0, nullptr));
    };
    FileHandle other = openToWrite();
    for (const int flags : {0, int{xo::xoLogFileTruncate}, xo::xoLogFileTruncate | xo::xoLogFileRotate}) {
        log().installFileHandlerExUtf8(path(), flags | xo::xoLogFileKeepOpen, 5, 1);
        EXPECT_THAT(takeLines(), ElementsAre("3()Fail to install log file handler to " + path()));
        EXPECT_EQ(texts(), "old|") << "not touched";
    }
    log().installFileHandlerExUtf8(path(), xo::xoLogFileKeepOpen, -1, 0);
    writeLine("shared");
    EXPECT_EQ(texts(), "old|shared|");
    other.reset();
    log().installFileHandlerExUtf8(path(), xo::xoLogFileKeepOpen, 5, 0);
    EXPECT_FALSE(openToWrite());
    writeLine("the one writer");
    EXPECT_EQ(texts(), "the one writer|");
    log().removeFileHandler();
    EXPECT_TRUE(openToWrite());
}

TEST_F(LogFile, IsInstalledThoughNothingCanBeWrittenYet) {
    const xo::tests::ImportHook hook("xoSystem.dll", "WriteFile", &writeInPieces);
    ASSERT_TRUE(hook.isInstalled());
    log().installFileHandlerUtf8(path());
    EXPECT_EQ(log().getCurrentLogFileNameUtf8(), path());
    writeLine("12345678901234567890");
    EXPECT_EQ(mFolder.read("app.log").size(), 40u) << "what the system takes in pieces is written in pieces";
}

std::vector<std::wstring> mutexNames;
HANDLE WINAPI createMutex(LPSECURITY_ATTRIBUTES security, BOOL isOwner, LPCWSTR name) {
    mutexNames.emplace_back(name);
    return xo::tests::ImportHook::behind(&createMutex)(security, isOwner, name);
}

TEST_F(LogFile, IsSharedOnceTheLogOrTheLibraryIsSafeForThreads) {
    const xo::tests::ImportHook hook("xoSystem.dll", "CreateMutexW", &createMutex);
    ASSERT_TRUE(hook.isInstalled());
    std::string name = "Global\\" + path();
    std::replace(name.begin() + 7, name.end(), '\\', '/');
    const auto takeNames = [] { return std::exchange(mutexNames, {}); };
    const std::wstring expected = std::filesystem::u8path(name).wstring();

    log().installFileHandlerUtf8(path());
    EXPECT_THAT(takeNames(), IsEmpty());
    log().makeThreadSafe();
    EXPECT_THAT(takeNames(), ElementsAre(expected));
    log().installFileHandlerUtf8(path());
    EXPECT_THAT(takeNames(), ElementsAre(expected));
    xo::initializeXoSystem(xo::InitTypeFull);
    xo::xoLog::destroyInstance();
    xo::xoLog::createInstance(false);
    takeNames();
    log().installFileHandlerUtf8(path());
    EXPECT_THAT(takeNames(), ElementsAre(expected));
    xo::terminateXoSystem();
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

TEST_F(LogFile, IsNotInstalledByHalves) {
    log().installFileHandlerUtf8(path());
    const std::string shortPath = "a.log";  // needs no memory of its own, but its absolute path does
    const xo::tests::AllocationCount allocations;
    ASSERT_TRUE(allocations.isCounting());
    xo::tests::AllocationCount::refuseAll(true);
    EXPECT_THROW(log().installFileHandlerUtf8(shortPath), std::bad_alloc);
    xo::tests::AllocationCount::refuseAll(false);
    EXPECT_EQ(log().getCurrentLogFileNameUtf8(), "");
    writeLine("nowhere");
    EXPECT_EQ(texts(), kMark);
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
