#include <set>
#include <thread>
#include <vector>

#include "files/filesFixture.h"
#include "files/pathParts.h"

namespace {

using namespace std::string_literals;
using xo::xoDirUtils;
using xo::tests::TestFolder;

TEST(PathParts, KnowWhereTheNamesBegin) {
    const struct {
        std::wstring path;
        std::size_t root;
        bool network;
    } rows[] = {
        {L"", 0, false},
        {L"a\\b", 0, false},
        {L"\\a", 1, false},
        {L"C:", 2, false},
        {L"C:a", 2, false},
        {L"c:/a", 3, false},
        {L"C:\\\\a", 4, false},
        {LR"(\\server)", 8, true},
        {LR"(\\server\share)", 14, true},
        {LR"(\\server\share\a)", 15, true},
        {L"//server/share/a", 15, true},
        {LR"(\\?\C:\a)", 7, false},
        {LR"(\\?\unc\server\share\a)", 21, true},
        {LR"(\\?\Volume{0}\a)", 14, false},
        {LR"(\\.\NUL)", 7, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(xo::files::rootLength(row.path), row.root) << xo::platform::toUtf8(row.path);
        EXPECT_EQ(xo::files::isNetworkPath(row.path), row.network) << xo::platform::toUtf8(row.path);
    }
}

TEST(PathText, CutsTheLastNameOff) {
    const struct {
        const char *path, *parent;
    } rows[] = {{"C:\\a\\b\\c.txt", "C:/a/b"},
                {"C:/a/b/", "C:/a"},
                {"C:\\a", "C:"},
                {"C:\\", ""},
                {"a", ""},
                {"", ""},
                {"/a", ""},
                {"\\\\s\\share\\x", "//s/share"},
                {"a//b", "a/"},
                {"\xC3\xA9 \xE6\x97\xA5\\b c", "\xC3\xA9 \xE6\x97\xA5"}};
    for (const auto& row : rows) EXPECT_EQ(xoDirUtils::GetParentPathUtf8(row.path), row.parent) << row.path;
}

TEST(PathText, TellsRelativePathsAndMakesThemAbsolute) {
    const struct {
        const char* path;
        bool relative;
    } rows[] = {{"", true}, {"a\\b", true}, {"..", true}, {"\\a", false}, {"C:\\a", false}, {"\\\\s\\x", false}};
    for (const auto& row : rows) EXPECT_EQ(xoDirUtils::IsPathRelativeUtf8(row.path), row.relative) << row.path;

    EXPECT_EQ(xoDirUtils::GetAbsolutePathUtf8("C:/a/./b/../\xC3\xA9"), "C:\\a\\\xC3\xA9");
    EXPECT_EQ(xoDirUtils::GetAbsolutePathUtf8(""), "");
    EXPECT_EQ(xoDirUtils::GetAbsolutePathUtf8("C:\\a\0b"s), "");
    const std::string name(400, 'n');
    EXPECT_EQ(xoDirUtils::GetAbsolutePathUtf8("C:\\x\\..\\" + name), "C:\\" + name);
}

TEST(PathText, FollowsTheWorkingDirectory) {
    const TestFolder folder;
    const std::string before = xoDirUtils::GetCurrentWorkingDirUtf8();
    ASSERT_TRUE(xoDirUtils::SetCurrentWorkingDirUtf8(folder.path()));
    EXPECT_EQ(xoDirUtils::GetCurrentWorkingDirUtf8(), folder.path());
    EXPECT_EQ(xoDirUtils::GetAbsolutePathUtf8("a"), folder.path("a"));
    EXPECT_FALSE(xoDirUtils::SetCurrentWorkingDirUtf8("missing"));
    EXPECT_FALSE(xoDirUtils::SetCurrentWorkingDirUtf8("..\0x"s));
    EXPECT_EQ(xoDirUtils::GetCurrentWorkingDirUtf8(), folder.path());
    ASSERT_TRUE(xoDirUtils::SetCurrentWorkingDirUtf8(before));
}

TEST(PathText, KnowsTheFolderOfTheProgram) {
    std::string folder;
    ASSERT_TRUE(xoDirUtils::GetFolderOfCurrentProcessUtf8(folder));
    EXPECT_TRUE(xoDirUtils::FileExistsUtf8(folder + "\\files.exe")) << folder;
}

TEST(PathText, FindsTheCaseOnDisk) {
    const TestFolder folder;
    const std::string deep = xo::tests::longPath(folder) + "\\Deepest";
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(folder.path("Sub Folder \xC3\x89")));
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(deep));
    folder.write("Sub Folder \xC3\x89/File.TXT", "");
    const std::string root = xoDirUtils::GetActualPathNameUtf8(folder.path());
    const std::string inLowerCase = "c" + root.substr(1);

    const struct {
        std::string asked, actual;
    } rows[] = {
        {"\\SUB FOLDER \xC3\xA9\\fILE.txt", "\\Sub Folder \xC3\x89\\File.TXT"},
        {"/sub folder \xC3\x89/", "/Sub Folder \xC3\x89/"},  // separators stay
        {"\\.\\sub folder \xC3\xA9\\..", "\\.\\Sub Folder \xC3\x89\\.."},
        {"\\sub folder \xC3\xA9\\Missing\\x", "\\Sub Folder \xC3\x89\\Missing\\x"},
        {"\\sub*\\file.txt", "\\sub*\\file.txt"},  // is no pattern
    };
    for (const auto& row : rows)
        EXPECT_EQ(xoDirUtils::GetActualPathNameUtf8(inLowerCase + row.asked), root + row.actual);
    const std::string parent = deep.substr(0, deep.size() - 7);
    EXPECT_EQ(xoDirUtils::GetActualPathNameUtf8(parent + "DEEPEST"), deep);  // beyond the shell's reach
    EXPECT_EQ(xoDirUtils::GetActualPathNameUtf8("c:\\"), "C:\\");
    EXPECT_EQ(xoDirUtils::GetActualPathNameUtf8("\\\\?\\c:\\"), "\\\\?\\C:\\");
    EXPECT_EQ(xoDirUtils::GetActualPathNameUtf8(""), "");
}

TEST(KnownFolders, ExistOnDisk) {
    const std::string folders[] = {xoDirUtils::GetFontFolderUtf8(), xoDirUtils::GetCommonAppDataFolderUtf8(),
                                   xoDirUtils::GetAppDataFolderUtf8(), xoDirUtils::GetPicturesFolderUtf8(),
                                   xoDirUtils::GetDocumentsFolderUtf8()};
    for (const std::string& folder : folders) EXPECT_TRUE(xoDirUtils::DirExistsUtf8(folder)) << folder;
    EXPECT_EQ(std::set<std::string>(std::begin(folders), std::end(folders)).size(), 5u);
}

TEST(TempFolder, IsWhatTheEnvironmentSays) {
    const std::wstring before = xo::platform::readWide(
        [](wchar_t* buffer, unsigned long size) { return ::GetEnvironmentVariableW(L"TEMP", buffer, size); });
    const struct {
        std::wstring value;
        std::string folder;
    } rows[] = {{L"C:\\t\u00E9mp\\\u65E5\\", "C:/t\xC3\xA9mp/\xE6\x97\xA5"}, {L"D:\\", "D:/"}, {L"C:/x//", "C:/x"}};
    for (const auto& row : rows) {
        ::SetEnvironmentVariableW(L"TEMP", row.value.c_str());
        EXPECT_EQ(xoDirUtils::GetTempFolderUtf8(), row.folder);
    }
    ::SetEnvironmentVariableW(L"TEMP", nullptr);
    const std::string fallback = xoDirUtils::GetTempFolderUtf8();
    EXPECT_TRUE(xoDirUtils::DirExistsUtf8(fallback)) << fallback;
    EXPECT_EQ(fallback.find('\\'), std::string::npos);
    EXPECT_NE(fallback.back(), '/');
    ::SetEnvironmentVariableW(L"TEMP", before.c_str());
}

TEST(TempFile, NamesAFileThatCanBeMade) {
    const TestFolder folder;
    const std::string deep = xo::tests::longPath(folder);
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(deep));
    const struct {
        std::string in, prefix, extension, start, end;
    } rows[] = {
        {folder.path(), "prefix", ".csv", folder.path("pre"), ".csv"},  // three characters of the prefix count
        {folder.path() + "/", "", "csv", folder.path() + "\\", ".csv"},
        {folder.path(), "a", "", folder.path("a"), ""},
        {folder.path(), "ab\xF0\x9F\x98\x80", ".\xC3\xA9", folder.path("ab"), ".\xC3\xA9"},  // no half of the pair
        {deep, "\xC3\xA9x", "tmp", deep + "\\\xC3\xA9x", ".tmp"},
        {"", "xo", ".z", "C:\\", ".z"},
    };
    for (const auto& row : rows) {
        const std::string path = xoDirUtils::GetTempFileUtf8(row.in, row.prefix, row.extension);
        EXPECT_EQ(path.substr(0, row.start.size()), row.start) << path;
        ASSERT_GT(path.size(), row.start.size() + row.end.size());
        EXPECT_EQ(path.substr(path.size() - row.end.size()), row.end) << path;
        EXPECT_FALSE(xoDirUtils::FileExistsUtf8(path)) << path;
        xo::tests::makeFile(path);
        EXPECT_TRUE(xoDirUtils::RemoveFileUtf8(path));
    }
    ASSERT_TRUE(xoDirUtils::ClearFolderUtf8(deep, true));
    EXPECT_EQ(xoDirUtils::GetTempFileUtf8(deep, "xo"), "");
    EXPECT_EQ(xoDirUtils::GetTempFileUtf8(folder.path("missing"), "xo"), "");
    EXPECT_EQ(xoDirUtils::GetTempFileUtf8(folder.path() + "\0x"s, "xo"), "");
    EXPECT_EQ(xoDirUtils::GetTempFileUtf8(folder.path(), "..\\"), "");
    EXPECT_EQ(xoDirUtils::GetTempFileUtf8(folder.path(), "xo", "/x"), "");
}

TEST(TempFile, GivesNoNameTwice) {
    const TestFolder folder;
    constexpr int perThread = 100;
    std::vector<std::string> names[8];
    std::vector<std::thread> threads;
    for (auto& mine : names)
        threads.emplace_back([&mine, path = folder.path()] {
            for (int i = 0; i < perThread; ++i) mine.push_back(xoDirUtils::GetTempFileUtf8(path, "xo"));
        });
    for (std::thread& thread : threads) thread.join();
    std::set<std::string> distinct;
    for (const auto& some : names) distinct.insert(some.begin(), some.end());
    distinct.erase("");
    EXPECT_EQ(distinct.size(), std::size(names) * perThread);
    EXPECT_TRUE(std::filesystem::is_empty(folder.widePath()));
}

}  // namespace
