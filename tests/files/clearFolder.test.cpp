#include <algorithm>
#include <cstdlib>

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
    EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(mTop, true, &mError));
    EXPECT_FALSE(has("top"));
    EXPECT_EQ(mError, "untouched");
    EXPECT_FALSE(xoDirUtils::ClearFolderUtf8(mTop, true, &mError));  // a missing one is a failure
    EXPECT_EQ(mError, "FindFirstFileW error 3");
}

std::uintptr_t lowestFrame, highestFrame;

BOOL WINAPI removeAndNoteFrame(const wchar_t* path) {
    lowestFrame = (std::min)(lowestFrame, reinterpret_cast<std::uintptr_t>(&path));
    highestFrame = (std::max)(highestFrame, reinterpret_cast<std::uintptr_t>(&path));
    return ImportHook::behind(&removeAndNoteFrame)(path);
}

TEST_F(ClearFolder, ReachesBeyondTheLengthLimitAtNoCostOfStack) {
    std::string deep = mTop;
    for (int depth = 0; depth < 40; ++depth) deep += "\\folder \xC3\xA9";
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(deep));
    makeFile(deep + "\\file", FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(deep));  // from a long path
    EXPECT_TRUE(xoDirUtils::DirExistsUtf8(deep));
    makeFile(deep + "\\file");
    const ImportHook hook("xoSystem.dll", "RemoveDirectoryW", &removeAndNoteFrame);
    lowestFrame = UINTPTR_MAX, highestFrame = 0;
    EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(mTop));  // from a short one
    EXPECT_TRUE(isEmpty());
    ASSERT_LE(lowestFrame, highestFrame);
    EXPECT_LT(highestFrame - lowestFrame, 1000u);  // less than any recursion
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

BOOL WINAPI deleteAndCancel(const wchar_t* path) {
    cancel = true;
    return ImportHook::behind(&deleteAndCancel)(path);
}

TEST_F(ClearFolder, DeletesNothingOnceCancelled) {
    const ImportHook hook("xoSystem.dll", "DeleteFileW", &deleteAndCancel);
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
    for (const std::string& folder : {""s, " "s, "..."s, "*"s, "\0"s, mTop + "\0"s, "missing"s, "file"s, "\\\\"s}) {
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
