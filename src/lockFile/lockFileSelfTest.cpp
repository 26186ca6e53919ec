// The self-test, for an installation to run in the folder that it is going to use: some network file systems have other
// sharing rules.
#include "xoSystem/xoLockFile.h"

namespace xo {
namespace {

// Whether taking the lock has the expected result, and finds or misses the file as expected.
bool takes(xoLockFile& lock, const std::string& path, xoLockFile::LockType type, bool expected, bool expectedExisting) {
    bool existed = !expectedExisting;  // the wrong value, so that a call that does not set it is noticed
    return lock.takeLockUtf8(path, &existed, type) == expected && lock.isLocked() == expected &&
           existed == expectedExisting;
}

// Removes a file that an interrupted test has left.
bool clearsUp(xoLockFile& lock, const std::string& path) {
    return lock.takeLockUtf8(path) && lock.releaseLock(/*removeFile=*/true);
}

bool testExclusive(const std::string& path) {
    constexpr auto kExclusive = xoLockFile::LockTypeExclusive;
    xoLockFile first;
    xoLockFile second;
    return clearsUp(first, path) &&                         //
           takes(first, path, kExclusive, true, false) &&   //
           takes(second, path, kExclusive, false, true) &&  //
           first.releaseLock(/*removeFile=*/true) &&        //
           takes(second, path, kExclusive, true, false) &&  // a new file
           takes(first, path, kExclusive, false, true) &&   //
           second.releaseLock(/*removeFile=*/false) &&      //
           !second.releaseLock(/*removeFile=*/false) &&     //
           takes(first, path, kExclusive, true, true) &&    // the file that was left
           takes(second, path, xoLockFile::LockTypeShared, false, true) && first.releaseLock(/*removeFile=*/true);
}

bool testShared(const std::string& path) {
    constexpr auto kShared = xoLockFile::LockTypeShared;
    xoLockFile first;
    xoLockFile second;
    return clearsUp(first, path) &&                                            //
           takes(first, path, kShared, true, false) &&                         //
           takes(second, path, kShared, true, true) &&                         //
           second.releaseLock(/*removeFile=*/false) &&                         //
           takes(second, path, xoLockFile::LockTypeExclusive, false, true) &&  //
           first.releaseLock(/*removeFile=*/false) &&                          //
           takes(second, path, xoLockFile::LockTypeExclusive, true, true) &&   //
           takes(first, path, kShared, false, true) && second.releaseLock(/*removeFile=*/true);
}

}  // namespace

bool xoLockFile::UnitTestUtf8(const std::string& directory) {
    return testExclusive(directory + "/file_ex.lock") && testShared(directory + "/file_shared.lock");
}

}  // namespace xo
