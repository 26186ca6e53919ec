// Parts of paths, and valid names for files. "/" and "\" are both separators. The file system is not accessed.
#include <algorithm>
#include <string_view>

#include "text/fileNames.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {
namespace {

constexpr char kSeparators[] = "/\\";

std::string_view folderOf(std::string_view path) {
    const std::size_t separator = path.find_last_of(kSeparators);
    if (separator == std::string_view::npos) return {};
    // A root keeps its separator: "C:" alone is not the root, but the current folder of the drive.
    const bool isRoot = separator == 0 || (separator == 2 && path[1] == ':');
    return path.substr(0, isRoot ? separator + 1 : separator);
}

std::string_view fileOf(std::string_view path) {
    return path.substr(path.find_last_of(kSeparators) + 1);  // npos + 1 is 0
}

// The position of the dot before the extension, or the size of the name. Dots at the start of the name do not begin an
// extension.
std::size_t extensionDot(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    const bool leading = name.find_first_not_of('.') > dot;
    return dot == std::string_view::npos || leading ? name.size() : dot;
}

bool mayEndName(char c) { return text::mayStandInFileName(c) && c != '.' && c != ' '; }

}  // namespace

std::string xoStringUtils::ExtractFolder(const std::string& path) { return std::string(folderOf(path)); }

std::string xoStringUtils::ExtractFileBaseName(const std::string& path) {
    const std::string_view name = fileOf(path);
    return std::string(name.substr(0, extensionDot(name)));
}

std::string xoStringUtils::ExtractFileExtension(const std::string& path) {
    const std::string_view name = fileOf(path);
    const std::size_t dot = extensionDot(name);
    return dot == name.size() ? std::string() : std::string(name.substr(dot + 1));
}

void xoStringUtils::SplitFolderFilename(const std::string& path, std::string& folder, std::string& file) {
    // Both are copies before either output is written, because an output may be the path itself.
    std::string start(folderOf(path));
    std::string rest(fileOf(path));
    folder = std::move(start);
    file = std::move(rest);
}

std::string& xoStringUtils::GenerateValidFileName(std::string& name, char replacement) {
    // A single byte from 0x80 up would not be UTF-8.
    if (!mayEndName(replacement) || static_cast<unsigned char>(replacement) >= 0x80) replacement = '_';
    if (name.empty()) name = replacement;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return !text::mayStandInFileName(c); }, replacement);
    // Windows removes dots and blanks from the end of a name, so the file would get another name:
    // https://learn.microsoft.com/windows/win32/fileio/naming-a-file
    for (auto last = name.rbegin(); last != name.rend() && !mayEndName(*last); ++last) *last = replacement;

    // Inserted before the extension: "NUL.txt" becomes "NUL_.txt".
    if (text::isDeviceName(name)) name.insert(text::deviceStem(name).size(), 1, replacement);
    return name;
}

}  // namespace xo
