#include "xoSystem/xoLockFile.h"

#include <gtest/gtest.h>

#include "support/allocationCount.h"
#include "support/child.h"
#include "support/importHook.h"
#include "support/temporaryFolder.h"
#include "xoSystem/xoThread.h"

namespace {

using xo::xoLockFile;

class LockFile : public testing::Test {
protected:
    xo::tests::TemporaryFolder mFolder;
    const std::string mName = "x \xC3\xA9\xE6\x97\xA5.lock";
    const std::string mPath = mFolder.path(mName);
    xoLockFile mLock;
    xoLockFile mOther;
    bool mExisted = false;
};

TEST_F(LockFile, PassesItsOwnTest) {
    mFolder.write("file_ex.lock", "left by a crash");
    EXPECT_TRUE(xoLockFile::UnitTestUtf8(mFolder.path()));
    EXPECT_FALSE(mFolder.has("file_ex.lock") || mFolder.has("file_shared.lock"));
    EXPECT_FALSE(xoLockFile::UnitTestUtf8(mFolder.path("missing")));
}

TEST_F(LockFile, ExcludesOthersAndNamesItsThread) {
    const std::string note = "Lock from thread : " + xo::xoThread::CurrentThreadId();
    mFolder.write(mName, std::string(note.size() + 3, '.'));
    EXPECT_TRUE(mLock.takeLockUtf8(mPath, &mExisted, 0));
    EXPECT_TRUE(std::exchange(mExisted, false));
    EXPECT_EQ(mFolder.read(mName), "<no file " + mName + ">") << "not even for reading";
    for (const int type : {0, 1, 7}) {
        EXPECT_FALSE(mOther.takeLockUtf8(mPath, &mExisted, type));
        EXPECT_TRUE(std::exchange(mExisted, false));
        EXPECT_FALSE(mOther.isLocked());
    }
    EXPECT_TRUE(mLock.releaseLock(false));
    EXPECT_FALSE(mLock.releaseLock(false));
    EXPECT_EQ(mFolder.read(mName), note + "...") << "the end of what was there stays";

    EXPECT_TRUE(mLock.takeLockUtf8(mPath));
    EXPECT_TRUE(mLock.takeLockUtf8(mPath, &mExisted)) << "its own lock is no obstacle";
    EXPECT_FALSE(mExisted) << "that one was ended first, with its file";
    EXPECT_TRUE(mLock.releaseLock(true));
    EXPECT_FALSE(mFolder.has(mName));
}

TEST_F(LockFile, CannotBeTakenWhereAFileCannotBeOpened) {
    std::filesystem::create_directory(mFolder.widePath() / "folder");
    const std::pair<std::string, bool> rows[] = {{mFolder.path("folder"), true},
                                                 {mFolder.path("missing/x.lock"), false},
                                                 {mPath + std::string("\0.txt", 5), false},
                                                 {"", false}};
    for (const auto& [path, existed] : rows) {
        EXPECT_TRUE(mLock.takeLockUtf8(mPath));
        mExisted = !existed;
        EXPECT_FALSE(mLock.takeLockUtf8(path, &mExisted)) << path;
        EXPECT_EQ(mExisted, existed) << path;
        EXPECT_FALSE(mLock.isLocked() || mFolder.has(mName)) << "the lock before is gone all the same";
    }
}

TEST_F(LockFile, TakesLongBrokenAndRelativePaths) {
    const std::string longFolder = mFolder.path(std::string(150, 'a') + "/" + std::string(150, 'b'));
    ASSERT_TRUE(xo::xoDirUtils::MkpathUtf8(longFolder));
    EXPECT_TRUE(mLock.takeLockUtf8(longFolder + "/x.lock"));

    EXPECT_TRUE(mLock.takeLockUtf8(mFolder.path() + "/\xFF.lock") && mFolder.has("\xEF\xBF\xBD.lock")) << "not UTF-8";

    const auto workingFolder = std::filesystem::current_path();
    std::filesystem::current_path(mFolder.widePath());
    EXPECT_TRUE(mLock.takeLockUtf8("relative.lock"));
    std::filesystem::current_path(workingFolder);
    EXPECT_TRUE(mLock.releaseLock());
    EXPECT_FALSE(mFolder.has("relative.lock")) << "deleted where it was made";
}

// Another thread changes the working folder, and takes all memory, as soon as a file is opened.
std::wstring foreignFolder;
HANDLE WINAPI openAndDisturb(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                             DWORD flags, HANDLE model) {
    const HANDLE file =
        xo::tests::ImportHook::behind(&openAndDisturb)(path, access, share, security, disposition, flags, model);
    const DWORD error = ::GetLastError();
    ::SetCurrentDirectoryW(foreignFolder.c_str());
    xo::tests::AllocationCount::refuseAll(true);
    ::SetLastError(error);
    return file;
}

TEST_F(LockFile, OpensAndDeletesOneFile) {
    foreignFolder = (mFolder.widePath() / "foreign").wstring();
    std::filesystem::create_directory(foreignFolder);
    mFolder.write("foreign/x.lock", "foreign");
    const auto workingFolder = std::filesystem::current_path();
    for (const bool exists : {false, true}) {
        if (exists) mFolder.write("x.lock", "left");
        std::filesystem::current_path(mFolder.widePath());
        bool isTaken = false;
        {
            const xo::tests::AllocationCount allocations;
            const xo::tests::ImportHook hook("xoSystem.dll", "CreateFileW", &openAndDisturb);
            ASSERT_TRUE(allocations.isCounting() && hook.isInstalled());
            {
                xoLockFile lock;
                isTaken = lock.takeLockUtf8("x.lock", &mExisted);
            }
            xo::tests::AllocationCount::refuseAll(false);
        }
        std::filesystem::current_path(workingFolder);
        EXPECT_TRUE(isTaken) << exists;
        EXPECT_EQ(mExisted, exists);
        EXPECT_FALSE(mFolder.has("x.lock")) << exists;
        EXPECT_EQ(mFolder.read("foreign/x.lock"), "foreign") << exists;
    }
}

TEST_F(LockFile, EndsWithTheFirstOfItsCopies) {
    EXPECT_TRUE(mLock.takeLockUtf8(mPath));
    EXPECT_TRUE(xoLockFile(mLock).isLocked());
    EXPECT_FALSE(mLock.isLocked());
    EXPECT_TRUE(mOther.takeLockUtf8(mPath)) << "perhaps with the handle value that the copies had";
    EXPECT_FALSE(mLock.releaseLock(true));
    EXPECT_FALSE(mLock.takeLockUtf8(mPath)) << "the other one holds it still";
}

TEST_F(LockFile, EndsWithItsProcess) {
    const xo::tests::Child holder(L"lockFileHolder", L"\"" + (mFolder.widePath() / L"held.lock").wstring() + L"\"");
    ASSERT_TRUE(holder.isStarted());
    for (int i = 0; i < 2000 && !mFolder.has("held.lock"); ++i) ::Sleep(5);  // the child has no other way to signal
    const std::string path = mFolder.path("held.lock");
    EXPECT_FALSE(mLock.takeLockUtf8(path));
    holder.kill();
    EXPECT_EQ(holder.wait(), 9);
    EXPECT_TRUE(mLock.takeLockUtf8(path, &mExisted));
    EXPECT_TRUE(mExisted) << "the file was left, but blocks nobody";
}

}  // namespace
