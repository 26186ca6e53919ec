// The file below xoIoDeviceFile: opened by mode, with its own position.
#include "stream/openedFile.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

#include "files/fileWriting.h"
#include "platform/openFile.h"
#include "platform/wideText.h"

namespace xo::stream {
namespace {

constexpr std::uint64_t kMaxTransfer = std::uint64_t{1} << 30;  // a single call takes a 32-bit size

struct Opening {
    DWORD access;
    DWORD disposition;
    bool reads, writes;  // what the device allows
};

// By OpenMode. FILE_APPEND_DATA without FILE_WRITE_DATA makes the system write at the end, also while others append:
// https://learn.microsoft.com/windows/win32/fileio/file-access-rights-constants
//
// For OpenWrite the file is opened with OPEN_ALWAYS and then emptied, because CREATE_ALWAYS refuses hidden and system
// files, and would empty a file before it is known to be one on a disk.
constexpr Opening kOpenings[] = {
    {GENERIC_READ, OPEN_EXISTING, true, false},                                         // OpenRead
    {GENERIC_WRITE, OPEN_ALWAYS, false, true},                                          // OpenWrite
    {FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE, OPEN_ALWAYS, false, true},  // OpenAppend
    {GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS, true, true},                            // OpenReadWrite
    {GENERIC_READ | GENERIC_WRITE, CREATE_NEW, true, true},                             // OpenNew
    {0, 0, false, true},                                                                // OpenReplace
};

// By default a writer lets others read, and a reader shares everything.
DWORD sharedAccess(xoIoDeviceFile::OpenMode mode, xoIoDeviceFile::Share share) {
    if (share == xoIoDeviceFile::ShareNone) return 0;
    const bool isDefaultAll = share == xoIoDeviceFile::ShareDefault && mode == xoIoDeviceFile::OpenRead;
    if (share == xoIoDeviceFile::ShareAll || isDefaultAll) return platform::kShareAll;
    return FILE_SHARE_READ;
}

// SetEndOfFile would need the position to be moved first.
DWORD setEnd(HANDLE file, std::uint64_t bytes) {
    FILE_END_OF_FILE_INFO info{};
    info.EndOfFile.QuadPart = static_cast<LONGLONG>(bytes);
    return files::errorOf(::SetFileInformationByHandle(file, FileEndOfFileInfo, &info, sizeof info));
}

}  // namespace

DWORD OpenedFile::open(const std::string& path, xoIoDeviceFile::OpenMode mode, xoIoDeviceFile::Share share,
                       std::string& fullPath) {
    if (static_cast<unsigned>(mode) >= std::size(kOpenings) || static_cast<unsigned>(share) > xoIoDeviceFile::ShareAll)
        return ERROR_INVALID_PARAMETER;
    std::wstring extended = platform::toExtendedPath(platform::toWide(path));
    if (extended.empty()) {
        fullPath = path;
        return ERROR_INVALID_NAME;
    }
    fullPath = platform::toUtf8(platform::withoutExtendedPrefix(extended));
    mReads = kOpenings[mode].reads;
    mWrites = kOpenings[mode].writes;
    mAppends = mode == xoIoDeviceFile::OpenAppend;
    if (mode == xoIoDeviceFile::OpenReplace) return openReplacement(std::move(extended));
    return openItself(extended, mode, share);
}

DWORD OpenedFile::openReplacement(std::wstring path) {
    mReplacement.emplace(std::move(path));
    if (const DWORD error = mReplacement->beginInPieces()) return error;
    mHandle = mReplacement->pieces();
    return ERROR_SUCCESS;
}

DWORD OpenedFile::openItself(const std::wstring& path, xoIoDeviceFile::OpenMode mode, xoIoDeviceFile::Share share) {
    const Opening& opening = kOpenings[mode];
    mFile = platform::openFile(path, opening.access, sharedAccess(mode, share), opening.disposition);
    const DWORD state = ::GetLastError();
    if (!mFile) return state != ERROR_SUCCESS ? state : DWORD{ERROR_GEN_FAILURE};
    // A pipe, a console or a device has no size and no position.
    if (!files::isDiskFile(mFile)) return ERROR_NOT_SUPPORTED;
    mHandle = mFile.get();
    // OPEN_ALWAYS sets this code also when it succeeds, if the file was there before:
    // https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-createfilew
    const bool isEmptied = mode == xoIoDeviceFile::OpenWrite && state == ERROR_ALREADY_EXISTS;
    return isEmptied ? setEnd(mHandle, 0) : DWORD{ERROR_SUCCESS};
}

void OpenedFile::close() noexcept {
    mHandle = INVALID_HANDLE_VALUE;
    mPosition = 0;
    mFile.reset();
    mReplacement.reset();
    mReads = mWrites = mAppends = false;
}

std::uint64_t OpenedFile::size() const {
    LARGE_INTEGER bytes{};
    return ::GetFileSizeEx(mHandle, &bytes) ? static_cast<std::uint64_t>(bytes.QuadPart) : 0;
}

// The file's own position follows each transfer, so that one after the other needs no call for it. A position given
// with each call, in an OVERLAPPED, makes Wine ask its server each time.
DWORD OpenedFile::moveTo(std::uint64_t position) {
    if (mPosition == position) return ERROR_SUCCESS;
    LARGE_INTEGER place{};
    place.QuadPart = static_cast<LONGLONG>(position);
    const DWORD error = files::errorOf(::SetFilePointerEx(mHandle, place, /*lpNewFilePointer=*/nullptr, FILE_BEGIN));
    if (error == ERROR_SUCCESS) mPosition = position;
    return error;
}

std::uint64_t OpenedFile::read(std::uint64_t position, char* bytes, std::uint64_t size, DWORD& error) {
    std::uint64_t done = 0;
    error = moveTo(position);
    while (error == ERROR_SUCCESS && done < size) {
        DWORD got = 0;
        const auto wanted = static_cast<DWORD>((std::min)(size - done, kMaxTransfer));
        error = files::errorOf(::ReadFile(mHandle, bytes + done, wanted, &got, /*lpOverlapped=*/nullptr));
        done += got;
        if (got == 0) break;  // the end of the file
    }
    mPosition = position + done;
    if (error == ERROR_SUCCESS) return done;
    // A failed transfer may have moved the position.
    mPosition = kUnknown;
    // A file system may refuse a position that is far behind the end. Reading there gives no bytes, and is no error. If
    // the size cannot be had either, as when a drive was removed, the error remains.
    LARGE_INTEGER end{};
    if (::GetFileSizeEx(mHandle, &end) && position + done >= static_cast<std::uint64_t>(end.QuadPart))
        error = ERROR_SUCCESS;
    return done;
}

DWORD OpenedFile::write(std::uint64_t position, const char* bytes, std::uint64_t size) {
    // A file that is appended to needs no position: the system writes at the end.
    DWORD error = mAppends ? DWORD{ERROR_SUCCESS} : moveTo(position);
    for (std::uint64_t done = 0; error == ERROR_SUCCESS && done < size;) {
        DWORD written = 0;
        const auto wanted = static_cast<DWORD>((std::min)(size - done, kMaxTransfer));
        error = files::errorOf(::WriteFile(mHandle, bytes + done, wanted, &written, /*lpOverlapped=*/nullptr));
        // Without progress the loop would not end.
        if (error == ERROR_SUCCESS && written == 0) error = ERROR_WRITE_FAULT;
        done += written;
    }
    mPosition = error == ERROR_SUCCESS ? position + size : kUnknown;
    return error;
}

DWORD OpenedFile::resize(std::uint64_t bytes) const { return setEnd(mHandle, bytes); }

DWORD OpenedFile::flushToDisk() const { return files::errorOf(::FlushFileBuffers(mHandle)); }

DWORD OpenedFile::commit() noexcept {
    if (!mReplacement) return ERROR_SUCCESS;
    try {
        return mReplacement->commitPieces();
    } catch (const std::exception&) {  // std::bad_alloc
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

}  // namespace xo::stream
