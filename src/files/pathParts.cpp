// The parts of paths: roots, prefixes and separators at the end.
#include "files/pathParts.h"

#include "platform/ordinalText.h"
#include "platform/wideText.h"

namespace xo::files {
namespace {

constexpr std::size_t kDevicePrefix = 4;   // "\\?\" or "\\.\"
constexpr std::size_t kNetworkPrefix = 8;  // "\\?\UNC\"

bool hasDevicePrefix(std::wstring_view path) {
    return path.size() >= kDevicePrefix && isSeparator(path[0]) && isSeparator(path[1]) &&
           (path[2] == L'?' || path[2] == L'.') && isSeparator(path[3]);
}

bool hasNetworkPrefix(std::wstring_view path) {
    if (path.size() < kNetworkPrefix || !hasDevicePrefix(path) || !isSeparator(path[7])) return false;
    return platform::equalsIgnoringCase(path.substr(kDevicePrefix, 3), L"UNC");
}

// The position behind a name, and behind any number of separators, that begin at a position.
std::size_t pastName(std::wstring_view path, std::size_t at) {
    while (at < path.size() && !isSeparator(path[at])) ++at;
    return at;
}

std::size_t pastSeparators(std::wstring_view path, std::size_t at) {
    while (at < path.size() && isSeparator(path[at])) ++at;
    return at;
}

}  // namespace

// Formats of paths: https://learn.microsoft.com/dotnet/standard/io/file-path-formats
std::size_t rootLength(std::wstring_view path) {
    std::size_t at = 0;
    int names = 0;  // that belong to the root
    if (hasNetworkPrefix(path)) {
        at = kNetworkPrefix;
        names = 2;
    } else if (hasDevicePrefix(path)) {
        at = kDevicePrefix;
        names = 1;
    } else if (path.size() >= 2 && isSeparator(path[0]) && isSeparator(path[1])) {
        at = 2;
        names = 2;
    } else if (platform::beginsWithDrive(path)) {
        at = 2;
    }
    for (; names > 0; --names) at = pastName(path, pastSeparators(path, at));
    return pastSeparators(path, at);
}

bool isNetworkPath(std::wstring_view path) {
    if (hasDevicePrefix(path)) return hasNetworkPrefix(path);
    return path.size() >= 2 && isSeparator(path[0]) && isSeparator(path[1]);
}

std::wstring_view withoutTrailingSeparators(std::wstring_view path) {
    const std::size_t root = rootLength(path);
    std::size_t length = path.size();
    while (length > root && isSeparator(path[length - 1])) --length;
    return path.substr(0, length);
}

// The path is extended with "\*" behind it, which is removed again. Without it Windows would remove trailing dots and
// blanks, so that "..." would mean the working directory.
std::wstring searchedFolder(const std::string& folder) {
    std::wstring pattern(withoutTrailingSeparators(platform::toWide(folder)));
    if (pattern.empty()) return {};
    if (!isSeparator(pattern.back())) pattern += L'\\';
    std::wstring path = platform::toExtendedPath(pattern + L'*');
    if (!path.empty()) path.pop_back();
    return std::wstring(withoutTrailingSeparators(path));
}

// "D:" means the root of the drive, as in searchedFolder, and not its working folder.
std::wstring madeFolder(const std::string& folder) {
    std::wstring path(withoutTrailingSeparators(platform::toWide(folder)));
    if (path.empty()) return {};
    if (rootLength(path) == path.size() && !isSeparator(path.back())) path += L'\\';
    return std::wstring(withoutTrailingSeparators(platform::toExtendedPath(path)));
}

}  // namespace xo::files
