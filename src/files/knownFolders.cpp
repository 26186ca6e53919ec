// The known folders of the system, and the folder for temporary files.
#include <shlobj.h>

#include <algorithm>

#include "files/pathParts.h"
#include "platform/wideText.h"
#include "xoSystem/xoDirUtils.h"

namespace xo {
namespace {

constexpr DWORD kTempPathCapacity = 2048;
constexpr DWORD kLongestTempPath = 260;  // characters; a longer result counts as none

// The id is a CSIDL. Empty when the system has no such folder.
std::string knownFolder(int id) {
    wchar_t path[MAX_PATH];
    if (FAILED(::SHGetFolderPathW(nullptr, id, nullptr, 0, path))) return {};
    return platform::toUtf8(path);
}

std::wstring systemTempFolder() {
    wchar_t path[kTempPathCapacity];
    const DWORD length = ::GetTempPathW(kTempPathCapacity, path);
    if (length == 0 || length > kLongestTempPath) return {};
    return {path, length};
}

}  // namespace

std::string xoDirUtils::GetFontFolderUtf8() { return knownFolder(CSIDL_FONTS); }

std::string xoDirUtils::GetCommonAppDataFolderUtf8() { return knownFolder(CSIDL_COMMON_APPDATA); }

std::string xoDirUtils::GetAppDataFolderUtf8() { return knownFolder(CSIDL_APPDATA); }

std::string xoDirUtils::GetPicturesFolderUtf8() { return knownFolder(CSIDL_MYPICTURES); }

std::string xoDirUtils::GetDocumentsFolderUtf8() { return knownFolder(CSIDL_PERSONAL); }

std::string xoDirUtils::GetTempFolderUtf8() {
    // Read here, because GetTempPathW prefers TMP to TEMP:
    // https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-gettemppathw
    std::wstring folder = platform::readWide(
        [](wchar_t* buffer, DWORD size) { return ::GetEnvironmentVariableW(L"TEMP", buffer, size); });
    if (folder.empty()) folder = systemTempFolder();
    std::replace(folder.begin(), folder.end(), L'\\', L'/');
    return platform::toUtf8(files::withoutTrailingSeparators(folder));
}

}  // namespace xo
