// Replaces the content of a file by a new file that takes its name, or in place where that is not possible.
#include "files/fileReplacement.h"

#include <cstddef>
#include <cstring>
#include <vector>

#include "files/fileCopy.h"
#include "files/fileWriting.h"
#include "platform/openFile.h"
#include "platform/wideText.h"

namespace xo::files {
namespace {

constexpr DWORD kMostNames = 16;  // attempts to find a free name for the new file

// Attributes that cannot be set on a new file by SetFileInformationByHandle. A file with one of them is overwritten in
// place.
constexpr DWORD kOnlyInPlace = FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_ENCRYPTED | FILE_ATTRIBUTE_COMPRESSED;

// A name is taken when a file has it, or when a file that had it is deleted but still open somewhere ("delete
// pending"), which Windows reports as denied access.
bool mayBeTaken(DWORD error) { return error == ERROR_FILE_EXISTS || error == ERROR_ACCESS_DENIED; }

// The path with a suffix, or if the name would then be too long for a file system, a short name in the same folder.
std::wstring nameBeside(const std::wstring& path, const std::wstring& suffix) {
    constexpr std::size_t kMostNameUnits = 255;
    const std::size_t name = path.find_last_of(LR"(\/)") + 1;
    if (path.size() - name + suffix.size() <= kMostNameUnits) return path + suffix;
    return path.substr(0, name) + L"xoSystem" + suffix;
}

// Creates a file under a name that contains the number of this thread, so that no other thread of the machine chooses
// it. A file with that name that a crash has left behind is kept. The new file is shared for reading, because it is
// still open for a moment after it was renamed.
platform::FileHandle createBeside(const std::wstring& path, DWORD flags) {
    if (path.empty()) return {};
    for (DWORD i = 0; i < kMostNames; ++i) {
        const std::wstring name = nameBeside(path, L"." + std::to_wstring(::GetCurrentThreadId() + i) + L".tmp");
        platform::FileHandle file =
            platform::openFile(name, GENERIC_READ | GENERIC_WRITE | READ_CONTROL | WRITE_DAC | DELETE,
                               FILE_SHARE_READ | FILE_SHARE_DELETE, CREATE_NEW, flags);
        if (!file) {
            if (mayBeTaken(::GetLastError())) continue;
            return {};
        }
        // Marked for deletion until it takes its place, so that a crash leaves no file behind.
        if (setDeleteOnClose(file.get(), true) == ERROR_SUCCESS) return file;
        file.reset();
        ::DeleteFileW(name.c_str());
        return {};
    }
    return {};
}

// Not shared for writing: a program that writes to the file would continue to write to the old one.
DWORD openExisting(const std::wstring& path, platform::FileHandle& file) {
    file = platform::openFile(path, GENERIC_WRITE | FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_DELETE,
                              OPEN_EXISTING);
    return errorOf(file.get() != INVALID_HANDLE_VALUE);
}

// The path of the file itself, behind links. Empty for a link whose target Windows cannot name.
//
// The normalized name has the long names of all folders and of the file: a file that is renamed to its short name
// ("SETTIN~1.INI") loses its long one. It cannot always be had on a network drive, the opened one can. See
// https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-getfinalpathnamebyhandlew
std::wstring withoutLinks(const std::wstring& path, const platform::FileHandle& file) {
    std::wstring real = finalPath(file.get(), FILE_NAME_NORMALIZED);
    if (real.empty()) real = finalPath(file.get(), FILE_NAME_OPENED);
    const bool isKnown = !real.empty() || (::GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    return isKnown ? real : path;
}

// Whether nothing has that name, not even a dangling link.
bool isFree(const std::wstring& path) {
    return ::GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES && ::GetLastError() == ERROR_FILE_NOT_FOUND;
}

// The discretionary access list of a file.
class AccessList {
public:
    bool read(const platform::FileHandle& file) {
        return ::GetKernelObjectSecurity(file.get(), DACL_SECURITY_INFORMATION, mDescriptor.bytes,
                                         sizeof mDescriptor.bytes, &mSize) != 0;
    }

    bool operator==(const AccessList& other) const {
        return mSize == other.mSize && std::memcmp(mDescriptor.bytes, other.mDescriptor.bytes, mSize) == 0;
    }

    // Entries that the old file has inherited from its folder remain inherited ones.
    bool write(const platform::FileHandle& file) {
        constexpr SECURITY_DESCRIPTOR_CONTROL kInherits = SE_DACL_AUTO_INHERIT_REQ;
        if ((mDescriptor.head.Control & SE_DACL_AUTO_INHERITED) != 0) mDescriptor.head.Control |= kInherits;
        return ::SetKernelObjectSecurity(file.get(), DACL_SECURITY_INFORMATION, mDescriptor.bytes) != 0;
    }

private:
    union {
        SECURITY_DESCRIPTOR head;
        // A longer list cannot be read; the file is then overwritten in place, which keeps its list.
        BYTE bytes[8192];
    } mDescriptor;
    DWORD mSize = 0;
};

// Writes only a list that differs: a new file inherits the same entries from the folder in most cases.
bool copyAccess(const platform::FileHandle& from, const platform::FileHandle& to) {
    AccessList wanted, inherited;
    if (!wanted.read(from) || !inherited.read(to)) return false;
    return wanted == inherited || wanted.write(to);
}

// Gives the new file the attributes, creation time and access list of the old one. False if that is not possible.
bool copyProperties(const platform::FileHandle& from, const platform::FileHandle& to) {
    BY_HANDLE_FILE_INFORMATION old;
    if (!::GetFileInformationByHandle(from.get(), &old)) return false;
    // The other hard links of the file would keep the old content.
    if (old.nNumberOfLinks > 1 || (old.dwFileAttributes & kOnlyInPlace) != 0) return false;
    FILE_BASIC_INFO info{};  // a member that is 0 changes nothing
    info.CreationTime.LowPart = old.ftCreationTime.dwLowDateTime;
    info.CreationTime.HighPart = static_cast<LONG>(old.ftCreationTime.dwHighDateTime);
    info.FileAttributes = old.dwFileAttributes | FILE_ATTRIBUTE_ARCHIVE;
    return ::SetFileInformationByHandle(to.get(), FileBasicInfo, &info, sizeof info) && copyAccess(from, to);
}

// The layout of FILE_RENAME_INFO for both kinds of the call. Older headers have a BOOLEAN in place of the flags.
struct RenameInfo {
    DWORD flags;
    HANDLE root;
    DWORD nameBytes;
    wchar_t name[1];
};

// A RenameInfo with the name.
std::vector<std::byte> renameInfo(const std::wstring& path) {
    const std::size_t nameBytes = path.size() * sizeof(wchar_t);
    std::vector<std::byte> buffer(sizeof(RenameInfo) + nameBytes);
    auto* const info = reinterpret_cast<RenameInfo*>(buffer.data());
    info->nameBytes = static_cast<DWORD>(nameBytes);
    std::memcpy(info->name, path.data(), nameBytes);
    return buffer;
}

// Renames the file to the name in the buffer, and deletes the file that has the name. The newer kind of the call
// (FileRenameInfoEx with POSIX semantics, Windows 10 1607) succeeds while others have that file open with shared
// deletion; older systems and other file systems have only the older kind.
DWORD moveOver(const platform::FileHandle& file, std::vector<std::byte>& buffer) {
    constexpr auto kRenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
    constexpr DWORD kReplace = 1, kPosixSemantics = 2;
    auto* const info = reinterpret_cast<RenameInfo*>(buffer.data());
    const auto size = static_cast<DWORD>(buffer.size());
    info->flags = kReplace | kPosixSemantics;
    if (::SetFileInformationByHandle(file.get(), kRenameInfoEx, info, size)) return ERROR_SUCCESS;
    info->flags = kReplace;
    return errorOf(::SetFileInformationByHandle(file.get(), FileRenameInfo, info, size));
}

DWORD setSize(const platform::FileHandle& file, LARGE_INTEGER size) {
    FILE_END_OF_FILE_INFO info{size};
    return errorOf(::SetFileInformationByHandle(file.get(), FileEndOfFileInfo, &info, sizeof info));
}

// Overwrites the content of the file. The file is extended first, which allocates the disk space, so that a full disk
// leaves the old content intact; it is shortened last. write must not throw, because the old size would not be
// restored.
template <class Write>
DWORD overwrite(const platform::FileHandle& file, LARGE_INTEGER newSize, Write write) {
    LARGE_INTEGER oldSize{};
    const bool isSized = ::GetFileSizeEx(file.get(), &oldSize) != 0;  // devices such as NUL have no size
    if (!isSized) return write();
    DWORD error = ERROR_SUCCESS;
    if (oldSize.QuadPart < newSize.QuadPart) error = setSize(file, newSize);
    if (error == ERROR_SUCCESS) error = write();
    if (error != ERROR_SUCCESS) {
        setSize(file, oldSize);
        return error;
    }
    return oldSize.QuadPart > newSize.QuadPart ? setSize(file, newSize) : ERROR_SUCCESS;
}

DWORD overwrite(const platform::FileHandle& file, std::string_view bytes) {
    LARGE_INTEGER size{};
    size.QuadPart = static_cast<LONGLONG>(bytes.size());
    return overwrite(file, size, [&] { return writeAll(file, bytes); });
}

// Copies a file from its beginning to its end, through the block.
DWORD copyAll(const platform::FileHandle& from, const platform::FileHandle& to, std::vector<char>& block) {
    DWORD error = errorOf(::SetFilePointerEx(from.get(), LARGE_INTEGER{}, nullptr, FILE_BEGIN));
    for (DWORD got = 1; error == ERROR_SUCCESS && got != 0;) {
        error = errorOf(::ReadFile(from.get(), block.data(), static_cast<DWORD>(block.size()), &got,
                                   /*lpOverlapped=*/nullptr));
        if (error == ERROR_SUCCESS) error = writeAll(to, {block.data(), got});
    }
    return error;
}

DWORD overwriteWith(const platform::FileHandle& from, const platform::FileHandle& file) {
    LARGE_INTEGER size{};
    if (!::GetFileSizeEx(from.get(), &size)) return ::GetLastError();
    std::vector<char> block(std::size_t{64} << 10);  // allocated while the file still has its old size
    return overwrite(file, size, [&] { return copyAll(from, file, block); });
}

platform::FileHandle createTemporary() {
    const std::wstring folder =
        platform::readWide([](wchar_t* buffer, DWORD size) { return ::GetTempPathW(size, buffer); });
    if (folder.empty()) return {};
    return createBeside(platform::toExtendedPath(folder + L"xoSystem"), FILE_ATTRIBUTE_TEMPORARY);
}

}  // namespace

DWORD moveOver(const platform::FileHandle& file, const std::wstring& path) {
    std::vector<std::byte> info = renameInfo(path);
    return moveOver(file, info);
}

// A volume is a disk to GetFileType, but has no information of a file. GetFileInformationByHandle would also ask for
// the serial number of the volume, which takes Wine five times as long as opening the file.
bool isDiskFile(const platform::FileHandle& file) {
    FILE_STANDARD_INFO information{};
    return ::GetFileType(file.get()) == FILE_TYPE_DISK &&
           ::GetFileInformationByHandleEx(file.get(), FileStandardInfo, &information, sizeof information) &&
           !information.Directory;
}

// Repeats the attempt while another process has the file open, as virus scanners and indexers do for a moment.
template <class Attempt>
DWORD FileReplacement::whileBusy(DWORD busyError, Attempt attempt) {
    const ULONGLONG end = ::GetTickCount64() + mPatienceMs;
    for (;; ::Sleep(1)) {
        const DWORD error = attempt();
        const ULONGLONG now = ::GetTickCount64();
        if (error == busyError && now < end) continue;
        // All attempts of one replacement share the time.
        mPatienceMs = now < end ? end - now : 0;
        return error;
    }
}

// Written through: otherwise the file might have its new name but not yet its bytes after a power failure.
DWORD FileReplacement::begin() {
    mNew = createReplacement(FILE_FLAG_WRITE_THROUGH);
    return mNew ? ERROR_SUCCESS : openInPlace();
}

// Not written through: many pieces are written faster if they are flushed once, at the end.
DWORD FileReplacement::beginInPieces() {
    mNew = createReplacement(FILE_ATTRIBUTE_NORMAL);
    if (mNew) return ERROR_SUCCESS;
    if (const DWORD error = openInPlace()) return error;
    if (!isDiskFile(mInPlace)) return ERROR_NOT_SUPPORTED;
    mNew = createTemporary();
    return errorOf(mNew.get() != INVALID_HANDLE_VALUE);
}

platform::FileHandle FileReplacement::createReplacement(DWORD flags) {
    platform::FileHandle old;
    if (whileBusy(ERROR_SHARING_VIOLATION, [&] { return openExisting(mPath, old); }) != ERROR_SUCCESS) {
        mTarget = mPath;
        return isFree(mPath) ? createBeside(mPath, flags) : platform::FileHandle();
    }
    mTarget = withoutLinks(mPath, old);
    platform::FileHandle file = createBeside(mTarget, flags);
    if (file && !copyProperties(old, file)) file.reset();
    return file;
}

// Not CREATE_ALWAYS, which refuses hidden and system files, and destroys the old bytes before there are new ones. All
// sharing is allowed, so that it fails only if another program does not share writing.
DWORD FileReplacement::openInPlace() {
    mInPlace = platform::openFile(mPath, GENERIC_WRITE, platform::kShareAll, OPEN_ALWAYS);
    return errorOf(mInPlace.get() != INVALID_HANDLE_VALUE);
}

DWORD FileReplacement::commit(std::string_view bytes) {
    if (mNew) {
        if (const DWORD error = writeAll(mNew, bytes)) return error;
        const bool isDone = takePlace() == ERROR_SUCCESS;
        mNew.reset();  // at once: the handle excludes readers that do not share writing, and keeps disk space
        if (isDone) return ERROR_SUCCESS;
        if (const DWORD error = openInPlace()) return error;
    }
    return overwrite(mInPlace, bytes);
}

DWORD FileReplacement::commitPieces() {
    if (!mInPlace) {
        if (!::FlushFileBuffers(mNew.get())) return errorOf(FALSE);
        if (takePlace() == ERROR_SUCCESS) {
            mNew.reset();
            return ERROR_SUCCESS;
        }
        if (const DWORD error = openInPlace()) return error;
    }
    return overwriteWith(mNew, mInPlace);
}

DWORD FileReplacement::takePlace() {
    // Allocated while the new file is still marked for deletion, so that an exception leaves no file behind.
    std::vector<std::byte> target = renameInfo(mTarget);
    // Before the renaming: with the mark the file would be deleted under its new name when it is closed.
    if (const DWORD error = setDeleteOnClose(mNew.get(), false)) return error;
    const DWORD error = whileBusy(ERROR_ACCESS_DENIED, [&] { return moveOver(mNew, target); });
    if (error != ERROR_SUCCESS) setDeleteOnClose(mNew.get(), true);
    return error;
}

}  // namespace xo::files
