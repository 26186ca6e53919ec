// xoLockFile: marks a resource as in use, among threads and processes, by holding a file open.
//
//     xo::xoLockFile lock;
//     if (!lock.takeLockUtf8(folder + "/project.lock")) return busy();
//
// The lock is the open file, not its existence: it ends with the object, and with its process even after a crash, and a
// file that was left behind blocks nobody. The file contains the identifier of the thread that took the lock, for a
// person who looks.
//
// An object belongs to one thread; any number of objects may name the same file. Nothing throws except std::bad_alloc,
// and nothing is logged.
//
// Copies share one lock: whichever of them is released or destroyed first ends it for all. The others are then not
// locked either, and do not touch the file. So copy an object only while it holds no lock.
#ifndef XOSYSTEM_XOLOCKFILE_H
#define XOSYSTEM_XOLOCKFILE_H

#include <memory>
#include <string>

#include "xoSystem/xoExport.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

template <class E>
class xoEnumList;

class XOSYSTEM_API xoLockFile {
public:
    // How others may open the file meanwhile. Any other number counts as exclusive.
    enum LockType : int {
        LockTypeExclusive = 0,  // not at all
        LockTypeShared = 1      // with shared locks
    };

    xoLockFile();
    // Shares the lock of the other, as described above.
    xoLockFile(const xoLockFile& other);
    // A lock that this object held ends as by releaseLock(true).
    xoLockFile& operator=(const xoLockFile& other);
    // Ends the lock and deletes the file.
    ~xoLockFile();

    // Opens the file, creates it if it does not exist, and holds it. Never waits. A lock that this object already holds
    // is ended first and its file deleted, even if the path is the same.
    //
    // True when the lock is held afterwards. False when somebody else holds the file, and when it cannot be opened for
    // reading and writing: the path is empty, has a NUL inside or names a folder, the file is read-only, or the folder
    // does not exist. *alreadyExisted, if not null, receives whether the file existed before, also on failure.
    //
    // The path may be relative, and of any length. A path that is not UTF-8 names the file in which each broken
    // sequence is U+FFFD, so that different broken paths may name one lock.
    bool takeLockUtf8(const std::string& path, bool* alreadyExisted = nullptr, LockType type = LockTypeExclusive);
    bool takeLockUtf8(const std::string& path, bool* alreadyExisted, int type) {
        return takeLockUtf8(path, alreadyExisted, static_cast<LockType>(type));
    }

    // Ends the lock and, if removeFile is true, deletes the file; a file that somebody else has opened meanwhile, or
    // shares, stays. False when no lock is held.
    bool releaseLock(bool removeFile = true);

    // Whether this object holds a lock.
    bool isLocked() const;

    // Tries these rules on the files "file_ex.lock" and "file_shared.lock" in the folder, and deletes them. True when
    // all hold; false when the folder does not exist.
    static bool UnitTestUtf8(const std::string& directory);

private:
    struct Lock;
    std::shared_ptr<Lock> mLock;  // null when no lock is held
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoLockFile::LockType> xoEnumEntries(xoLockFile::LockType);

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
