// Existence, kind, size and times of files, and the free space of a disk.
#include <algorithm>
#include <utility>

#include "files/pathParts.h"
#include "platform/fileTime.h"
#include "platform/openFile.h"
#include "platform/wideText.h"
#include "xoSystem/xoDirUtils.h"

namespace xo {
namespace {

using platform::toApiPath;

// The attributes, times and size of a file or folder, from whichever call of Windows could read them.
struct Facts {
    DWORD attributes;
    FILETIME accessed;
    FILETIME created;
    FILETIME modified;
    std::uint64_t size;
};

// WIN32_FIND_DATAW, WIN32_FILE_ATTRIBUTE_DATA and BY_HANDLE_FILE_INFORMATION have these members in common.
template <class Source>
Facts factsOf(const Source& source) {
    return {source.dwFileAttributes, source.ftLastAccessTime, source.ftCreationTime, source.ftLastWriteTime,
            (std::uint64_t{source.nFileSizeHigh} << 32) | source.nFileSizeLow};
}

// Reads the facts from the folder's listing, for a file that cannot be opened even for its attributes, such as the
// paging file. They may be older than the file's own.
bool readFromFolder(const std::wstring& path, Facts& facts) {
    WIN32_FIND_DATAW found;
    if (!platform::FindHandle(::FindFirstFileW(path.c_str(), &found))) return false;
    facts = factsOf(found);
    return true;
}

// Reads the facts of the file or folder to which a link leads. FILE_FLAG_BACKUP_SEMANTICS is needed to open folders.
bool readTarget(const std::wstring& path, Facts& facts) {
    const platform::FileHandle file =
        platform::openFile(path, FILE_READ_ATTRIBUTES, platform::kShareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    BY_HANDLE_FILE_INFORMATION target;
    if (!file || !::GetFileInformationByHandle(file.get(), &target)) return false;
    facts = factsOf(target);
    return true;
}

// False when nothing exists at the path, or a link leads nowhere.
bool readFacts(const std::wstring& path, Facts& facts) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data))
        return ::GetLastError() == ERROR_SHARING_VIOLATION && readFromFolder(path, facts);
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return readTarget(path, facts);
    facts = factsOf(data);
    return true;
}

// Whether the error only means that the path does not lead to a folder, so that a parent may still be a valid one.
bool isNoFolder(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_DIRECTORY ||
           error == ERROR_INVALID_NAME || error == ERROR_BAD_PATHNAME;
}

// Windows reports 0 for a time that the file system does not store.
std::int64_t toSeconds(const FILETIME& time, std::int64_t unknown) {
    return platform::toTicks(time) == 0 ? unknown : platform::toUnixSeconds(time);
}

}  // namespace

void xoFileInfoUtf8::clearInfos() {
    path.clear();
    accessTime = creationTime = modificationTime = 0;
    size = 0;
    exists = hasType = isDirectory = false;
}

bool xoFileInfoUtf8::operator==(const xoFileInfoUtf8& other) const {
    return accessTime == other.accessTime && creationTime == other.creationTime &&
           modificationTime == other.modificationTime && size == other.size && exists == other.exists &&
           hasType == other.hasType && isDirectory == other.isDirectory && path == other.path;
}

bool xoDirUtils::FileExistsUtf8(const std::string& path) {
    Facts facts;
    return readFacts(toApiPath(path), facts);
}

bool xoDirUtils::DirExistsUtf8(const std::string& path) {
    const DWORD attributes = ::GetFileAttributesW(toApiPath(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

void xoDirUtils::GetFileInfoUtf8(const std::string& path, xoFileInfoUtf8& info) {
    std::string asked = path;  // a copy: the path may be info.path itself, which is cleared next
    info.clearInfos();
    info.path = std::move(asked);

    Facts facts;
    if (!readFacts(toApiPath(info.path), facts)) return;
    info.exists = info.hasType = true;
    info.isDirectory = (facts.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    // A time that is unknown is taken to be that of the last change.
    info.modificationTime = toSeconds(facts.modified, 0);
    info.accessTime = toSeconds(facts.accessed, info.modificationTime);
    info.creationTime = toSeconds(facts.created, info.modificationTime);
    info.size = info.isDirectory ? 0 : facts.size;
}

std::uint64_t xoDirUtils::GetAvailableDiskSizeUtf8(const std::string& path, std::string& error) {
    std::wstring folder = platform::toExtendedPath(platform::toWide(path));
    const std::size_t root = files::rootLength(folder);
    // On a network only the share is asked: a server that does not answer would delay each attempt.
    if (files::isNetworkPath(folder)) {
        folder.resize(root);
        if (!files::isSeparator(folder.back())) folder += L'\\';
    }
    for (;;) {
        ULARGE_INTEGER available;
        if (!folder.empty() && ::GetDiskFreeSpaceExW(folder.c_str(), &available, nullptr, nullptr)) {
            error.clear();
            return available.QuadPart;
        }
        const DWORD code = folder.empty() ? ERROR_INVALID_NAME : ::GetLastError();
        if (folder.size() <= root || !isNoFolder(code)) {
            error = "GetDiskFreeSpaceExW error " + std::to_string(code);
            return 0;
        }
        // The folder may not exist yet: its parent lies on the same disk.
        folder.resize((std::max)(root, folder.find_last_of(L'\\')));
    }
}

}  // namespace xo
