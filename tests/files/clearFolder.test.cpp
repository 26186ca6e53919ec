#include <thread>

#include "files/filesFixture.h"

namespace {

using namespace std::string_literals;
using xo::xoDirUtils;
using xo::tests::hold;
using xo::tests::longPath;
using xo::tests::makeFile;
using xo::tests::makeReadOnly;
using xo::tests::TestFolder;

bool isEmpty(const std::filesystem::path& folder) { return std::filesystem::is_empty(folder); }

// A folder "top" with files and folders in it, some read-only.
class ClearFolder : public testing::Test {
protected:
    ClearFolder() {
        xoDirUtils::MkpathUtf8(path("a b/\xC3\xA9/c"));
        xoDirUtils::MkpathUtf8(path("empty"));
        for (const char* name : {"file", "read only", "a b/\xE6\x97\xA5", "a b/\xC3\xA9/c/file"}) makeFile(path(name));
        for (const char* name : {"read only", "a b/\xC3\xA9"}) makeReadOnly(path(name));
    }

    std::string path(const std::string& name = {}) const { return mFolder.path(name.empty() ? "top" : "top/" + name); }

    TestFolder mFolder;
    std::string mError = "untouched";
};

TEST_F(ClearFolder, LeavesAnEmptyFolder) {
    for (const char* end : {"", "/", "\\\\"}) {
        EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(path() + end, false, &mError));
        EXPECT_TRUE(isEmpty(mFolder.widePath() / "top"));
        makeFile(path("more"));
    }
    EXPECT_EQ(mError, "untouched");
}

TEST_F(ClearFolder, RemovesTheFolderItselfWhenAsked) {
    EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(path(), true, &mError));
    EXPECT_TRUE(isEmpty(mFolder.widePath()));
    EXPECT_FALSE(xoDirUtils::ClearFolderUtf8(path(), true, &mError));  // a missing one is a failure
    EXPECT_EQ(mError, "FindFirstFileW error 3");
}

TEST_F(ClearFolder, ReachesBeyondTheLengthLimit) {
    const std::string deep = longPath(mFolder);
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(deep));
    makeFile(deep + "\\file");
    makeReadOnly(deep + "\\file");
    EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(deep));  // from a long path
    EXPECT_TRUE(xoDirUtils::DirExistsUtf8(deep));
    makeFile(deep + "\\file");
    EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(mFolder.path()));  // from a short one
    EXPECT_TRUE(isEmpty(mFolder.widePath()));
}

// On a stack that a recursion over these folders would not fit into.
TEST_F(ClearFolder, NeedsNoStackForDepth) {
    std::string deep = path();
    for (int depth = 0; depth < 200; ++depth) deep += "\\d";
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(deep));
    const auto clear = [](void* folder) -> DWORD {
        return xoDirUtils::ClearFolderUtf8(*static_cast<std::string*>(folder)) ? 0 : 1;
    };
    std::string folder = path();
    const xo::platform::KernelHandle thread(
        ::CreateThread(nullptr, 0x20000, clear, &folder, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
    ASSERT_EQ(::WaitForSingleObject(thread.get(), INFINITE), WAIT_OBJECT_0);
    DWORD result = 1;
    EXPECT_TRUE(::GetExitCodeThread(thread.get(), &result) && result == 0) << result;
    EXPECT_TRUE(isEmpty(mFolder.widePath() / "top"));
}

TEST_F(ClearFolder, GoesOnAfterAFailure) {
    auto held = hold(path("a b/held"));
    EXPECT_FALSE(xoDirUtils::ClearFolderUtf8(path() + "\\", true, &mError));
    EXPECT_EQ(mError, "DeleteFileW error 32 for " + path() + "\\a b\\held");
    EXPECT_FALSE(xoDirUtils::FileExistsUtf8(path("file")));
    EXPECT_FALSE(xoDirUtils::FileExistsUtf8(path("a b/\xC3\xA9")));
    EXPECT_TRUE(xoDirUtils::FileExistsUtf8(path("a b/held")));
    held.reset();
    EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(path(), true));
}

TEST_F(ClearFolder, KeepsAFileReadOnlyThatItCannotDelete) {
    const auto held = xo::tests::open(path("read only"), GENERIC_READ, 0, OPEN_EXISTING);
    ASSERT_TRUE(held);
    EXPECT_FALSE(xoDirUtils::ClearFolderUtf8(path()));
    const DWORD attributes = ::GetFileAttributesW((mFolder.widePath() / "top" / "read only").c_str());
    EXPECT_EQ(attributes & FILE_ATTRIBUTE_READONLY, static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
}

TEST_F(ClearFolder, ReportsAFolderInUse) {
    const xo::platform::FileHandle held(::CreateFileW((mFolder.widePath() / "top" / "empty").c_str(), GENERIC_READ, 0,
                                                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    ASSERT_TRUE(held);
    EXPECT_FALSE(xoDirUtils::ClearFolderUtf8(path(), false, &mError));
    EXPECT_TRUE(mError == "FindFirstFileW error 32" || mError == "RemoveDirectoryW error 32") << mError;
    EXPECT_FALSE(xoDirUtils::FileExistsUtf8(path("a b")));
}

TEST_F(ClearFolder, DeletesNothingOnceCancelled) {
    bool cancel = true;
    for (const bool removeFolderItself : {false, true}) {
        EXPECT_FALSE(xoDirUtils::ClearFolderUtf8(path(), removeFolderItself, &mError, &cancel));
        EXPECT_EQ(mError, "Canceled");
        EXPECT_TRUE(xoDirUtils::FileExistsUtf8(path("file")) && xoDirUtils::FileExistsUtf8(path("a b/\xE6\x97\xA5")));
    }
    cancel = false;
    EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(path(), true, &mError, &cancel));
}

TEST_F(ClearFolder, IsCancelledByAnotherThread) {
    for (int attempts = 0; attempts < 20; ++attempts) {  // the other thread may come too late
        ASSERT_TRUE(xoDirUtils::MkpathUtf8(path()));
        for (int i = 0; i < 1000; ++i) makeFile(path("many" + std::to_string(i)));
        bool cancel = false;
        std::thread other([&] {
            while (xoDirUtils::FileExistsUtf8(path("many0")) && xoDirUtils::FileExistsUtf8(path("many999"))) {
            }
            *static_cast<volatile bool*>(&cancel) = true;
        });
        const bool cleared = xoDirUtils::ClearFolderUtf8(path(), true, &mError, &cancel);
        other.join();
        if (cleared) continue;
        EXPECT_EQ(mError, "Canceled");
        EXPECT_FALSE(isEmpty(mFolder.widePath() / "top"));
        return;
    }
    FAIL() << "never seen";
}

// Whatever the path turns into, it is never the working directory or the root of the drive.
TEST_F(ClearFolder, RefusesPathsThatNameNoFolder) {
    const std::string before = xoDirUtils::GetCurrentWorkingDirUtf8();
    ASSERT_TRUE(xoDirUtils::SetCurrentWorkingDirUtf8(path()));
    for (const std::string& folder : {""s, " "s, "..."s, "*"s, "\0"s, path() + "\0"s, "missing"s, "file"s, "\\\\"s}) {
        mError.clear();
        EXPECT_FALSE(xoDirUtils::ClearFolderUtf8(folder, false, &mError)) << folder;
        EXPECT_EQ(mError.find("FindFirstFileW error "), 0u) << folder << ": " << mError;
        EXPECT_TRUE(xoDirUtils::FileExistsUtf8(path("file"))) << folder;
    }
    ASSERT_TRUE(xoDirUtils::SetCurrentWorkingDirUtf8(before));
}

// Under Wine a link to a folder that holds something cannot be removed at all.
TEST_F(ClearFolder, NeverFollowsALink) {
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(mFolder.path("target")));
    makeFile(mFolder.path("target/kept"));
    const xo::tests::FolderLink link(mFolder, "top/link", "target");
    if (!link.isMade()) GTEST_SKIP() << "no way to make a link here";
    ASSERT_TRUE(xoDirUtils::FileExistsUtf8(path("link/kept")));

    const bool cleared = xoDirUtils::ClearFolderUtf8(path(), false, &mError);
    EXPECT_TRUE(mFolder.has("target/kept"));
    EXPECT_FALSE(xoDirUtils::FileExistsUtf8(path("file")));
    EXPECT_EQ(mError, cleared ? "untouched" : "RemoveDirectoryW error 145");
    EXPECT_EQ(link.isMade(), !cleared);
}

TEST_F(ClearFolder, TakesALinkGivenAsTheFolderAway) {
    const xo::tests::FolderLink link(mFolder, "link", "top");
    if (!link.isMade()) GTEST_SKIP() << "no way to make a link here";
    const bool cleared = xoDirUtils::ClearFolderUtf8(mFolder.path("link"), true, &mError);
    EXPECT_TRUE(xoDirUtils::FileExistsUtf8(path("file")));
    EXPECT_EQ(mError, cleared ? "untouched" : "RemoveDirectoryW error 145");
    EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(mFolder.path(link.isMade() ? "link" : "top")));  // what is behind it
    EXPECT_TRUE(isEmpty(mFolder.widePath() / "top"));
}

}  // namespace
