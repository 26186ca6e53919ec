#include <thread>

#include "files/filesFixture.h"

namespace {

using namespace std::string_literals;
using xo::xoDirUtils;
using xo::tests::hold;
using xo::tests::longPath;
using xo::tests::makeFile;
using xo::tests::makeReadOnly;
using xo::tests::TemporaryFolder;

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

    TemporaryFolder mFolder;
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

TEST_F(ClearFolder, SurvivesVeryDeepTrees) {
    std::string deep = path();
    for (int depth = 0; depth < 250; ++depth) deep += "\\d";
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(deep));
    std::thread smallStack([&] { EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(path(), false, &mError)) << mError; });
    smallStack.join();
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

TEST_F(ClearFolder, StopsWhenCancelled) {
    bool cancel = true;
    EXPECT_FALSE(xoDirUtils::ClearFolderUtf8(path(), true, &mError, &cancel));
    EXPECT_EQ(mError, "Canceled");
    EXPECT_TRUE(xoDirUtils::FileExistsUtf8(path("file")) && xoDirUtils::FileExistsUtf8(path("a b/\xE6\x97\xA5")));

    for (int i = 0; i < 2000; ++i) makeFile(path("many" + std::to_string(i)));
    cancel = false;
    std::thread other([&] {
        while (xoDirUtils::FileExistsUtf8(path("many0")) && xoDirUtils::FileExistsUtf8(path("many1999"))) {
        }
        *static_cast<volatile bool*>(&cancel) = true;
    });
    EXPECT_FALSE(xoDirUtils::ClearFolderUtf8(path(), true, &mError, &cancel));
    other.join();
    EXPECT_EQ(mError, "Canceled");
    EXPECT_FALSE(isEmpty(mFolder.widePath() / "top"));
    cancel = false;
    EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(path(), true, &mError, &cancel));
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

TEST_F(ClearFolder, NeverFollowsALink) {
    makeFile(mFolder.path("kept"));
    std::filesystem::create_directory(mFolder.widePath() / "target");
    makeFile(mFolder.path("target/kept"));
    if (!xo::tests::makeFolderLink(mFolder, "top/link", "../target") &&
        !xo::tests::makeFolderLink(mFolder, "top/link", "target"))
        GTEST_SKIP() << "no way to make a link here";
    ASSERT_TRUE(xoDirUtils::FileExistsUtf8(path("link/kept")));
    const bool cleared = xoDirUtils::ClearFolderUtf8(path(), false, &mError);
    EXPECT_TRUE(mFolder.has("target/kept"));
    EXPECT_FALSE(xoDirUtils::FileExistsUtf8(path("file")));
    if (cleared) {
        EXPECT_TRUE(isEmpty(mFolder.widePath() / "top"));
    } else {
        EXPECT_EQ(mError, "RemoveDirectoryW error 145");  // Wine removes no link to a folder that holds something
        std::filesystem::remove(mFolder.widePath() / "top" / "link");
    }
}

}  // namespace
