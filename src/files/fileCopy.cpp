// Copies of files: whole by the system, or content, times and links by open handles.
#include "files/fileCopy.h"

#include <winioctl.h>

#include <memory>
#include <new>

#include "files/fileWriting.h"
#include "platform/wideText.h"
#include "xoSystem/xoProgress.h"

namespace xo::files {
namespace {

constexpr DWORD kBlockBytes = DWORD{1} << 20;  // the notifier is asked for cancellation after each block

// The attributes that can be set by FileBasicInfo. Others, such as compression, are no plain flags. 0 would keep the
// old ones, so that none at all is FILE_ATTRIBUTE_NORMAL.
DWORD settable(DWORD attributes) {
    constexpr DWORD kSettable = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                                FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
    return (attributes & kSettable) != 0 ? attributes & kSettable : DWORD{FILE_ATTRIBUTE_NORMAL};
}

// Called by CopyFileExW in this thread. The total size may differ from the expected one: the file may have changed, and
// its alternate data streams count too. Windows passes it at the start of each stream.
// https://learn.microsoft.com/windows/win32/api/winbase/nc-winbase-lpprogress_routine
DWORD CALLBACK onCopied(LARGE_INTEGER size, LARGE_INTEGER copied, LARGE_INTEGER /*streamSize*/,
                        LARGE_INTEGER /*streamCopied*/, DWORD /*stream*/, DWORD reason, HANDLE /*from*/, HANDLE /*to*/,
                        void* scope) {
    auto& work = *static_cast<xoProgressScope*>(scope);
    if (reason == CALLBACK_STREAM_SWITCH) work.setTotal(static_cast<std::uint64_t>(size.QuadPart));
    return work.advanceTo(static_cast<std::uint64_t>(copied.QuadPart)) ? PROGRESS_CONTINUE : PROGRESS_CANCEL;
}

}  // namespace

DWORD copyFile(const std::wstring& from, const std::wstring& to, DWORD flags, std::uint64_t size,
               xoProgressNotifier* progress) {
    if (progress && progress->isCanceled()) return kCopyCanceled;
    xoProgressScope work(progress, size, {}, ProgressUnitBytes);
    // Opening the scope may have called the notifier, which may have been canceled in that call.
    if (work.isCanceled()) return kCopyCanceled;
    if (!::CopyFileExW(from.c_str(), to.c_str(), progress ? &onCopied : nullptr, &work, /*pbCancel=*/nullptr, flags))
        return ::GetLastError();
    work.advanceTo(size);
    work.finish();
    return ERROR_SUCCESS;
}

DWORD copyContent(HANDLE from, HANDLE to, std::uint64_t size, xoProgressNotifier* progress) {
    const std::unique_ptr<char[]> block(new (std::nothrow) char[kBlockBytes]);
    if (!block) return ERROR_NOT_ENOUGH_MEMORY;
    xoProgressScope work(progress, size, {}, ProgressUnitBytes);
    for (;;) {
        DWORD got = 0;
        DWORD written = 0;
        if (!::ReadFile(from, block.get(), kBlockBytes, &got, /*lpOverlapped=*/nullptr)) return ::GetLastError();
        if (got == 0) break;
        if (!::WriteFile(to, block.get(), got, &written, /*lpOverlapped=*/nullptr)) return ::GetLastError();
        if (!work.advance(got)) return kCopyCanceled;
    }
    work.finish();
    return ERROR_SUCCESS;
}

void copyTimes(HANDLE from, HANDLE to, bool withAttributes) {
    FILE_BASIC_INFO info{};
    if (!::GetFileInformationByHandleEx(from, FileBasicInfo, &info, sizeof info)) return;
    info.ChangeTime.QuadPart = 0;  // 0 leaves a field as it is
    info.FileAttributes = withAttributes ? settable(info.FileAttributes) : 0;
    ::SetFileInformationByHandle(to, FileBasicInfo, &info, sizeof info);
}

DWORD copyReparsePoint(HANDLE from, HANDLE to) {
    // 16 KB, too much for a small stack.
    const std::unique_ptr<char[]> data(new (std::nothrow) char[MAXIMUM_REPARSE_DATA_BUFFER_SIZE]);
    if (!data) return ERROR_NOT_ENOUGH_MEMORY;
    DWORD size = 0;
    DWORD none = 0;
    if (!::DeviceIoControl(from, FSCTL_GET_REPARSE_POINT, nullptr, 0, data.get(), MAXIMUM_REPARSE_DATA_BUFFER_SIZE,
                           &size, /*lpOverlapped=*/nullptr))
        return ::GetLastError();
    if (!::DeviceIoControl(to, FSCTL_SET_REPARSE_POINT, data.get(), size, nullptr, 0, &none, /*lpOverlapped=*/nullptr))
        return ::GetLastError();
    return ERROR_SUCCESS;
}

DWORD setDeleteOnClose(HANDLE target, bool isDeleted) {
    FILE_DISPOSITION_INFO info{};
    info.DeleteFile = isDeleted;
    return errorOf(::SetFileInformationByHandle(target, FileDispositionInfo, &info, sizeof info));
}

DWORD attributesOf(HANDLE file) {
    FILE_BASIC_INFO info{};
    return ::GetFileInformationByHandleEx(file, FileBasicInfo, &info, sizeof info) ? info.FileAttributes : 0;
}

void setAttributes(HANDLE file, DWORD attributes) {
    FILE_BASIC_INFO info{};  // a time of 0 stays as it is
    info.FileAttributes = settable(attributes);
    ::SetFileInformationByHandle(file, FileBasicInfo, &info, sizeof info);
}

std::wstring finalPath(HANDLE file, DWORD nameKind) {
    return platform::readWide([&](wchar_t* buffer, DWORD size) {
        return ::GetFinalPathNameByHandleW(file, buffer, size, nameKind | VOLUME_NAME_DOS);
    });
}

}  // namespace xo::files
