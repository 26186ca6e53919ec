#include <algorithm>
#include <atomic>
#include <set>
#include <thread>
#include <tuple>
#include <vector>

#include "files/filesFixture.h"
#include "files/pathParts.h"
#include "support/importHook.h"

namespace {

using namespace std::string_literals;
using xo::xoDirUtils;
using xo::tests::ImportHook;
using DiskPath = xo::tests::FolderTest;
using TempFile = xo::tests::FolderTest;

TEST(PathParts, KnowWhereTheNamesBegin) {
    const std::tuple<std::wstring, std::size_t, bool> rows[] = {
        {L"", 0, false},        {L"\\a", 1, false},  {LR"(\\.\NUL)", 7, false},  {LR"(\\server\share)", 14, true},
        {L"C:", 2, false},      {L"C:a", 2, false},  {LR"(\\?\C:\a)", 7, false}, {L"//server/share/a", 15, true},
        {L"a\\b", 0, false},    {L"c:/a", 3, false}, {LR"(\\server)", 8, true},  {LR"(\\server\share\a)", 15, true},
        {L"C:\\\\a", 4, false},
    };
    for (const auto& [path, root, network] : rows) {
        EXPECT_EQ(xo::files::rootLength(path), root) << xo::platform::toUtf8(path);
        EXPECT_EQ(xo::files::isNetworkPath(path), network) << xo::platform::toUtf8(path);
    }
    EXPECT_EQ(xo::files::rootLength(LR"(\\?\unc\server\share\a)"), 21u);
    EXPECT_TRUE(xo::files::isNetworkPath(LR"(\\?\unc\server\share\a)"));
    EXPECT_EQ(xo::files::rootLength(LR"(\\?\Volume{0}\a)"), 14u);
    EXPECT_EQ(xo::files::rootLength(LR"(\\?\UNC1\a\b)"), 9u);
    EXPECT_FALSE(xo::files::isNetworkPath(LR"(\\?\UNC1\a\b)"));
}

TEST(PathText, CutsTheLastNameOff) {
    const std::pair<const char*, const char*> rows[] = {
        {"", ""},   {"C:\\", ""},   {"C:\\a", "C:"},          {"C:/a/b/", "C:/a"},         {"a", ""},
        {"/a", ""}, {"a//b", "a/"}, {"\\\\s\\x\\y", "//s/x"}, {"\xC3\xA9\\b", "\xC3\xA9"},
    };
    for (const auto& [path, parent] : rows) EXPECT_EQ(xoDirUtils::GetParentPathUtf8(path), parent) << path;
}

TEST(PathText, TellsRelativePathsAndMakesThemAbsolute) {
    for (const char* path : {"", "a\\b", ".."}) EXPECT_TRUE(xoDirUtils::IsPathRelativeUtf8(path)) << path;
    for (const char* path : {"\\a", "C:\\a", "\\\\s\\x"}) EXPECT_FALSE(xoDirUtils::IsPathRelativeUtf8(path)) << path;
    EXPECT_EQ(xoDirUtils::GetAbsolutePathUtf8("C:/a/./b/../\xC3\xA9"), "C:\\a\\\xC3\xA9");
    EXPECT_EQ(xoDirUtils::GetAbsolutePathUtf8(""), "");
    EXPECT_EQ(xoDirUtils::GetAbsolutePathUtf8("C:\\a\0b"s), "");
    const std::string name(400, 'n');
    EXPECT_EQ(xoDirUtils::GetAbsolutePathUtf8("C:\\x\\..\\" + name), "C:\\" + name);
}

TEST_F(DiskPath, FollowsTheWorkingFolder) {
    const xo::tests::WorkingFolder here(path());
    for (const std::string& refused : {"missing"s, "..\0x"s})
        EXPECT_FALSE(xoDirUtils::SetCurrentWorkingDirUtf8(refused));
    EXPECT_EQ(xoDirUtils::GetCurrentWorkingDirUtf8(), path());
    EXPECT_EQ(xoDirUtils::GetAbsolutePathUtf8("a"), path("a"));
}

DWORD WINAPI nameProgramAtTheRoot(HMODULE, wchar_t* buffer, DWORD) { return ::wcscpy(buffer, L"C:\\a.exe"), 8; }

TEST(PathText, KnowsTheFolderOfTheProgram) {
    std::string folder;
    ASSERT_TRUE(xoDirUtils::GetFolderOfCurrentProcessUtf8(folder));
    EXPECT_TRUE(xoDirUtils::FileExistsUtf8(folder + "\\files.exe")) << folder;
    const ImportHook hook("xoSystem.dll", "GetModuleFileNameW", &nameProgramAtTheRoot);
    EXPECT_TRUE(xoDirUtils::GetFolderOfCurrentProcessUtf8(folder));
    EXPECT_EQ(folder, "C:\\");
}

TEST_F(DiskPath, IsFoundInItsCase) {
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(path("Sub Folder \xC3\x89")));
    mFolder.write("Sub Folder \xC3\x89/File.TXT", "");
    const std::string root = xoDirUtils::GetActualPathNameUtf8(path());
    const std::pair<const char*, const char*> rows[] = {
        {"\\SUB FOLDER \xC3\xA9\\fILE.txt", "\\Sub Folder \xC3\x89\\File.TXT"},
        {"/sub folder \xC3\x89/", "/Sub Folder \xC3\x89/"},  // separators stay
        {"\\.\\sub folder \xC3\xA9\\..", "\\.\\Sub Folder \xC3\x89\\.."},
        {"\\sub folder \xC3\xA9\\Missing\\x", "\\Sub Folder \xC3\x89\\Missing\\x"},
        {"\\sub*\\file.txt", "\\sub*\\file.txt"},  // is no pattern
        {"\\sub<\\file.txt", "\\sub<\\file.txt"},  // nor by the kernel's own wildcards
        {"\\sub folder >\\file.txt", "\\sub folder >\\file.txt"},
        {"\\sub folder \xC3\xA9\\file\"txt", "\\Sub Folder \xC3\x89\\file\"txt"},
    };
    for (const auto& [asked, actual] : rows)
        EXPECT_EQ(xoDirUtils::GetActualPathNameUtf8("c" + root.substr(1) + asked), root + actual);
    xo::tests::makeFile(mDeep + "\\Deepest");
    EXPECT_EQ(xoDirUtils::GetActualPathNameUtf8(mDeep + "\\DEEPEST"), mDeep + "\\Deepest");  // beyond the shell's reach
    EXPECT_EQ(xoDirUtils::GetActualPathNameUtf8("c:\\"), "C:\\");
    EXPECT_EQ(xoDirUtils::GetActualPathNameUtf8("\\\\?\\c:\\"), "\\\\?\\C:\\");
    EXPECT_EQ(xoDirUtils::GetActualPathNameUtf8(""), "");
}

TEST(KnownFolders, ExistOnDisk) {
    const std::set<std::string> folders = {xoDirUtils::GetFontFolderUtf8(), xoDirUtils::GetCommonAppDataFolderUtf8(),
                                           xoDirUtils::GetAppDataFolderUtf8(), xoDirUtils::GetPicturesFolderUtf8(),
                                           xoDirUtils::GetDocumentsFolderUtf8()};
    for (const std::string& folder : folders) EXPECT_TRUE(xoDirUtils::DirExistsUtf8(folder)) << folder;
    EXPECT_EQ(folders.size(), 5u);
}

TEST(TempFolder, IsWhatTheEnvironmentSays) {
    const std::wstring before = ::_wgetenv(L"TEMP");
    const std::pair<const wchar_t*, const char*> rows[] = {
        {L"C:\\t\u00E9mp\\\u65E5\\", u8"C:/t\u00E9mp/\u65E5"}, {L"D:\\", "D:/"}, {L"C:/x//", "C:/x"}};
    for (const auto& [value, folder] : rows) {
        ::SetEnvironmentVariableW(L"TEMP", value);
        EXPECT_EQ(xoDirUtils::GetTempFolderUtf8(), folder);
    }
    ::SetEnvironmentVariableW(L"TEMP", nullptr);
    const std::string fallback = xoDirUtils::GetTempFolderUtf8();
    EXPECT_TRUE(xoDirUtils::DirExistsUtf8(fallback)) << fallback;
    EXPECT_TRUE(fallback.find('\\') == std::string::npos && fallback.back() != '/') << fallback;
    ::SetEnvironmentVariableW(L"TEMP", before.c_str());
}

TEST_F(TempFile, NamesAFileThatCanBeMade) {
    using Row = std::tuple<std::string, std::string, std::string, std::string, std::string>;
    // Three characters of the prefix count, but no half of a surrogate pair.
    for (const auto& [in, prefix, extension, start, end] :
         {Row{path(), "prefix", ".csv", path("pre"), ".csv"}, Row{path() + "/", "", "csv", path() + "\\", ".csv"},
          Row{path(), "a", "", path("a"), ""}, Row{path(), u8"ab\U0001F600", ".\xC3\xA9", path("ab"), ".\xC3\xA9"},
          Row{mDeep, "\xC3\xA9x", "tmp", mDeep + "\\\xC3\xA9x", ".tmp"}, Row{"", "xo", ".z", "C:\\", ".z"}}) {
        const std::string made = xoDirUtils::GetTempFileUtf8(in, prefix, extension);
        EXPECT_EQ(made.substr(0, start.size()), start) << made;
        ASSERT_GT(made.size(), start.size() + end.size());
        EXPECT_EQ(made.substr(made.size() - end.size()), end) << made;
        EXPECT_TRUE(made.find(u8"\uFFFD") == std::string::npos && !xoDirUtils::FileExistsUtf8(made)) << made;
        xo::tests::makeFile(made);
        EXPECT_TRUE(xoDirUtils::RemoveFileUtf8(made));
    }
    for (const std::string& in : {path("missing"), mDeep + "\\missing", path() + "\0x"s})
        EXPECT_EQ(xoDirUtils::GetTempFileUtf8(in, "xo"), "");
    EXPECT_EQ(xoDirUtils::GetTempFileUtf8(path(), "..\\"), "");
    EXPECT_EQ(xoDirUtils::GetTempFileUtf8(path(), "xo", "/x"), "");
}

// A system whose numbers for temporary names follow one another, that makes no files of its own, and that may refuse.
std::atomic<UINT> systemNumber{0};
std::atomic<DWORD> systemError{ERROR_SUCCESS};
int refusals = 0, refusal = 0;  // the next answers to the question for a file
std::wstring refusedPath;
int deniedFiles = 0;  // that cannot be made

UINT WINAPI nameFile(const wchar_t* folder, const wchar_t* prefix, UINT number, wchar_t* path) {
    if (number == 0 && systemError != ERROR_SUCCESS) return ::SetLastError(systemError), 0;
    if (number == 0) number = systemNumber++ % 65535 + 1;
    ::swprintf_s(path, MAX_PATH, L"%ls\\%ls%x.tmp", folder, prefix, number);
    return number;
}
BOOL WINAPI deleteNothing(const wchar_t*) { return TRUE; }
int findFile(const wchar_t* path, int) {
    errno = EACCES;
    if (refusals > 0) return --refusals, refusedPath = path, refusal;
    errno = ENOENT;
    return -1;
}
HANDLE WINAPI denyFiles(const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                        DWORD disposition, DWORD flags, HANDLE model) {
    if (deniedFiles-- <= 0)
        return ImportHook::behind(&denyFiles)(path, access, share, security, disposition, flags, model);
    ::SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

class TempNumbers : public TempFile {
protected:
    void SetUp() override { ASSERT_TRUE(mNaming.isInstalled() && mDeleting.isInstalled() && mFinding.isInstalled()); }

    const ImportHook mNaming{"xoSystem.dll", "GetTempFileNameW", &nameFile};
    const ImportHook mDeleting{"xoSystem.dll", "DeleteFileW", &deleteNothing};
    const ImportHook mFinding{"xoSystem.dll", "_waccess", &findFile};
};

std::size_t giveNumber() {
    const std::string name = xoDirUtils::GetTempFileUtf8("C:", "");
    return name.empty() ? 0 : std::stoul(name.substr(3), nullptr, 16);
}

TEST_F(TempNumbers, ComeOnceInEachRoundWhateverThreadAsks) {
    constexpr std::size_t kNumbers = 65535;
    std::vector<std::atomic<int>> times(kNumbers + 1);
    while (times[giveNumber()]++ == 0) {
    }
    // With the first repetition the second round has begun. It and one more are shared by two threads.
    const auto giveHalf = [&times](std::size_t count) {
        for (; count > 0; --count) ++times[giveNumber()];
    };
    const std::vector<int> before(times.begin(), times.end());
    std::thread other(giveHalf, kNumbers);
    giveHalf(kNumbers - 1);
    other.join();
    EXPECT_EQ(times[0], 0);
    std::size_t given = 0;
    for (std::size_t number = 1; number <= kNumbers; ++number) given += times[number] == (before[number] > 0 ? 3 : 2);
    EXPECT_EQ(given, kNumbers);
}

TEST_F(TempNumbers, PassOverNamesThatAreTaken) {
    for (const int answer : {0, -1}) {  // a file, and one that waits for its deletion
        refusals = 1, refusal = answer;
        const std::string name = xoDirUtils::GetTempFileUtf8("C:", "", "a");
        EXPECT_NE(name, "");
        EXPECT_NE(name, xo::platform::toUtf8(refusedPath));
    }
    const ImportHook creating("xoSystem.dll", "CreateFileW", &denyFiles);
    const std::tuple<std::string, DWORD, int, bool> rows[] = {
        {mDeep, ERROR_SUCCESS, 5, true},  // where the system names no file
        {path(), ERROR_ACCESS_DENIED, 5, true},
        {path(), ERROR_ACCESS_DENIED, 10000, false},  // a folder that nobody may write to
        {path(), ERROR_PATH_NOT_FOUND, 0, false},
    };
    for (const auto& [folder, error, denied, isNamed] : rows) {
        systemError = error, deniedFiles = denied;
        EXPECT_EQ(xoDirUtils::GetTempFileUtf8(folder, "xo") != "", isNamed) << error << ' ' << denied;
        EXPECT_TRUE(deniedFiles <= 0 || deniedFiles > 9000) << deniedFiles;
    }
    systemError = ERROR_SUCCESS;
    std::vector<std::string> files;
    xoDirUtils::GlobFileAndFolderUtf8(mDeep, &files);
    EXPECT_TRUE(files.empty());
}

}  // namespace
