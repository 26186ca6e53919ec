// Locks by the sharing mode of an open file, which Windows releases when the process ends.
#include "xoSystem/xoLockFile.h"

#include <utility>

#include "platform/openFile.h"
#include "platform/wideText.h"

namespace xo {
namespace {

// An exclusive lock shares nothing, so that each further open fails. A shared one lets only those open the file that
// share it too.
platform::FileHandle open(const std::wstring& path, xoLockFile::LockType type, DWORD creation) {
    const DWORD share = type == xoLockFile::LockTypeShared ? FILE_SHARE_READ | FILE_SHARE_WRITE : 0;
    return platform::openFile(path, GENERIC_READ | GENERIC_WRITE, share, creation);
}

// Overwrites the beginning of the file; a longer content keeps its end. The text is only for people who look at the
// file, so a failed write does not fail the lock.
void write(HANDLE file, const std::string& text) {
    OVERLAPPED atStart{};
    DWORD written = 0;
    ::WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, &atStart);
}

}  // namespace

// Copies share it, so that the handle is closed only once: Windows may give the same value to another object
// afterwards.
struct xoLockFile::Lock {
    // Absolute, and resolved once, so that the file that is deleted is the one that was opened, also when the working
    // folder changes. In the form for W calls, so that the destructor of xoLockFile allocates no memory.
    std::wstring path;
    platform::FileHandle file;  // none once one of the copies has released the lock
};

xoLockFile::xoLockFile() = default;

xoLockFile::xoLockFile(const xoLockFile& other) = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): an object shares its lock with itself, too
xoLockFile& xoLockFile::operator=(const xoLockFile& other) {
    if (mLock == other.mLock) return *this;
    releaseLock(/*removeFile=*/true);
    mLock = other.mLock;
    return *this;
}

xoLockFile::~xoLockFile() { releaseLock(/*removeFile=*/true); }

bool xoLockFile::takeLockUtf8(const std::string& path, bool* alreadyExisted, LockType type) {
    if (alreadyExisted) *alreadyExisted = false;
    // All memory is allocated first, so that std::bad_alloc leaves no new file behind.
    const std::string content = "Lock from thread : " + std::to_string(::GetCurrentThreadId());
    auto lock = std::make_shared<Lock>(Lock{platform::toExtendedPath(platform::toWide(path)), {}});
    releaseLock(/*removeFile=*/true);

    // CREATE_NEW fails with ERROR_FILE_EXISTS when the file is there, also while it is locked; OPEN_ALWAYS would tell
    // this only on success. If the holder deletes the file between the two calls, the second one fails, as it would
    // while the lock is held.
    lock->file = open(lock->path, type, CREATE_NEW);
    if (!lock->file) {
        const DWORD error = ::GetLastError();
        if (alreadyExisted) *alreadyExisted = error == ERROR_FILE_EXISTS;
        lock->file = open(lock->path, type, OPEN_EXISTING);
    }
    if (!lock->file) return false;

    write(lock->file.get(), content);
    mLock = std::move(lock);
    return true;
}

bool xoLockFile::releaseLock(bool removeFile) {
    const bool wasLocked = isLocked();
    if (wasLocked) {
        mLock->file.reset();  // first, because this handle too does not share deletion
        // Fails while another lock on the file is held, because no lock shares deletion.
        if (removeFile) ::DeleteFileW(mLock->path.c_str());
    }
    mLock.reset();
    return wasLocked;
}

bool xoLockFile::isLocked() const { return mLock && mLock->file; }

}  // namespace xo
