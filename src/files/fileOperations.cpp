// Renames, copies and removes single files, and makes folders.
#include <algorithm>

#include "files/fileCopy.h"
#include "files/pathParts.h"
#include "platform/wideText.h"
#include "platform/windows.h"
#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoProgress.h"

namespace xo {
namespace {

using platform::toApiPath;

bool isFolder(const wchar_t* path) {
    const DWORD attributes = ::GetFileAttributesW(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// True also if somebody else makes the folder at the same moment.
bool makeFolder(const wchar_t* path) { return ::CreateDirectoryW(path, nullptr) || isFolder(path); }

// 0 when it cannot be read; CopyFileExW then reports the failure, or the size.
std::uint64_t sizeOf(const wchar_t* path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!::GetFileAttributesExW(path, GetFileExInfoStandard, &data)) return 0;
    return (std::uint64_t{data.nFileSizeHigh} << 32) | data.nFileSizeLow;
}

}  // namespace

bool xoDirUtils::RenameFileUtf8(const std::string& from, const std::string& to, std::string* error) {
    // Between volumes Windows copies the file and deletes the old one. A folder is renamed within its volume only.
    // https://learn.microsoft.com/windows/win32/api/winbase/nf-winbase-movefileexw
    constexpr DWORD flags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED;
    const std::wstring source = toApiPath(from);
    const std::wstring target = toApiPath(to);
    if (::MoveFileExW(source.c_str(), target.c_str(), flags)) return true;
    const DWORD code = ::GetLastError();
    if (error != nullptr) *error = "MoveFileExW error " + std::to_string(code);
    return false;
}

bool xoDirUtils::CopyFileUtf8(const std::string& from, const std::string& to, bool failIfExists) {
    return ::CopyFileW(toApiPath(from).c_str(), toApiPath(to).c_str(), failIfExists ? TRUE : FALSE) != FALSE;
}

bool xoDirUtils::CopyFileUtf8(const std::string& from, const std::string& to, bool failIfExists, std::string* error,
                              xoProgressNotifier* progress) {
    const std::wstring source = toApiPath(from);
    const std::uint64_t size = progress ? sizeOf(source.c_str()) : 0;
    const DWORD flags = failIfExists ? COPY_FILE_FAIL_IF_EXISTS : 0;
    const DWORD code = files::copyFile(source, toApiPath(to), flags, size, progress);
    if (code == ERROR_SUCCESS) return true;
    const bool isCanceled = code == files::kCopyCanceled && progress && progress->isCanceled();
    if (error != nullptr) *error = isCanceled ? "Canceled" : "CopyFileExW error " + std::to_string(code);
    return false;
}

bool xoDirUtils::RemoveFileUtf8(const std::string& path) { return ::DeleteFileW(toApiPath(path).c_str()) != FALSE; }

bool xoDirUtils::MkpathUtf8(const std::string& path) {
    if (path.empty()) return true;
    std::wstring folder = toApiPath(path);
    if (folder.empty()) return false;
    if (isFolder(folder.c_str())) return true;

    std::replace(folder.begin(), folder.end(), L'/', L'\\');
    const std::size_t root = files::rootLength(folder);
    bool mayExist = true;  // false below the first folder that is made here: nothing exists there
    for (std::size_t at = root; at < folder.size();) {
        const std::size_t end = (std::min)(folder.find(L'\\', at), folder.size());
        const std::wstring prefix = folder.substr(0, end);
        if (!mayExist || !isFolder(prefix.c_str())) {
            if (!makeFolder(prefix.c_str())) return false;
            mayExist = false;
        }
        at = (std::min)(folder.find_first_not_of(L'\\', end), folder.size());
    }
    return root < folder.size();  // false for a root that does not exist: it cannot be made
}

}  // namespace xo
