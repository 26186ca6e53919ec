#include "files/walkedPath.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <winternl.h>

namespace xo::files {
namespace {

constexpr std::wstring_view kKernelPrefix = LR"(\??\)";  // stands for both "\\?\" and "\\.\"
constexpr std::size_t kFar = 1000;                       // characters

}  // namespace

WalkedPath::WalkedPath(std::wstring_view extendedPath) {
    if (extendedPath.size() <= kKernelPrefix.size()) return;
    mPath = kKernelPrefix;
    mPath += extendedPath.substr(kKernelPrefix.size());
}

void WalkedPath::append(std::wstring_view name) {
    if (mPath.back() != L'\\') mPath += L'\\';
    mPath += name;
}

platform::FileHandle WalkedPath::open(std::size_t length) const {
    const auto isBelow = [length](const Held& held) { return held.length < length; };
    const auto from = std::find_if(mHeld.rbegin(), mHeld.rend(), isBelow);
    std::size_t start = from == mHeld.rend() ? 0 : from->length;
    if (start != 0 && mPath[start] == L'\\') ++start;

    constexpr std::size_t kMostBytes = (std::numeric_limits<USHORT>::max)();
    const std::size_t bytes = (length - start) * sizeof(wchar_t);
    if (bytes == 0 || bytes > kMostBytes) return {};
    UNICODE_STRING name{static_cast<USHORT>(bytes), static_cast<USHORT>(bytes),
                        const_cast<wchar_t*>(mPath.data() + start)};
    OBJECT_ATTRIBUTES attributes;
    InitializeObjectAttributes(&attributes, &name, OBJ_CASE_INSENSITIVE,
                               from == mHeld.rend() ? nullptr : from->folder.get(), /*SecurityDescriptor=*/nullptr);
    HANDLE folder = nullptr;
    IO_STATUS_BLOCK status;
    const NTSTATUS result =
        ::NtOpenFile(&folder, FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES | SYNCHRONIZE, &attributes, &status,
                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                     FILE_DIRECTORY_FILE | FILE_SYNCHRONOUS_IO_NONALERT | FILE_OPEN_FOR_BACKUP_INTENT);
    return result >= 0 ? platform::FileHandle(folder) : platform::FileHandle();
}

void WalkedPath::hold(platform::FileHandle folder) {
    const std::size_t last = mHeld.empty() ? 0 : mHeld.back().length;
    if (mPath.size() - last > kFar) mHeld.push_back({mPath.size(), std::move(folder)});
}

void WalkedPath::release() noexcept {
    if (!mHeld.empty() && mHeld.back().length == mPath.size()) mHeld.pop_back();
}

}  // namespace xo::files
