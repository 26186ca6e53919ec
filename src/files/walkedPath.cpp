// Opens and creates files by the functions of ntdll, which unlike CreateFileW take a path relative to an open folder.
#include "files/walkedPath.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "files/pathParts.h"

#include <winternl.h>

namespace xo::files {
namespace {

constexpr std::wstring_view kKernelPrefix = LR"(\??\)";  // in the kernel it takes the place of both "\\?\" and "\\.\"
constexpr std::size_t kFar = 1000;  // characters between two held folders: few handles, and paths far below the limit

// Prepares the arguments that NtOpenFile and NtCreateFile have in common, and calls
// open(handle, access, attributes, status, share, options). A path that is too long for a UNICODE_STRING is refused.
template <class Open>
Opened openBy(Open open, HANDLE folder, std::wstring_view path, const OpenMode& mode) {
    constexpr std::size_t kMostBytes = (std::numeric_limits<USHORT>::max)();
    const std::size_t bytes = path.size() * sizeof(wchar_t);
    if (bytes == 0) return {{}, ERROR_PATH_NOT_FOUND};
    if (bytes > kMostBytes) return {{}, ERROR_FILENAME_EXCED_RANGE};

    UNICODE_STRING name{static_cast<USHORT>(bytes), static_cast<USHORT>(bytes), const_cast<wchar_t*>(path.data())};
    OBJECT_ATTRIBUTES attributes;
    InitializeObjectAttributes(&attributes, &name, OBJ_CASE_INSENSITIVE, folder, /*SecurityDescriptor=*/nullptr);
    // Synchronous, so that each call on the handle waits for its end; that needs the right SYNCHRONIZE:
    // https://learn.microsoft.com/windows/win32/api/winternl/nf-winternl-ntcreatefile
    const ULONG options = mode.kind | FILE_SYNCHRONOUS_IO_NONALERT | FILE_OPEN_FOR_BACKUP_INTENT |
                          (mode.followsLink ? 0 : FILE_OPEN_REPARSE_POINT);
    platform::KernelHandle opened;
    IO_STATUS_BLOCK status;
    const NTSTATUS result = open(opened.put(), mode.access | SYNCHRONIZE, &attributes, &status, mode.share, options);
    // Negative statuses are warnings and errors; others are successes.
    if (result < 0) return {{}, ::RtlNtStatusToDosError(result)};
    return {std::move(opened), ERROR_SUCCESS};
}

}  // namespace

Opened openRelative(HANDLE folder, std::wstring_view path, const OpenMode& mode) {
    return openBy([](auto... arguments) { return ::NtOpenFile(arguments...); }, folder, path, mode);
}

Created createRelative(HANDLE folder, std::wstring_view path, const OpenMode& mode, Existing existing) {
    // In the order of Existing.
    constexpr ULONG kDispositions[] = {FILE_CREATE, FILE_OPEN_IF, FILE_OVERWRITE_IF};
    const ULONG disposition = kDispositions[static_cast<ULONG>(existing)];
    bool isNew = false;
    const auto create = [&](HANDLE* made, ACCESS_MASK access, OBJECT_ATTRIBUTES* attributes, IO_STATUS_BLOCK* status,
                            ULONG share, ULONG options) {
        const NTSTATUS result =
            ::NtCreateFile(made, access, attributes, status, /*AllocationSize=*/nullptr, FILE_ATTRIBUTE_NORMAL, share,
                           disposition, options, /*EaBuffer=*/nullptr, /*EaLength=*/0);
        isNew = result >= 0 && status->Information == FILE_CREATED;
        return result;
    };
    Opened opened = openBy(create, folder, path, mode);
    return {std::move(opened), isNew};
}

WalkedPath::WalkedPath(std::wstring_view extendedPath) {
    // The prefixes have the same length, so that one replaces the other.
    if (extendedPath.size() > kKernelPrefix.size()) {
        mPath = kKernelPrefix;
        mPath += extendedPath.substr(kKernelPrefix.size());
    }
    mTopLength = mPath.size();
}

std::wstring_view WalkedPath::below() const noexcept {
    std::wstring_view names = mPath;
    names.remove_prefix(mTopLength);
    if (!names.empty() && isSeparator(names.front())) names.remove_prefix(1);
    return names;
}

void WalkedPath::append(std::wstring_view name) {
    if (mPath.back() != L'\\') mPath += L'\\';
    mPath += name;
}

std::pair<HANDLE, std::wstring_view> WalkedPath::nearest(std::size_t length) const {
    const auto isAbove = [length](const Held& held) { return held.length < length; };
    const auto from = std::find_if(mHeld.rbegin(), mHeld.rend(), isAbove);
    const std::wstring_view path = std::wstring_view(mPath).substr(0, length);
    if (from == mHeld.rend()) return {nullptr, path};
    const std::size_t start = from->length + (isSeparator(path[from->length]) ? 1 : 0);
    return {from->folder.get(), path.substr(start)};
}

Opened WalkedPath::open(std::size_t length, const OpenMode& mode) const {
    const auto [folder, path] = nearest(length);
    return openRelative(folder, path, mode);
}

// Appends the name and cuts it off again, since a copy of a long path for each entry would cost more.
Opened WalkedPath::openEntry(std::wstring_view name, const OpenMode& mode) {
    const std::size_t length = mPath.size();
    append(name);
    Opened entry = open(mPath.size(), mode);
    cut(length);
    return entry;
}

Created WalkedPath::create(const OpenMode& mode, Existing existing) const {
    const auto [folder, path] = nearest(mPath.size());
    return createRelative(folder, path, mode, existing);
}

Created WalkedPath::createEntry(std::wstring_view name, const OpenMode& mode, Existing existing) {
    const std::size_t length = mPath.size();
    append(name);
    Created created = create(mode, existing);
    cut(length);
    return created;
}

std::wstring WalkedPath::extended(std::wstring_view name) const {
    std::wstring path = LR"(\\?\)";
    path += std::wstring_view(mPath).substr((std::min)(mPath.size(), kKernelPrefix.size()));
    if (path.back() != L'\\') path += L'\\';
    return path += name;
}

void WalkedPath::hold(platform::KernelHandle& folder) {
    const std::size_t last = mHeld.empty() ? 0 : mHeld.back().length;
    if (mPath.size() - last > kFar) mHeld.push_back({mPath.size(), std::move(folder)});
}

void WalkedPath::release() noexcept {
    if (!mHeld.empty() && mHeld.back().length == mPath.size()) mHeld.pop_back();
}

}  // namespace xo::files
