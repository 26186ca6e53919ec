// The log file as a sink of lines: opened for each line, shared with other processes, rotated into numbered backups.
#ifndef XO_LOG_LOGFILE_H
#define XO_LOG_LOGFILE_H

#include <cstdint>
#include <memory>
#include <string>

#include "platform/handle.h"
#include "xoSystem/xoMutex.h"

namespace xo::log {

// Not safe for threads by itself; the log's lock covers it.
class LogFile {
public:
    // What one write holds: the cross-process mutex and the open file. An object of its own, so that a write that a
    // processor fault ends can be undone without destructors.
    class Access {
    public:
        Access() = default;
        ~Access() { release(); }
        Access(const Access&) = delete;
        Access& operator=(const Access&) = delete;

        void take(xoMutexSystem* mutex) XO_NO_THREAD_SAFETY_ANALYSIS;  // null: the file is not shared
        void release() XO_NO_THREAD_SAFETY_ANALYSIS;

        platform::FileHandle file;

    private:
        xoMutexSystem* mHeld = nullptr;
    };

    // Makes the file ready for lines. False, with nothing installed, when it cannot be made. The flags are those of
    // xoLogFileFlag. With shared true, a mutex named after the path keeps other processes out during each access.
    bool install(const std::string& path, int flags, std::int64_t maxSizeBytes, int backupCount, bool shared);
    void remove() { *this = LogFile(); }

    // Keeps other processes out from now on.
    void share();

    bool isInstalled() const { return !mPath.empty(); }
    const std::string& path() const { return mPath; }

    // Appends the line and its end in one write, after rotating a file that is too large. Failures are silent. The
    // caller releases the access.
    void writeLine(std::string& line, Access& access);

private:
    bool make(int flags);
    platform::FileHandle openForLine();
    bool isTooLarge(std::int64_t sizeBytes);
    bool truncate() const;
    bool moveAside() const;
    std::wstring backupPath(int index) const;

    std::string mPath;      // as installed: it names the mutex
    std::wstring mApiPath;  // absolute, as the W calls take it
    std::int64_t mMaxSizeBytes = 0;
    std::int64_t mRetrySizeBytes = 0;  // after a failed rotation: the size at which the next one is tried
    int mBackupCount = 0;
    std::unique_ptr<xoMutexSystem> mMutex;  // null unless shared
};

}  // namespace xo::log

#endif
