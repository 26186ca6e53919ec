#include "log/logFile.h"

#include <algorithm>

#include "platform/wideText.h"
#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoLog.h"

namespace xo::log {
namespace {

constexpr int kMostBackups = 128;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool write(HANDLE file, std::string_view bytes) {
    DWORD written = 0;
    return ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
           written == bytes.size();
}

}  // namespace

// Holds the cross-process mutex, if there is one.
class LogFile::SharedLock {
public:
    explicit SharedLock(xoMutexSystem* mutex) XO_NO_THREAD_SAFETY_ANALYSIS : mMutex(mutex) {
        if (mMutex) mMutex->lock();
    }
    ~SharedLock() XO_NO_THREAD_SAFETY_ANALYSIS {
        if (mMutex) mMutex->unlock();
    }
    SharedLock(const SharedLock&) = delete;
    SharedLock& operator=(const SharedLock&) = delete;

private:
    xoMutexSystem* mMutex;
};

bool LogFile::install(const std::string& path, int flags, std::int64_t maxSizeBytes, int backupCount, bool shared) {
    remove();
    if (path.empty()) return true;
    mPath = path;
    mFullPath = xoDirUtils::GetAbsolutePathUtf8(path);
    mApiPath = platform::toApiPath(mFullPath);
    mMaxSizeBytes = maxSizeBytes;
    mBackupCount = (std::min)(backupCount, kMostBackups);
    if (shared) share();

    bool made = false;
    {
        const SharedLock lock(mMutex.get());
        made = make(flags);
    }
    if (!made) remove();
    return made;
}

void LogFile::share() {
    if (isInstalled() && !mMutex) mMutex = std::make_unique<xoMutexSystem>(mPath.c_str(), impl::WithoutEarlyWarning());
}

bool LogFile::make(int flags) {
    const bool truncates = (flags & xoLogFileTruncate) != 0;
    const bool rotates = truncates && (flags & xoLogFileRotate) != 0;
    const bool isAside = !rotates || rotate();
    if (truncates && isAside) xoDirUtils::RemoveFileUtf8(mFullPath);

    if (const platform::FileHandle file = open(CREATE_NEW)) return write(file.get(), kByteOrderMark);
    return xoDirUtils::FileExistsUtf8(mFullPath) && !xoDirUtils::DirExistsUtf8(mFullPath);
}

void LogFile::writeLine(std::string& line) {
    const std::size_t length = line.size();
    line += "\r\n";
    {
        const SharedLock lock(mMutex.get());
        if (const platform::FileHandle file = openForLine()) write(file.get(), line);
    }
    line.resize(length);
}

platform::FileHandle LogFile::openForLine() {
    platform::FileHandle file = open(OPEN_ALWAYS);
    LARGE_INTEGER size;
    if (mMaxSizeBytes < 1 || !file || !::GetFileSizeEx(file.get(), &size) || size.QuadPart <= mMaxSizeBytes)
        return file;

    file.reset();
    if (rotate()) xoDirUtils::RemoveFileUtf8(mFullPath);  // still there when no backups are kept
    return open(OPEN_ALWAYS);
}

platform::FileHandle LogFile::open(DWORD disposition) const {
    // Appending in one write is whole even beside a process that does not take the mutex.
    return platform::FileHandle(::CreateFileW(mApiPath.c_str(), FILE_APPEND_DATA | SYNCHRONIZE,
                                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                              /*lpSecurityAttributes=*/nullptr, disposition, FILE_ATTRIBUTE_NORMAL,
                                              /*hTemplateFile=*/nullptr));
}

// Shifts every backup by one and makes the file the newest. True when nothing would be lost by beginning the file anew:
// it was moved, or no backups are wanted.
bool LogFile::rotate() {
    if (mBackupCount < 1 || !xoDirUtils::FileExistsUtf8(mFullPath)) return true;
    bool moved = false;
    for (int i = mBackupCount - 1; i >= 0; --i) {
        const std::string source = i == 0 ? mFullPath : backupPath(i - 1);
        const std::string target = backupPath(i);
        xoDirUtils::RemoveFileUtf8(target);
        moved = xoDirUtils::RenameFileUtf8(source, target);
    }
    return moved;
}

std::string LogFile::backupPath(int index) const { return mFullPath + "_" + std::to_string(index) + ".back"; }

}  // namespace xo::log
