#include <sys/stat.h>
#include <sys/types.h>

#include "files/filesFixture.h"
#include "support/importHook.h"

#include <aclapi.h>

namespace {

using namespace std::string_literals;
using xo::xoDirUtils;
using xo::xoFileInfoUtf8;
using xo::tests::hold;
using xo::tests::ImportHook;
using xo::tests::makeFile;
using FileInfo = xo::tests::FolderTest;
using FileOperations = xo::tests::FolderTest;

TEST_F(FileInfo, AgreesWithTheRuntime) {
    mFolder.write("a \xC3\xA9.txt", "12345");
    const auto held = hold(path("held"));
    for (const std::string& asked : {path(), path("a \xC3\xA9.txt"), path("held"), path("missing"), path("*"),
                                     path("a \xC3\xA9.txt/"), "C:\\"s, "C:/"s, "Q:\\"s, "."s, ""s, "NUL"s}) {
        SCOPED_TRACE(asked);
        struct _stat64 expected {};
        const bool exists = ::_wstat64(xo::platform::toWide(asked).c_str(), &expected) == 0;
        xoFileInfoUtf8 info;
        info.size = 99;  // must not survive
        xoDirUtils::GetFileInfoUtf8(asked, info);
        EXPECT_EQ(info.path, asked);
        EXPECT_TRUE(info.exists == exists && info.hasType == exists);
        EXPECT_EQ(info.isDirectory, (expected.st_mode & _S_IFDIR) != 0);
        EXPECT_EQ(info.accessTime, expected.st_atime);
        EXPECT_EQ(info.creationTime, expected.st_ctime);
        EXPECT_EQ(info.modificationTime, expected.st_mtime);
        EXPECT_EQ(info.size, static_cast<std::uint64_t>(expected.st_size));
        EXPECT_EQ(xoDirUtils::FileExistsUtf8(asked), exists);
        EXPECT_EQ(xoDirUtils::DirExistsUtf8(asked), info.isDirectory);
    }
}

TEST_F(FileInfo, ReachesWhatTheRuntimeDoesNot) {
    const auto held = hold(mDeep + "\\held");
    for (const std::string& asked : {mDeep + "\\held", mDeep, mDeep + "/", path() + "\\", "C:"s}) {
        xoFileInfoUtf8 info;
        xoDirUtils::GetFileInfoUtf8(asked, info);
        EXPECT_TRUE(info.exists && xoDirUtils::FileExistsUtf8(asked)) << asked;
        EXPECT_EQ(xoDirUtils::DirExistsUtf8(asked), asked != mDeep + "\\held");
    }
    EXPECT_FALSE(xoDirUtils::FileExistsUtf8(path() + "\0"s));
    EXPECT_FALSE(xoDirUtils::FileExistsUtf8(std::string(100000, 'x')));
    EXPECT_FALSE(xoDirUtils::DirExistsUtf8(path() + "\0"s));
}

// What Windows tells about a file: nothing, or neither its creation nor its last access.
bool isRefused = false;
BOOL WINAPI tellLittle(const wchar_t* path, GET_FILEEX_INFO_LEVELS level, void* data) {
    ::SetLastError(ERROR_SHARING_VIOLATION);
    if (isRefused || !ImportHook::behind(&tellLittle)(path, level, data)) return FALSE;
    auto& told = *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data);
    told.ftCreationTime = told.ftLastAccessTime = {};
    return TRUE;
}

TEST_F(FileInfo, MakesDoWithWhatTheSystemTells) {
    mFolder.write("file", "12345");
    const ImportHook hook("xoSystem.dll", "GetFileAttributesExW", &tellLittle);
    xoFileInfoUtf8 info;
    for (const bool refused : {false, true}) {
        isRefused = refused;
        xoDirUtils::GetFileInfoUtf8(path("file"), info);
        EXPECT_TRUE(hook.isInstalled() && info.exists && info.size == 5 && info.modificationTime > 0);
        if (!refused) EXPECT_EQ(info.creationTime, info.modificationTime);
        if (!refused) EXPECT_EQ(info.accessTime, info.modificationTime);
    }
}

TEST_F(FileInfo, KeepsTimesFarFromToday) {
    const std::pair<std::uint64_t, std::int64_t> rows[] = {
        {116444736000000000, 0}, {116444735999999999, -1}, {116444736019999999, 1}, {157469184000000000, 4102444800}};
    for (const auto& [ticks, seconds] : rows) {
        const FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
        ASSERT_TRUE(::SetFileTime(hold(path("old")).get(), &time, nullptr, &time));
        xoFileInfoUtf8 info;
        xoDirUtils::GetFileInfoUtf8(path("old"), info);
        EXPECT_EQ(info.modificationTime, seconds);
    }
}

TEST_F(FileInfo, ComparesEveryField) {
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
        info.clearInfos();
        EXPECT_EQ(info, xoFileInfoUtf8());
    }
    info.path = "C:\\";
    xoDirUtils::GetFileInfoUtf8(info.path, info);  // asked by its own path
    EXPECT_TRUE(info.path == "C:\\" && info.isDirectory);
}

std::vector<std::wstring> askedFolders;
DWORD diskError = ERROR_SUCCESS;

BOOL WINAPI noteAsked(const wchar_t* folder, ULARGE_INTEGER* available, ULARGE_INTEGER*, ULARGE_INTEGER*) {
    askedFolders.push_back(folder);
    ::SetLastError(diskError);
    return diskError == ERROR_SUCCESS && ImportHook::behind(&noteAsked)(folder, available, nullptr, nullptr);
}

TEST_F(FileInfo, KnowsTheDiskSpaceOfTheNearestFolder) {
    for (const std::string& given : {"C:\\"s, mDeep, mDeep + "\\more/below", path("not/yet/here"), "relative"s}) {
        EXPECT_GT(xoDirUtils::GetAvailableDiskSizeUtf8(given, mError), 0u) << given;
        EXPECT_EQ(mError, "") << given;
    }
    for (const std::string& given : {"Q:\\x\\y"s, ""s, "C:\\\0"s, "\\\\.\\nothing"s}) {
        EXPECT_EQ(xoDirUtils::GetAvailableDiskSizeUtf8(given, mError), 0u) << given;
        EXPECT_EQ(mError.find("GetDiskFreeSpaceExW error "), 0u) << given << ": " << mError;
    }
    const ImportHook hook("xoSystem.dll", "GetDiskFreeSpaceExW", &noteAsked);
    mFolder.write("file", "");
    xoDirUtils::GetAvailableDiskSizeUtf8(path("file"), mError);
    EXPECT_EQ(askedFolders.back(), LR"(\\?\)" + mFolder.widePath().wstring());
    const struct {
        const char* given;
        DWORD error;
        std::vector<std::wstring> asked;
    } rows[] = {
        {"C:\\a\\b", ERROR_PATH_NOT_FOUND, {LR"(\\?\C:\a\b)", LR"(\\?\C:\a)", LR"(\\?\C:\)"}},
        {"C:\\a\\b", ERROR_ACCESS_DENIED, {LR"(\\?\C:\a\b)"}},  // no answer for the volume above
        {"\\\\server\\share\\a\\b", ERROR_PATH_NOT_FOUND, {LR"(\\?\UNC\server\share\)"}},  // asked once
        {"\\\\server\\share", ERROR_BAD_NETPATH, {LR"(\\?\UNC\server\share\)"}},
    };
    for (const auto& row : rows) {
        askedFolders.clear(), diskError = row.error;
        EXPECT_EQ(xoDirUtils::GetAvailableDiskSizeUtf8(row.given, mError), 0u);
        EXPECT_EQ(mError, "GetDiskFreeSpaceExW error " + std::to_string(row.error));
        EXPECT_EQ(askedFolders, row.asked) << row.given;
    }
    diskError = ERROR_SUCCESS;
}

DWORD moveFlags = 0;
BOOL WINAPI noteFlags(const wchar_t* from, const wchar_t* to, DWORD flags) {
    moveFlags = flags;
    return ImportHook::behind(&noteFlags)(from, to, flags);
}

TEST_F(FileOperations, RenameReplacesAndReports) {
    mFolder.write("\xE6\x97\xA5 a", "new");
    mFolder.write("b", "old");
    const ImportHook hook("xoSystem.dll", "MoveFileExW", &noteFlags);
    EXPECT_TRUE(xoDirUtils::RenameFileUtf8(path("\xE6\x97\xA5 a"), path("b"), &mError));
    EXPECT_EQ(moveFlags, DWORD{MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED});
    EXPECT_FALSE(mFolder.has("\xE6\x97\xA5 a"));
    EXPECT_TRUE(xoDirUtils::RenameFileUtf8(path("b"), mDeep + "\\c"));
    EXPECT_TRUE(xoDirUtils::RenameFileUtf8(mDeep + "\\c", path("b")));
    EXPECT_EQ(mError, "untouched");

    EXPECT_FALSE(xoDirUtils::RenameFileUtf8(path("missing"), path("c"), &mError));
    EXPECT_EQ(mError, "MoveFileExW error 2");
    EXPECT_FALSE(xoDirUtils::RenameFileUtf8(path("b\0"s), path("c"), &mError));
    EXPECT_FALSE(xoDirUtils::RenameFileUtf8(path("b"), path("c\0"s)));
    const auto held = hold(path("held"));
    EXPECT_FALSE(xoDirUtils::RenameFileUtf8(path("held"), path("c"), &mError));
    EXPECT_EQ(mError, "MoveFileExW error 32");
    EXPECT_EQ(mFolder.read("b"), "new");
}

TEST_F(FileOperations, CopyAsksBeforeItReplaces) {
    mFolder.write("a", "new");
    mFolder.write("b", "old");
    EXPECT_FALSE(xoDirUtils::CopyFileUtf8(path("a"), path("b")));
    EXPECT_EQ(mFolder.read("b"), "old");
    EXPECT_TRUE(xoDirUtils::CopyFileUtf8(path("a"), path("b"), false));
    EXPECT_EQ(mFolder.read("b"), "new");
    EXPECT_TRUE(xoDirUtils::CopyFileUtf8(path("a"), mDeep + "\\c"));
    EXPECT_TRUE(xoDirUtils::CopyFileUtf8(mDeep + "\\c", path("\xC3\xA9 c")));
    EXPECT_EQ(mFolder.read("\xC3\xA9 c"), "new");
    EXPECT_TRUE(xoDirUtils::RemoveFileUtf8(mDeep + "\\c"));
    EXPECT_FALSE(xoDirUtils::CopyFileUtf8(mDeep + "\\c", path("d")));
}

TEST_F(FileOperations, RemoveTakesFilesOnly) {
    makeFile(path("\xC3\xA9 a"));
    makeFile(path("locked"), FILE_ATTRIBUTE_READONLY);
    const auto held = hold(path("held"));
    EXPECT_TRUE(xoDirUtils::RemoveFileUtf8(path("\xC3\xA9 a")));
    EXPECT_FALSE(mFolder.has("\xC3\xA9 a"));
    for (const char* name : {"missing", "locked", "held", ""}) EXPECT_FALSE(xoDirUtils::RemoveFileUtf8(path(name)));
    EXPECT_TRUE(mFolder.has("locked") && mFolder.has("held"));
}

// Another makes each folder a moment before.
BOOL WINAPI makeLate(const wchar_t* path, SECURITY_ATTRIBUTES* security) {
    ImportHook::behind (&makeLate)(path, security);
    ::SetLastError(ERROR_ALREADY_EXISTS);
    return FALSE;
}

TEST_F(FileOperations, MkpathMakesWhatIsMissing) {
    mFolder.write("file", "kept");
    const xo::tests::WorkingFolder here(path());
    for (const std::string& asked :
         {path("a/b\\\xC3\xA9 c"), path("a/b\\\xC3\xA9 c"), path("d//e\\\\f/"), mDeep + "\\more/below",
          "\\\\?\\" + path("g\\h"), "C:\\"s, "C:"s, "relative/below"s}) {
        EXPECT_TRUE(xoDirUtils::MkpathUtf8(asked)) << asked;
        EXPECT_TRUE(xoDirUtils::DirExistsUtf8(asked)) << asked;
    }
    EXPECT_TRUE(xoDirUtils::MkpathUtf8("") && mFolder.has("relative/below"));
    EXPECT_TRUE(xoDirUtils::MkpathUtf8(path() + "\\x\xFFy") && mFolder.has("x\xEF\xBF\xBDy"));
    for (const std::string& asked : {path("file"), path("file/below"), path("x\0y"s), "Q:\\"s, "Q:\\a"s}) {
        EXPECT_FALSE(xoDirUtils::MkpathUtf8(asked) || xoDirUtils::DirExistsUtf8(asked)) << asked;
    }
    EXPECT_EQ(mFolder.read("file"), "kept");
    EXPECT_FALSE(mFolder.has("x"));
    const ImportHook hook("xoSystem.dll", "CreateDirectoryW", &makeLate);
    EXPECT_TRUE(xoDirUtils::MkpathUtf8(path("made/by/another")));
}

ACCESS_MASK granted = 0;
BOOL WINAPI noteGranted(const wchar_t* path, SECURITY_INFORMATION what, PSECURITY_DESCRIPTOR descriptor) {
    BOOL isPresent = FALSE, isDefaulted = FALSE;
    PACL list = nullptr;
    void* entry = nullptr;
    if (::GetSecurityDescriptorDacl(descriptor, &isPresent, &list, &isDefaulted) && list && ::GetAce(list, 0, &entry))
        granted = static_cast<ACCESS_ALLOWED_ACE*>(entry)->Mask;
    return ImportHook::behind(&noteGranted)(path, what, descriptor);
}
DWORD WINAPI makeNoList(ULONG, EXPLICIT_ACCESS_A*, PACL, PACL*) { return ERROR_NOT_ENOUGH_MEMORY; }

bool everyoneMayWrite(const std::string& path) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    PACL list = nullptr;
    ::GetNamedSecurityInfoW(xo::platform::toApiPath(path).c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                            nullptr, &list, nullptr, &descriptor);
    const xo::platform::LocalMemory<void> owner(descriptor);
    void* entry = nullptr;
    for (DWORD i = 0; list != nullptr && i < list->AceCount && ::GetAce(list, i, &entry); ++i) {
        auto* allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
        const bool writing = (allowed->Mask & FILE_GENERIC_WRITE) == FILE_GENERIC_WRITE;
        if (writing && ::IsWellKnownSid(&allowed->SidStart, WinWorldSid)) return true;
    }
    return false;
}

TEST_F(FileOperations, PermissionsLetEveryoneIn) {
    makeFile(path("\xC3\xA9"));
    makeFile(mDeep + "\\file");
    const ImportHook hook("xoSystem.dll", "SetFileSecurityW", &noteGranted);
    for (const std::string& asked : {path("\xC3\xA9"), mDeep + "\\file", mDeep}) {
        EXPECT_TRUE(xoDirUtils::GrantAllFilePermissionsUtf8(asked)) << asked;
        EXPECT_TRUE(everyoneMayWrite(asked)) << asked;
    }
    EXPECT_EQ(granted, DWORD{GENERIC_ALL});
    EXPECT_FALSE(xoDirUtils::GrantAllFilePermissionsUtf8(path("missing")));
    EXPECT_FALSE(xoDirUtils::GrantAllFilePermissionsUtf8(path() + "\0"s));
    const ImportHook noList("xoSystem.dll", "SetEntriesInAclA", &makeNoList);
    EXPECT_FALSE(xoDirUtils::GrantAllFilePermissionsUtf8(mDeep));
}

TEST_F(FileOperations, LeaveNoHandleOpen) {
    constexpr int rounds = 5;
    int before = 0;
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(path("a")));
    for (int round = 0; round <= rounds; ++round) {
        if (round == 1) before = xo::tests::openHandles();  // the first round fills the system's caches
        for (const std::string& folder : {path("a"), mDeep}) {
            const std::string file = folder + "/file";
            xoFileInfoUtf8 info;
            const auto held = hold(folder + "/held");
            xoDirUtils::GetFileInfoUtf8(folder + "/held", info);
            makeFile(file);
            xoDirUtils::GetFileInfoUtf8(file, info);
            xoDirUtils::GetActualPathNameUtf8(file);
            xoDirUtils::GetAvailableDiskSizeUtf8(file, mError);
            xoDirUtils::GetTempFileUtf8(folder, "xo", "txt");
            xoDirUtils::GrantAllFilePermissionsUtf8(file);
            xoDirUtils::GrantAllFilePermissionsUtf8(path("missing"));
            xoDirUtils::ClearFolderUtf8(folder);
        }
    }
    EXPECT_LT(xo::tests::openHandles(), before + rounds);
    EXPECT_TRUE(xoDirUtils::RenameFileUtf8(path("a"), path("b")));  // nobody holds it
}

}  // namespace
