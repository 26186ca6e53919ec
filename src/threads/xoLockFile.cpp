#include "xoSystem/xoLockFile.h"

#include "platform/handle.h"
#include "platform/wideText.h"
#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoThread.h"

namespace xo {
namespace {

platform::FileHandle open(const std::wstring& path, xoLockFile::LockType type, DWORD creation) {
    const DWORD share = type == xoLockFile::LockTypeShared ? FILE_SHARE_READ | FILE_SHARE_WRITE : 0;
    return platform::FileHandle(::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, share,
                                              /*lpSecurityAttributes=*/nullptr, creation, FILE_ATTRIBUTE_NORMAL,
                                              /*hTemplateFile=*/nullptr));
}

// Overwrites the beginning of the file; whatever was there behind it stays. A failure matters to nobody.
void write(HANDLE file, const std::string& text) {
    OVERLAPPED atStart{};
    DWORD written = 0;
    ::WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, &atStart);
}

}  // namespace

// Shared by copies, so that none of them closes a handle that has come to mean another object by then.
struct xoLockFile::Handle {
    platform::FileHandle file;
};

xoLockFile::xoLockFile() = default;

xoLockFile::xoLockFile(const xoLockFile& other) = default;

xoLockFile& xoLockFile::operator=(const xoLockFile& other) {
    if (this == &other || mHandle == other.mHandle) return *this;
    releaseLock(/*removeFile=*/true);
    mPath = other.mPath;
    mHandle = other.mHandle;
    return *this;
}

xoLockFile::~xoLockFile() { releaseLock(/*removeFile=*/true); }

bool xoLockFile::takeLockUtf8(const std::string& path, bool* alreadyExisted, LockType type) {
    if (alreadyExisted) *alreadyExisted = false;
    const std::string content = "Lock from thread : " + xoThread::CurrentThreadId();
    releaseLock(/*removeFile=*/true);

    const std::wstring apiPath = platform::toApiPath(path);
    platform::FileHandle file = open(apiPath, type, CREATE_NEW);
    if (!file) {
        if (alreadyExisted) *alreadyExisted = ::GetLastError() == ERROR_FILE_EXISTS;
        file = open(apiPath, type, OPEN_EXISTING);
    }
    if (!file) return false;

    write(file.get(), content);
    mPath = xoDirUtils::GetAbsolutePathUtf8(path);  // the working directory may be another one at the release
    mHandle = std::make_shared<Handle>(Handle{std::move(file)});
    return true;
}

bool xoLockFile::releaseLock(bool removeFile) {
    const bool wasLocked = isLocked();
    if (wasLocked) {
        mHandle->file.reset();
        if (removeFile) xoDirUtils::RemoveFileUtf8(mPath);
    }
    mHandle.reset();
    mPath.clear();
    return wasLocked;
}

bool xoLockFile::isLocked() const { return mHandle && mHandle->file; }

}  // namespace xo
