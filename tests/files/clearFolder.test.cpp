#include <climits>

#include "files/filesFixture.h"
#include "support/importHook.h"

namespace {

using namespace std::string_literals;
using xo::xoDirUtils;
using xo::tests::ImportHook;
using xo::tests::makeFile;

// A folder "top" with files and folders in it, some read-only.
class ClearFolder : public xo::tests::FolderTest {
protected:
    ClearFolder() {
        xoDirUtils::MkpathUtf8(path("top/a b/\xC3\xA9/c"));
        xoDirUtils::MkpathUtf8(path("top/empty"));
        for (const char* name : {"top/file", "top/a b/\xE6\x97\xA5", "top/a b/\xC3\xA9/c/file"}) makeFile(path(name));
        makeFile(path("top/read only"), FILE_ATTRIBUTE_READONLY);
        ::SetFileAttributesW((mWideTop / "a b" / L"\u00E9").c_str(), FILE_ATTRIBUTE_READONLY);
    }

    bool has(const std::string& name) const { return xoDirUtils::FileExistsUtf8(path(name)); }
    bool isEmpty() const { return std::filesystem::is_empty(mWideTop); }

    const std::filesystem::path mWideTop = mFolder.widePath() / "top";
    const std::string mTop = path("top");
};

TEST_F(ClearFolder, LeavesAnEmptyFolderOrNone) {
    for (const char* end : {"", "/", "\\\\"}) {
        EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(mTop + end, false, &mError));
        EXPECT_TRUE(isEmpty());
        makeFile(path("top/more"));
    }
    makeFile(mDeep + "\\read only", FILE_ATTRIBUTE_READONLY);
    for (const std::string& folder : {mTop, mDeep}) EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(folder, true, &mError));
    EXPECT_FALSE(has("top") || xoDirUtils::DirExistsUtf8(mDeep));
    EXPECT_EQ(mError, "untouched");
    EXPECT_FALSE(xoDirUtils::ClearFolderUtf8(mTop, true, &mError));  // a missing one is a failure
    EXPECT_EQ(mError, "FindFirstFileW error 3");
}

// The answers of the system to the listing of folders: those after the first few are replaced.
int answersLeft = 0;
DWORD listingError = ERROR_SUCCESS;
BOOL WINAPI listSome(HANDLE folder, FILE_INFO_BY_HANDLE_CLASS kind, void* buffer, DWORD size) {
    if (kind != FileFullDirectoryInfo || answersLeft-- > 0)
        return ImportHook::behind(&listSome)(folder, kind, buffer, size);
    ::SetLastError(listingError);
    return FALSE;
}

TEST_F(ClearFolder, ReportsWhatItCannotListToTheEnd) {
    const ImportHook hook("xoSystem.dll", "GetFileInformationByHandleEx", &listSome);
    const struct {
        int answers;
        DWORD error;
        const char* report;
        bool isCleared;
    } rows[] = {{0, ERROR_FILE_NOT_FOUND, "untouched", false},  // so ends the root of an empty volume
                {0, ERROR_ACCESS_DENIED, "FindFirstFileW error 5", false},
                {1, ERROR_NETNAME_DELETED, "FindFirstFileW error 64", true}};
    ASSERT_TRUE(xoDirUtils::ClearFolderUtf8((answersLeft = INT_MAX, mTop)));
    for (const auto& row : rows) {
        makeFile(path("top/more"));
        answersLeft = row.answers, listingError = row.error, mError = "untouched";
        const bool isCleared = xoDirUtils::ClearFolderUtf8(mTop, false, &mError);
        EXPECT_EQ(isCleared, mError == "untouched");
        EXPECT_EQ(mError, row.report);
        EXPECT_EQ(isEmpty(), row.isCleared);
    }
    answersLeft = INT_MAX;
}

// The attribute is the file's, which has another name elsewhere.
TEST_F(ClearFolder, LeavesTheAttributesOfAFileWithAnotherName) {
    const std::wstring other = (mFolder.widePath() / "other").wstring();
    ASSERT_TRUE(::CreateHardLinkW(other.c_str(), (mWideTop / "read only").c_str(), nullptr));
    EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(mTop));
    EXPECT_TRUE(isEmpty());
    EXPECT_EQ(::GetFileAttributesW(other.c_str()) & FILE_ATTRIBUTE_READONLY, DWORD{FILE_ATTRIBUTE_READONLY});
    ::SetFileAttributesW(other.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(ClearFolder, GoesOnAfterAFailureAndReportsTheFirst) {
    makeFile(path("top/a b/held"), FILE_ATTRIBUTE_READONLY);
    auto file = xo::tests::open(path("top/a b/held"), GENERIC_READ, OPEN_EXISTING);
    auto folder = xo::tests::open(path("top/a b/\xC3\xA9"), GENERIC_READ, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    EXPECT_FALSE(xoDirUtils::ClearFolderUtf8(mTop + "\\", true, &mError));
    EXPECT_EQ(mError, "DeleteFileW error 32 for " + mTop + "\\a b\\held");
    EXPECT_FALSE(has("top/file") || has("top/empty"));
    const DWORD attributes = ::GetFileAttributesW((mWideTop / "a b" / "held").c_str());
    EXPECT_EQ(attributes & FILE_ATTRIBUTE_READONLY, DWORD{FILE_ATTRIBUTE_READONLY});
    file.reset();
    EXPECT_FALSE(xoDirUtils::ClearFolderUtf8(mTop, false, &mError));
    EXPECT_TRUE(mError == "FindFirstFileW error 32" || mError == "RemoveDirectoryW error 32") << mError;
    EXPECT_FALSE(has("top/a b/held"));
    folder.reset();
    EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(mTop, true));
}

bool cancel;

BOOL WINAPI deleteAndCancel(HANDLE file, FILE_INFO_BY_HANDLE_CLASS kind, void* info, DWORD size) {
    cancel = true;
    return ImportHook::behind(&deleteAndCancel)(file, kind, info, size);
}

TEST_F(ClearFolder, DeletesNothingOnceCancelled) {
    const ImportHook hook("xoSystem.dll", "SetFileInformationByHandle", &deleteAndCancel);
    cancel = false;
    for (const bool removeFolderItself : {true, false, true}) {  // cancelled by the first deletion of all
        EXPECT_FALSE(xoDirUtils::ClearFolderUtf8(mTop, removeFolderItself, &mError, &cancel));
        EXPECT_EQ(mError, "Canceled");
        EXPECT_NE(has("top/file"), has("top/read only"));
        EXPECT_TRUE(has("top/empty") && has("top/a b/\xE6\x97\xA5"));
    }
    const std::string last = path("top/a b/\xC3\xA9/c");  // which holds one file only
    EXPECT_FALSE(xoDirUtils::ClearFolderUtf8(last, true, &mError, &(cancel = false)));
    EXPECT_TRUE(xoDirUtils::DirExistsUtf8(last));
}

// Whatever the path turns into, it is never the working directory or the root of the drive.
TEST_F(ClearFolder, RefusesPathsThatNameNoFolder) {
    const xo::tests::WorkingFolder here(mTop);
    const std::string wraps = "\\\\?\\" + mTop + std::string(32768, 'x');  // to mTop, in 16 bits
    for (const std::string& folder :
         {""s, " "s, "..."s, "*"s, "\0"s, mTop + "\0"s, "missing"s, "file"s, "\\\\"s, wraps}) {
        mError.clear();
        EXPECT_FALSE(xoDirUtils::ClearFolderUtf8(folder, false, &mError)) << folder;
        EXPECT_EQ(mError.find("FindFirstFileW error "), 0u) << folder << ": " << mError;
        EXPECT_TRUE(has("top/file")) << folder;
    }
}

// Under Wine a link to a folder that holds something cannot be removed at all.
TEST_F(ClearFolder, NeverFollowsALink) {
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(path("target")));
    makeFile(path("target/kept"));
    for (const bool inside : {false, true}) {
        xo::tests::makeLink(mWideTop / "link", "../target");
        if (!xo::tests::isLink(mWideTop / "link")) GTEST_SKIP() << "no way to make a link here";
        const bool cleared = xoDirUtils::ClearFolderUtf8(inside ? mTop : path("top/link"), !inside, &mError);
        EXPECT_TRUE(has("target/kept"));
        EXPECT_EQ(has("top/file"), !inside);
        EXPECT_EQ(mError, cleared ? "untouched" : "RemoveDirectoryW error 145");
        EXPECT_EQ(xo::tests::isLink(mWideTop / "link"), !cleared);
    }
    xo::tests::makeLink(mWideTop / "link", "../target");
    EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(path("top/link")));  // asks for what is behind it
    EXPECT_FALSE(has("target/kept"));
    EXPECT_TRUE(xo::tests::isLink(mWideTop / "link"));
    xo::tests::runUnix(mWideTop, L"rm link");  // elsewhere it goes with the folder
}

}  // namespace
