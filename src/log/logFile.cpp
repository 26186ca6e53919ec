// The file of a log: opened for each line or kept open, limited in size, with numbered backups.
#include "log/logFile.h"

#include <algorithm>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

#include "files/fileReplacement.h"
#include "files/fileWriting.h"
#include "platform/openFile.h"
#include "platform/wideText.h"
#include "xoSystem/xoLog.h"

namespace xo::log {
namespace {

using platform::kShareAll;

constexpr int kMostBackups = 128;  // as many files are open during a rotation
// Without it some editors would read the UTF-8 text in the native code page.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

platform::FileHandle open(const std::wstring& path, DWORD access, DWORD disposition, DWORD share = kShareAll,
                          DWORD flags = FILE_ATTRIBUTE_NORMAL) {
    return platform::openFile(path, access | SYNCHRONIZE, share, disposition, flags);
}

// With this right alone, each WriteFile appends atomically, also beside a process that does not take the mutex.
// https://learn.microsoft.com/en-us/windows/win32/fileio/file-access-rights-constants
platform::FileHandle openToAppend(const std::wstring& path, DWORD disposition, DWORD share = kShareAll) {
    return open(path, FILE_APPEND_DATA, disposition, share);
}

// DELETE is the right to rename. It is refused while another handle does not share deletion, and while it is held, such
// a handle cannot be opened. Of a symbolic link the link itself is opened.
// https://learn.microsoft.com/en-us/windows/win32/fileio/creating-and-opening-files
platform::FileHandle openToMove(const std::wstring& path) {
    return open(path, DELETE, OPEN_EXISTING, kShareAll, FILE_FLAG_OPEN_REPARSE_POINT);
}

// Returns how many bytes were written. A failure is not reported: there is no other place to report it.
std::int64_t write(const platform::FileHandle& file, std::string_view bytes) {
    std::size_t written = 0;
    files::writeAll(file, bytes, &written);
    return static_cast<std::int64_t>(written);
}

// Deletes the file, or a symbolic link itself. Fails when the file is open elsewhere, also with shared deletion: its
// name could stay taken until the last handle is closed, and no new file could be created.
// https://learn.microsoft.com/en-us/windows/win32/api/fileapi/nf-fileapi-deletefilew
bool deleteUnlessOpen(const std::wstring& path) {
    constexpr DWORD kFlags = FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT;
    return static_cast<bool>(open(path, DELETE, OPEN_EXISTING, /*share=*/0, kFlags));
}

bool isFile(const std::wstring& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

// Whether the open file is the one that the path names now. It is not when the file was renamed or deleted.
bool isUnder(const std::wstring& path, HANDLE file) {
    const platform::FileHandle named = open(path, /*access=*/0, OPEN_EXISTING);
    BY_HANDLE_FILE_INFORMATION a;
    BY_HANDLE_FILE_INFORMATION b;
    return named && ::GetFileInformationByHandle(named.get(), &a) && ::GetFileInformationByHandle(file, &b) &&
           std::tie(a.dwVolumeSerialNumber, a.nFileIndexHigh, a.nFileIndexLow) ==
               std::tie(b.dwVolumeSerialNumber, b.nFileIndexHigh, b.nFileIndexLow);
}

}  // namespace

void LogFile::Access::lock(xoMutexSystem* mutex) XO_NO_THREAD_SAFETY_ANALYSIS {
    if (!mutex) return;
    mutex->lock();
    mHeld = mutex;
}

void LogFile::Access::release() XO_NO_THREAD_SAFETY_ANALYSIS {
    file.reset();
    if (xoMutexSystem* const held = std::exchange(mHeld, nullptr)) held->unlock();
}

bool LogFile::install(const std::string& path, int flags, std::int64_t maxSizeBytes, int backupCount, bool shared) {
    remove();
    if (path.empty()) return true;
    LogFile file;  // becomes this one when it is complete: std::bad_alloc leaves nothing installed
    file.mPath = path;
    file.mApiPath = platform::toExtendedPath(platform::toWide(path));
    file.mMaxSizeBytes = maxSizeBytes;
    file.mBackupCount = (std::min)(backupCount, kMostBackups);
    file.mKeepsOpen = (flags & xoLogFileKeepOpen) != 0;
    if (shared) file.share();
    {
        Access access;
        access.lock(file.mMutex.get());
        if (!file.prepare(flags)) return false;
    }
    *this = std::move(file);
    return true;
}

void LogFile::share() {
    if (isInstalled() && !mKeepsOpen && !mMutex)
        mMutex = std::make_unique<xoMutexSystem>(mPath.c_str(), impl::WithoutEarlyWarning());
}

bool LogFile::prepare(int flags) {
    // Checked before anything is moved or emptied: a file that cannot be kept open stays as it was.
    if (mKeepsOpen && !openToKeep(OPEN_EXISTING) && isFile(mApiPath)) return false;
    const bool beginsAnew = (flags & xoLogFileTruncate) != 0;
    const bool rotates = beginsAnew && (flags & xoLogFileRotate) != 0 && mBackupCount > 0;
    if (rotates) moveAside();  // on failure the file is appended to
    // A file that cannot be deleted is emptied in place.
    const bool isEmptied = beginsAnew && !rotates && !deleteUnlessOpen(mApiPath) && truncate();

    // Only a new or emptied file gets a byte order mark. CREATE_NEW fails for an existing file, to which lines are
    // appended.
    if (const auto file = openToAppend(mApiPath, isEmptied ? OPEN_ALWAYS : CREATE_NEW)) {
        write(file, kByteOrderMark);
    } else if (!isFile(mApiPath)) {
        return false;
    }
    if (mKeepsOpen) openKept();
    return !mKeepsOpen || mKept;
}

// The line is extended in place, and has its old length again afterwards, so that nothing is copied.
void LogFile::writeLine(std::string& line, std::int64_t second, Access& access) {
    const std::size_t length = line.size();
    line += "\r\n";
    if (mKeepsOpen) {
        writeToKept(line, second);
    } else {
        access.lock(mMutex.get());
        access.file = openForLine();
        if (access.file) write(access.file, line);
        access.release();
    }
    line.resize(length);
}

// Whether the open file still has its path is checked once per second, not for each line.
void LogFile::writeToKept(std::string_view line, std::int64_t second) {
    if (std::exchange(mCheckedSecond, second) != second && mKept && !isUnder(mApiPath, mKept.get())) mKept.reset();
    if (!mKept) openKept();
    if (mKept && hasLimit() && isTooLarge(mKeptSizeBytes)) {
        mKept.reset();  // it does not share the right to empty the file
        rotate(mKeptSizeBytes);
        openKept();
    }
    if (mKept) mKeptSizeBytes += write(mKept, line);
}

void LogFile::openKept() {
    mKept.reset();  // first, because it may not share writing
    mKept = openToKeep(OPEN_ALWAYS);
    LARGE_INTEGER size{};
    if (mKept && hasLimit()) ::GetFileSizeEx(mKept.get(), &size);
    mKeptSizeBytes = size.QuadPart;
}

// With a limit, writing is not shared: mKeptSizeBytes counts only the bytes of this process.
platform::FileHandle LogFile::openToKeep(DWORD disposition) const {
    return openToAppend(mApiPath, disposition, hasLimit() ? FILE_SHARE_READ | FILE_SHARE_DELETE : kShareAll);
}

platform::FileHandle LogFile::openForLine() {
    platform::FileHandle file = openToAppend(mApiPath, OPEN_ALWAYS);
    LARGE_INTEGER size;
    if (!hasLimit() || !file || !::GetFileSizeEx(file.get(), &size) || !isTooLarge(size.QuadPart)) return file;
    if (rotate(size.QuadPart) && mBackupCount > 0) file = openToAppend(mApiPath, OPEN_ALWAYS);
    return file;
}

// Moves a file of that size into the backups, or empties it. Returns whether the path now names an empty file or none.
bool LogFile::rotate(std::int64_t sizeBytes) {
    const bool isAnew = mBackupCount > 0 ? moveAside() : truncate();
    const std::int64_t growth = (std::min)(mMaxSizeBytes, (std::numeric_limits<std::int64_t>::max)() - sizeBytes);
    mRetrySizeBytes = isAnew ? 0 : sizeBytes + growth;
    return isAnew;
}

// A failed rotation is tried again when the file has grown by the limit, not for each line.
bool LogFile::isTooLarge(std::int64_t sizeBytes) {
    if (sizeBytes <= mMaxSizeBytes) mRetrySizeBytes = 0;  // another process has rotated the file
    return sizeBytes > (std::max)(mMaxSizeBytes, mRetrySizeBytes);
}

// Empties the file in place. That needs no right to its folder, and keeps its access list and its hard links. Not by
// TRUNCATE_EXISTING, since overwriting fails for hidden files unless their attributes are given.
bool LogFile::truncate() const {
    const platform::FileHandle file = open(mApiPath, FILE_WRITE_DATA, OPEN_EXISTING);
    return file && ::SetEndOfFile(file.get());
}

// Renames the backups to the next number, up to the lowest number that is free, and the file to number 0. All of them
// are opened first, so that either all can be renamed or none is touched. When no number is free, the first renaming
// replaces the oldest backup in the same step: the system may refuse to rename a file that could be opened, for example
// in a folder without the right to add files.
bool LogFile::moveAside() const {
    std::vector<platform::FileHandle> toMove;  // the file, then the backups
    toMove.push_back(openToMove(mApiPath));
    if (!toMove.front() || !openBackupsToMove(toMove)) return false;
    // Only some file systems can replace a file that is open.
    if (toMove.size() > static_cast<std::size_t>(mBackupCount)) toMove.pop_back();
    for (; !toMove.empty(); toMove.pop_back()) {
        const int target = static_cast<int>(toMove.size()) - 1;
        if (files::moveOver(toMove.back(), backupPath(target)) != ERROR_SUCCESS) return false;
    }
    return true;
}

// Opens the backups from number 0 up to the one before the lowest free number. False when one cannot be renamed.
bool LogFile::openBackupsToMove(std::vector<platform::FileHandle>& toMove) const {
    for (int i = 0; i < mBackupCount; ++i) {
        platform::FileHandle backup = openToMove(backupPath(i));
        const DWORD error = ::GetLastError();
        if (!backup) return error == ERROR_FILE_NOT_FOUND;
        toMove.push_back(std::move(backup));
    }
    return true;
}

std::wstring LogFile::backupPath(int index) const { return mApiPath + L"_" + std::to_wstring(index) + L".back"; }

}  // namespace xo::log
