#include <sys/stat.h>
#include <sys/types.h>

#include "files/filesFixture.h"

#include <aclapi.h>

namespace {

using namespace std::string_literals;
using xo::xoDirUtils;
using xo::xoFileInfoUtf8;
using xo::platform::toWide;
using xo::tests::hold;
using xo::tests::longPath;
using xo::tests::makeFile;
using xo::tests::makeReadOnly;
using xo::tests::TestFolder;

TEST(FileInfo, AgreesWithTheRuntime) {
    const TestFolder folder;
    folder.write("a \xC3\xA9.txt", "12345");
    const auto held = hold(folder.path("held"));
    const std::string paths[] = {folder.path(),
                                 folder.path("a \xC3\xA9.txt"),
                                 folder.path("held"),
                                 folder.path("missing"),
                                 folder.path("*"),
                                 folder.path("a \xC3\xA9.txt/"),
                                 "C:\\",
                                 "C:/",
                                 "Q:\\",
                                 ".",
                                 "",
                                 "NUL"};
    for (const std::string& path : paths) {
        struct _stat64 expected {};
        const bool exists = ::_wstat64(toWide(path).c_str(), &expected) == 0;
        xoFileInfoUtf8 info;
        info.size = 99;  // must not survive
        xoDirUtils::GetFileInfoUtf8(path, info);
        EXPECT_EQ(info.path, path);
        EXPECT_EQ(info.exists, exists) << path;
        EXPECT_EQ(info.hasType, exists) << path;
        EXPECT_EQ(info.isDirectory, (expected.st_mode & _S_IFDIR) != 0) << path;
        EXPECT_EQ(info.accessTime, expected.st_atime) << path;
        EXPECT_EQ(info.creationTime, expected.st_ctime) << path;
        EXPECT_EQ(info.modificationTime, expected.st_mtime) << path;
        EXPECT_EQ(info.size, static_cast<std::uint64_t>(expected.st_size)) << path;
        EXPECT_EQ(xoDirUtils::FileExistsUtf8(path), exists) << path;
        EXPECT_EQ(xoDirUtils::DirExistsUtf8(path), info.isDirectory) << path;
    }
}

TEST(FileInfo, ReachesWhatTheRuntimeDoesNot) {
    const TestFolder folder;
    const std::string deep = longPath(folder);
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(deep));
    const auto held = hold(deep + "\\held");
    for (const std::string& path : {deep + "\\held", deep, deep + "/", folder.path() + "\\", "C:"s}) {
        xoFileInfoUtf8 info;
        xoDirUtils::GetFileInfoUtf8(path, info);
        EXPECT_TRUE(info.exists && xoDirUtils::FileExistsUtf8(path)) << path;
        EXPECT_EQ(xoDirUtils::DirExistsUtf8(path), path != deep + "\\held");
    }
    EXPECT_FALSE(xoDirUtils::FileExistsUtf8(folder.path() + "\0"s));
    EXPECT_FALSE(xoDirUtils::FileExistsUtf8(std::string(100000, 'x')));
    EXPECT_FALSE(xoDirUtils::DirExistsUtf8(folder.path() + "\0"s));
}

TEST(FileInfo, KeepsTimesFarFromToday) {
    const TestFolder folder;
    const std::string path = folder.path("old");
    const struct {
        std::uint64_t ticks;
        std::int64_t seconds;
    } rows[] = {
        {116444736000000000, 0}, {116444735999999999, -1}, {116444736019999999, 1}, {157469184000000000, 4102444800}};
    for (const auto& row : rows) {
        const FILETIME time{static_cast<DWORD>(row.ticks), static_cast<DWORD>(row.ticks >> 32)};
        ASSERT_TRUE(::SetFileTime(hold(path).get(), &time, nullptr, &time));
        xoFileInfoUtf8 info;
        xoDirUtils::GetFileInfoUtf8(path, info);
        EXPECT_EQ(info.modificationTime, row.seconds);
    }
}

TEST(FileInfo, ComparesEveryField) {
    xoFileInfoUtf8 info;
    EXPECT_EQ(info, xoFileInfoUtf8());
    void (*const changes[])(xoFileInfoUtf8&) = {
        [](xoFileInfoUtf8& i) { i.path = "x"; },       [](xoFileInfoUtf8& i) { i.accessTime = 1; },
        [](xoFileInfoUtf8& i) { i.creationTime = 1; }, [](xoFileInfoUtf8& i) { i.modificationTime = 1; },
        [](xoFileInfoUtf8& i) { i.size = 1; },         [](xoFileInfoUtf8& i) { i.exists = true; },
        [](xoFileInfoUtf8& i) { i.hasType = true; },   [](xoFileInfoUtf8& i) { i.isDirectory = true; },
    };
    for (const auto& change : changes) {
        change(info);
        EXPECT_NE(info, xoFileInfoUtf8());
        EXPECT_EQ(info, xoFileInfoUtf8(info));
        info.clearInfos();
        EXPECT_EQ(info, xoFileInfoUtf8());
    }
    info.path = TestFolder().path();
    xoDirUtils::GetFileInfoUtf8(info.path, info);  // asked by its own path
    EXPECT_FALSE(info.path.empty());
}

TEST(DiskSize, AsksTheNearestFolder) {
    const TestFolder folder;
    folder.write("file", "");
    std::string error = "old";
    for (const std::string& path :
         {"C:\\"s, folder.path(), folder.path("file"), folder.path("not/yet/here"), longPath(folder), "relative"s}) {
        EXPECT_GT(xoDirUtils::GetAvailableDiskSizeUtf8(path, error), 0u) << path;
        EXPECT_EQ(error, "") << path;
    }
    for (const std::string& path : {"Q:\\x\\y"s, ""s, "C:\\\0"s, "\\\\.\\nothing"s}) {
        EXPECT_EQ(xoDirUtils::GetAvailableDiskSizeUtf8(path, error), 0u) << path;
        EXPECT_EQ(error.find("GetDiskFreeSpaceExW error "), 0u) << path << ": " << error;
    }
}

TEST(FileOperations, RenameReplacesAndReports) {
    const TestFolder folder;
    const std::string deep = longPath(folder);
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(deep));
    folder.write("\xE6\x97\xA5 a", "new");
    folder.write("b", "old");
    std::string error = "untouched";
    EXPECT_TRUE(xoDirUtils::RenameFileUtf8(folder.path("\xE6\x97\xA5 a"), folder.path("b"), &error));
    EXPECT_EQ(folder.read("b"), "new");
    EXPECT_FALSE(folder.has("\xE6\x97\xA5 a"));
    EXPECT_TRUE(xoDirUtils::RenameFileUtf8(folder.path("b"), deep + "\\c"));
    EXPECT_TRUE(xoDirUtils::RenameFileUtf8(deep + "\\c", folder.path("b")));
    EXPECT_EQ(error, "untouched");

    EXPECT_FALSE(xoDirUtils::RenameFileUtf8(folder.path("missing"), folder.path("c"), &error));
    EXPECT_EQ(error, "MoveFileExW error 2");
    EXPECT_FALSE(xoDirUtils::RenameFileUtf8(folder.path("b\0"s), folder.path("c"), &error));
    EXPECT_FALSE(xoDirUtils::RenameFileUtf8(folder.path("b"), folder.path("c\0"s)));
    const auto held = hold(folder.path("held"));
    EXPECT_FALSE(xoDirUtils::RenameFileUtf8(folder.path("held"), folder.path("c"), &error));
    EXPECT_EQ(error, "MoveFileExW error 32");
    EXPECT_EQ(folder.read("b"), "new");
}

TEST(FileOperations, CopyAsksBeforeItReplaces) {
    const TestFolder folder;
    const std::string deep = longPath(folder);
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(deep));
    folder.write("a", "new");
    folder.write("b", "old");
    EXPECT_FALSE(xoDirUtils::CopyFileUtf8(folder.path("a"), folder.path("b")));
    EXPECT_EQ(folder.read("b"), "old");
    EXPECT_TRUE(xoDirUtils::CopyFileUtf8(folder.path("a"), folder.path("b"), false));
    EXPECT_EQ(folder.read("b"), "new");
    EXPECT_TRUE(xoDirUtils::CopyFileUtf8(folder.path("a"), deep + "\\c"));
    EXPECT_TRUE(xoDirUtils::CopyFileUtf8(deep + "\\c", folder.path("\xC3\xA9 c")));
    EXPECT_EQ(folder.read("\xC3\xA9 c"), "new");
    EXPECT_FALSE(xoDirUtils::CopyFileUtf8(folder.path("missing"), folder.path("d")));
}

TEST(FileOperations, RemoveTakesFilesOnly) {
    const TestFolder folder;
    folder.write("\xC3\xA9 a", "");
    folder.write("locked", "");
    makeReadOnly(folder.path("locked"));
    const auto held = hold(folder.path("held"));
    EXPECT_TRUE(xoDirUtils::RemoveFileUtf8(folder.path("\xC3\xA9 a")));
    EXPECT_FALSE(folder.has("\xC3\xA9 a"));
    for (const char* name : {"missing", "locked", "held", ""})
        EXPECT_FALSE(xoDirUtils::RemoveFileUtf8(folder.path(name)));
    EXPECT_TRUE(folder.has("locked") && folder.has("held"));
}

TEST(Mkpath, MakesWhatIsMissing) {
    const TestFolder folder;
    folder.write("file", "kept");
    const std::string extended = "\\\\?\\" + folder.path();
    const struct {
        std::string path;
        bool made;
    } rows[] = {
        {folder.path("a/b\\\xC3\xA9 c"), true},
        {folder.path("a/b\\\xC3\xA9 c"), true},  // again
        {folder.path("d//e\\\\f/"), true},
        {longPath(folder), true},
        {extended + "\\g\\h", true},
        {"C:\\", true},
        {"C:", true},
        {"", true},
        {folder.path("file"), false},
        {folder.path("file/below"), false},
        {folder.path("x\0y"s), false},
        {"Q:\\", false},
        {"Q:\\a", false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(xoDirUtils::MkpathUtf8(row.path), row.made) << row.path;
        if (!row.path.empty()) EXPECT_EQ(xoDirUtils::DirExistsUtf8(row.path), row.made) << row.path;
    }
    EXPECT_EQ(folder.read("file"), "kept");
    EXPECT_FALSE(folder.has("x"));

    const std::string before = xoDirUtils::GetCurrentWorkingDirUtf8();
    ASSERT_TRUE(xoDirUtils::SetCurrentWorkingDirUtf8(folder.path()));
    EXPECT_TRUE(xoDirUtils::MkpathUtf8("relative/below"));
    EXPECT_TRUE(folder.has("relative/below"));
    ASSERT_TRUE(xoDirUtils::SetCurrentWorkingDirUtf8(before));
}

TEST(Permissions, LetEveryoneIn) {
    const TestFolder folder;
    const std::string deep = longPath(folder);
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(deep));
    folder.write("\xC3\xA9", "");
    makeFile(deep + "\\file");
    for (const std::string& path : {folder.path("\xC3\xA9"), deep + "\\file", deep}) {
        EXPECT_TRUE(xoDirUtils::GrantAllFilePermissionsUtf8(path)) << path;
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        PACL list = nullptr;
        const std::wstring wide = xo::platform::toApiPath(path);
        ASSERT_EQ(::GetNamedSecurityInfoW(wide.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                          &list, nullptr, &descriptor),
                  0u);
        const xo::platform::LocalMemory<void> owner(descriptor);
        bool everyone = false;
        for (DWORD i = 0; list != nullptr && i < list->AceCount; ++i) {
            void* entry = nullptr;
            ASSERT_TRUE(::GetAce(list, i, &entry));
            auto* allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
            everyone = everyone || (::IsWellKnownSid(&allowed->SidStart, WinWorldSid) != FALSE &&
                                    (allowed->Mask & FILE_GENERIC_WRITE) == FILE_GENERIC_WRITE);
        }
        EXPECT_TRUE(everyone) << path;
    }
    EXPECT_FALSE(xoDirUtils::GrantAllFilePermissionsUtf8(folder.path("missing")));
    EXPECT_FALSE(xoDirUtils::GrantAllFilePermissionsUtf8(folder.path() + "\0"s));
}

// Windows gives the lowest free value to a new handle, so leaks push it up.
std::uintptr_t nextHandle() {
    return reinterpret_cast<std::uintptr_t>(
        xo::platform::KernelHandle(::CreateEventW(nullptr, FALSE, FALSE, nullptr)).get());
}

TEST(FileOperations, LeaveNoHandleOpen) {
    constexpr int rounds = 250;
    const TestFolder folder;
    const std::string file = folder.path("a/file");
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(folder.path("a")));
    std::uintptr_t before = 0;
    for (int round = 0; round < rounds; ++round) {
        if (round == 1) before = nextHandle();  // the first round fills the system's caches
        std::string error;
        xoFileInfoUtf8 info;
        makeFile(file);
        xoDirUtils::GetFileInfoUtf8(file, info);
        xoDirUtils::GetActualPathNameUtf8(file);
        xoDirUtils::GetAvailableDiskSizeUtf8(file, error);
        xoDirUtils::GetTempFileUtf8(folder.path("a"), "xo", "txt");
        xoDirUtils::GrantAllFilePermissionsUtf8(file);
        xoDirUtils::GrantAllFilePermissionsUtf8(folder.path("missing"));
        xoDirUtils::CopyFileUtf8(file, folder.path("a/copy"), false);
        xoDirUtils::RenameFileUtf8(file, folder.path("a/renamed"));
        xoDirUtils::RemoveFileUtf8(folder.path("a/renamed"));
        xoDirUtils::MkpathUtf8(folder.path("a/b/c"));
        ASSERT_TRUE(xoDirUtils::ClearFolderUtf8(folder.path("a")));
    }
    EXPECT_LT(nextHandle(), before + rounds);                                     // values go up in fours
    EXPECT_TRUE(xoDirUtils::RenameFileUtf8(folder.path("a"), folder.path("b")));  // nobody holds it
}

}  // namespace
