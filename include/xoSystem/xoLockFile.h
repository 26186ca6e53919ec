// xoLockFile: marks something as in use, among threads and processes, by holding a file open.
//
//     xo::xoLockFile lock;
//     if (!lock.takeLockUtf8(folder + "/project.lock")) return busy();
//
// The lock is the open file, not its existence: it ends with the object and also when its process crashes, and a file
// that was left behind blocks nobody. The file says which thread took the lock, for a person who looks.
//
// An object belongs to one thread; any number of objects may name the same file. Nothing here throws, short of memory
// running out, and nothing is logged.
//
// Copies share the lock, so that it ends with the first of them that releases it or is destroyed: copy an object only
// while it is not locked. The other copies are then not locked either, and leave the file alone.
#ifndef XOSYSTEM_XOLOCKFILE_H
#define XOSYSTEM_XOLOCKFILE_H

#include <memory>
#include <string>

#include "xoSystem/xoExport.h"

namespace xo {

class XOSYSTEM_API xoLockFile {
public:
    // How others may hold the file meanwhile. Any other number counts as exclusive.
    enum LockType : int {
        LockTypeExclusive = 0,  // nobody else may open the file
        LockTypeShared = 1      // other shared locks may be held at the same time
    };

    xoLockFile();
    // Shares the lock of the other, as said above.
    xoLockFile(const xoLockFile& other);
    // A lock that this object held ends as by releaseLock(true).
    xoLockFile& operator=(const xoLockFile& other);
    // Ends the lock and deletes the file.
    ~xoLockFile();

    // Opens the file, making it where it is missing, and holds it. A lock that this object holds already is ended first
    // and its file deleted. True when the lock is held afterwards; false when somebody else holds the file, and when it
    // cannot be opened for writing (a folder, a read-only file, a missing path). alreadyExisted, if not null, tells
    // whether the file was there before. The path may be relative, and of any length.
    bool takeLockUtf8(const std::string& path, bool* alreadyExisted = nullptr, LockType type = LockTypeExclusive);
    bool takeLockUtf8(const std::string& path, bool* alreadyExisted, int type) {
        return takeLockUtf8(path, alreadyExisted, static_cast<LockType>(type));
    }

    // Ends the lock and, if asked, deletes the file. False when no lock is held.
    bool releaseLock(bool removeFile = true);

    // Whether this object holds a lock.
    bool isLocked() const;

    // Tries all the rules on two files in the folder, "file_ex.lock" and "file_shared.lock". True when all hold.
    static bool UnitTestUtf8(const std::string& directory);

private:
    struct Handle;

    std::string mPath;                // absolute; empty when no lock is held
    std::shared_ptr<Handle> mHandle;  // null when no lock is held
};

}  // namespace xo

#endif
