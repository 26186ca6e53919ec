#include <set>
#include <thread>
#include <tuple>
#include <vector>

#include "files/filesFixture.h"
#include "files/pathParts.h"

namespace {

using namespace std::string_literals;
using xo::xoDirUtils;
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

TEST(PathText, KnowsTheFolderOfTheProgram) {
    std::string folder;
    ASSERT_TRUE(xoDirUtils::GetFolderOfCurrentProcessUtf8(folder));
    EXPECT_TRUE(xoDirUtils::FileExistsUtf8(folder + "\\files.exe")) << folder;
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

TEST_F(TempFile, GivesNoNameTwice) {
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(path("names")));
    std::set<std::string> names[4], all;
    std::vector<std::thread> threads;
    for (auto& mine : names)
        threads.emplace_back([&mine, folder = path("names")] {
            for (int i = 0; i < 50; ++i) mine.insert(xoDirUtils::GetTempFileUtf8(folder, "xo"));
        });
    for (std::thread& thread : threads) thread.join();
    for (auto& some : names) all.merge(some);
    EXPECT_TRUE(all.size() == 4 * 50 && all.count("") == 0) << all.size();
    EXPECT_TRUE(std::filesystem::is_empty(mFolder.widePath() / "names"));
}

}  // namespace
