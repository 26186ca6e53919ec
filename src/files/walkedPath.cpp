#include "files/walkedPath.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "files/pathParts.h"

#include <winternl.h>

namespace xo::files {
namespace {

constexpr std::wstring_view kKernelPrefix = LR"(\??\)";  // stands for both "\\?\" and "\\.\"
constexpr std::size_t kFar = 1000;                       // characters

}  // namespace

Opened openRelative(HANDLE folder, std::wstring_view path, const OpenMode& mode) {
    constexpr std::size_t kMostBytes = (std::numeric_limits<USHORT>::max)();
    const std::size_t bytes = path.size() * sizeof(wchar_t);
    if (bytes == 0) return {{}, ERROR_PATH_NOT_FOUND};
    if (bytes > kMostBytes) return {{}, ERROR_FILENAME_EXCED_RANGE};

    UNICODE_STRING name{static_cast<USHORT>(bytes), static_cast<USHORT>(bytes), const_cast<wchar_t*>(path.data())};
    OBJECT_ATTRIBUTES attributes;
    InitializeObjectAttributes(&attributes, &name, OBJ_CASE_INSENSITIVE, folder, /*SecurityDescriptor=*/nullptr);
    const ULONG options = mode.kind | FILE_SYNCHRONOUS_IO_NONALERT | FILE_OPEN_FOR_BACKUP_INTENT |
                          (mode.followsLink ? 0 : FILE_OPEN_REPARSE_POINT);
    platform::KernelHandle opened;
    IO_STATUS_BLOCK status;
    const NTSTATUS result = ::NtOpenFile(opened.put(), mode.access | SYNCHRONIZE, &attributes, &status,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, options);
    if (result < 0) return {{}, ::RtlNtStatusToDosError(result)};
    return {std::move(opened), ERROR_SUCCESS};
}

WalkedPath::WalkedPath(std::wstring_view extendedPath) {
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

Opened WalkedPath::open(std::size_t length, const OpenMode& mode) const {
    const auto isAbove = [length](const Held& held) { return held.length < length; };
    const auto from = std::find_if(mHeld.rbegin(), mHeld.rend(), isAbove);
    const std::wstring_view path = std::wstring_view(mPath).substr(0, length);
    if (from == mHeld.rend()) return openRelative(nullptr, path, mode);
    const std::size_t start = from->length + (isSeparator(path[from->length]) ? 1 : 0);
    return openRelative(from->folder.get(), path.substr(start), mode);
}

void WalkedPath::hold(platform::KernelHandle& folder) {
    const std::size_t last = mHeld.empty() ? 0 : mHeld.back().length;
    if (mPath.size() - last > kFar) mHeld.push_back({mPath.size(), std::move(folder)});
}

void WalkedPath::release() noexcept {
    if (!mHeld.empty() && mHeld.back().length == mPath.size()) mHeld.pop_back();
}

}  // namespace xo::files
