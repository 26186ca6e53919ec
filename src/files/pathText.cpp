// Paths as text: those of the process, absolute ones, parents, and paths in the spelling of the disk.
#include <algorithm>

#include "files/pathParts.h"
#include "platform/handle.h"
#include "platform/modulePath.h"
#include "platform/ordinalText.h"
#include "platform/wideText.h"
#include "xoSystem/xoDirUtils.h"

#include <shellapi.h>
#include <shlwapi.h>

namespace xo {
namespace {

using files::isSeparator;
using platform::hasNul;
using platform::toApiPath;
using platform::toUtf8;
using platform::toWide;

// The name as the shell displays it. The shell may hide an extension or translate a name, and it accepts neither long
// paths nor "\\?\". So its answer is used only if it differs in nothing but case.
std::wstring nameInShell(const std::wstring& path, std::wstring_view name) {
    SHFILEINFOW info{};
    if (path.size() >= MAX_PATH || ::SHGetFileInfoW(path.c_str(), 0, &info, sizeof info, SHGFI_DISPLAYNAME) == 0)
        return {};
    return platform::equalsIgnoringCase(info.szDisplayName, name) ? info.szDisplayName : std::wstring();
}

// The name as the folder stores it; empty when there is no such file.
std::wstring nameInFolder(const std::wstring& path) {
    WIN32_FIND_DATAW found;
    const platform::FindHandle search(::FindFirstFileW(toApiPath(path).c_str(), &found));
    return search ? found.cFileName : std::wstring();
}

// The stored name of the last name of the path; empty when there is no such file.
std::wstring storedName(const std::wstring& path, std::wstring_view name) {
    if (files::isDots(name)) return std::wstring(name);
    // A name with a wildcard would match another file. Besides "*" and "?" the kernel has three further wildcards:
    // https://learn.microsoft.com/windows-hardware/drivers/ddi/ntifs/nf-ntifs-_fsrtl_advanced_fcb_header-fsrtlisnameinexpression
    if (name.find_first_of(LR"(*?<>")") != std::wstring_view::npos) return {};
    std::wstring stored = nameInShell(path, name);
    if (stored.empty()) stored = nameInFolder(path);
    return stored;
}

// Makes the letter in front of the colon upper case: in "c:" and in "\\?\c:".
void raiseDriveLetter(std::wstring& root) {
    const std::size_t colon = root.find(L':');
    if (colon == std::wstring::npos || colon == 0) return;
    wchar_t& letter = root[colon - 1];
    if (letter >= L'a' && letter <= L'z') letter = static_cast<wchar_t>(letter - L'a' + L'A');
}

}  // namespace

bool xoDirUtils::SetCurrentWorkingDirUtf8(const std::string& path) {
    const std::wstring folder = toWide(path);  // this call refuses the "\\?\" prefix
    return !hasNul(folder) && ::SetCurrentDirectoryW(folder.c_str()) != FALSE;
}

std::string xoDirUtils::GetCurrentWorkingDirUtf8() {
    return toUtf8(platform::readWide([](wchar_t* buffer, DWORD size) { return ::GetCurrentDirectoryW(size, buffer); }));
}

bool xoDirUtils::GetFolderOfCurrentProcessUtf8(std::string& folder) {
    std::wstring path = platform::modulePath(nullptr);
    const std::size_t name = path.find_last_of(LR"(\/)");
    if (name == std::wstring::npos) return false;
    path.resize((std::max)(name, files::rootLength(path)));
    folder = toUtf8(path);
    return true;
}

std::string xoDirUtils::GetAbsolutePathUtf8(const std::string& path) {
    const std::wstring given = toWide(path);
    if (hasNul(given)) return {};
    return toUtf8(platform::readWide(
        [&](wchar_t* buffer, DWORD size) { return ::GetFullPathNameW(given.c_str(), size, buffer, nullptr); }));
}

bool xoDirUtils::IsPathRelativeUtf8(const std::string& path) {
    return ::PathIsRelativeW(toWide(path).c_str()) != FALSE;
}

std::string xoDirUtils::GetParentPathUtf8(const std::string& path) {
    std::string parent = path;
    std::replace(parent.begin(), parent.end(), '\\', '/');
    if (!parent.empty() && parent.back() == '/') parent.pop_back();  // no name follows it
    const std::size_t last = parent.rfind('/');
    parent.resize(last == std::string::npos ? 0 : last);
    return parent;
}

std::string xoDirUtils::GetActualPathNameUtf8(const std::string& path) {
    const std::wstring given = toWide(path);
    if (hasNul(given)) return path;

    std::size_t at = files::rootLength(given);
    std::wstring actual = given.substr(0, at);
    raiseDriveLetter(actual);
    while (at < given.size()) {
        const auto rest = given.begin() + static_cast<std::ptrdiff_t>(at);
        const auto nameEnd = std::find_if(rest, given.end(), isSeparator);
        const std::wstring name(rest, nameEnd);
        // From the first name that does not exist on, the path stays as it was given.
        const std::wstring stored = storedName(actual + name, name);
        if (stored.empty()) return toUtf8(actual.append(given, at));
        const auto next = std::find_if_not(nameEnd, given.end(), isSeparator);
        actual.append(stored).append(nameEnd, next);
        at = static_cast<std::size_t>(next - given.begin());
    }
    return toUtf8(actual);
}

}  // namespace xo
