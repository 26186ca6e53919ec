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
    // Takes the file in, ready to be written; false, with nothing installed, when it cannot be made. The flags are
    // those of xoLogFileFlag. With shared true, a mutex named after the path keeps other processes out during each
    // access.
    bool install(const std::string& path, int flags, std::int64_t maxSizeBytes, int backupCount, bool shared);
    void remove() { *this = LogFile(); }

    // Begins to keep other processes out.
    void share();

    bool isInstalled() const { return !mPath.empty(); }
    const std::string& path() const { return mPath; }

    // Appends the line and its end in one write, after rotating an overlong file. Failures are silent.
    void writeLine(std::string& line);

private:
    class SharedLock;

    bool make(int flags);
    platform::FileHandle openForLine();
    platform::FileHandle open(DWORD disposition) const;
    bool rotate();
    std::string backupPath(int index) const;

    std::string mPath;      // as installed: it names the mutex
    std::string mFullPath;  // absolute
    std::wstring mApiPath;  // the same for Windows
    std::int64_t mMaxSizeBytes = 0;
    int mBackupCount = 0;
    std::unique_ptr<xoMutexSystem> mMutex;  // null unless shared
};

}  // namespace xo::log

#endif
