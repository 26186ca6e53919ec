// The log file as a sink of lines. It is opened for each line or stays open, may be shared with other processes, and is
// rotated into numbered backups.
#ifndef XO_LOG_LOGFILE_H
#define XO_LOG_LOGFILE_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/handle.h"
#include "xoSystem/xoMutex.h"

namespace xo::log {

// An object is used by one thread at a time, under the lock of the log.
class LogFile {
public:
    // The cross-process mutex and the open file during one write. A separate object, because a processor fault ends a
    // write without destructors; what it held is then released by a call of release().
    class Access {
    public:
        Access() = default;
        ~Access() { release(); }
        Access(const Access&) = delete;
        Access& operator=(const Access&) = delete;

        // Waits for the mutex without limit. Null does nothing: the file is not shared.
        void lock(xoMutexSystem* mutex) XO_NO_THREAD_SAFETY_ANALYSIS;
        // Closes the file and unlocks the mutex. May be called more than once.
        void release() XO_NO_THREAD_SAFETY_ANALYSIS;

        platform::FileHandle file;

    private:
        xoMutexSystem* mHeld = nullptr;
    };

    // Prepares the file for lines. False, with nothing installed, when it does not exist and cannot be created, or
    // cannot be opened to be kept open. The flags are those of xoLogFileFlag. With shared true, share is called.
    bool install(const std::string& path, int flags, std::int64_t maxSizeBytes, int backupCount, bool shared);
    void remove() { *this = LogFile(); }

    // From now on a mutex named after the path excludes other processes during each access. Does nothing when no file
    // is installed, or when it stays open.
    void share();

    bool isInstalled() const { return !mPath.empty(); }
    const std::string& path() const { return mPath; }

    // Appends the line and a line end by one WriteFile, after rotating a file that is too large. Failures are ignored.
    // After a fault the caller releases the access. The second is that of the line, by the system clock.
    void writeLine(std::string& line, std::int64_t second, Access& access);

private:
    // Rotates or empties the file if the flags ask for it, and creates it with a byte order mark if it does not exist.
    bool prepare(int flags);
    // A limit below 1 means none.
    bool hasLimit() const { return mMaxSizeBytes >= 1; }
    // Opens the file for appending, after a rotation if it is too large.
    platform::FileHandle openForLine();
    bool isTooLarge(std::int64_t sizeBytes);
    bool rotate(std::int64_t sizeBytes);
    // True when the file is empty, or was moved to the backups.
    bool truncate() const;
    bool moveAside() const;
    bool openBackupsToMove(std::vector<platform::FileHandle>& toMove) const;
    std::wstring backupPath(int index) const;

    // With the file kept open.
    void writeToKept(std::string_view line, std::int64_t second);
    void openKept();
    platform::FileHandle openToKeep(DWORD disposition) const;

    std::string mPath;      // as installed: it names the mutex
    std::wstring mApiPath;  // absolute, as the W calls take it
    std::int64_t mMaxSizeBytes = 0;
    std::int64_t mRetrySizeBytes = 0;  // above this size a failed rotation is tried again; 0 after one that succeeded
    int mBackupCount = 0;
    bool mKeepsOpen = false;
    platform::FileHandle mKept;             // null when the last attempt to open it failed
    std::int64_t mKeptSizeBytes = 0;        // maintained only with a limit
    std::int64_t mCheckedSecond = 0;        // when mKept was last found under its path
    std::unique_ptr<xoMutexSystem> mMutex;  // null unless shared
};

}  // namespace xo::log

#endif
