// Keys of names, by which names and paths are compared.
#include "xref/nameKey.h"

#include <algorithm>

#include "platform/moduleFunction.h"
#include "platform/wideText.h"
#include "text/ascii.h"

namespace xo::xref {
namespace {

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Looked up, because its import library differs from one development kit to another.
// https://learn.microsoft.com/windows/win32/api/winnls/nf-winnls-normalizestring
std::wstring composed(const std::wstring& text) {
    using Normalize = int WINAPI(int form, LPCWSTR, int, LPWSTR, int);
    static auto* const normalize =
        platform::findFunction<Normalize>(::GetModuleHandleW(L"kernel32.dll"), "NormalizeString");
    constexpr int kFormC = 1;
    // Without the function, and where it fails, the text is compared as it is.
    if (!normalize) return text;
    const int size = static_cast<int>(text.size());
    std::wstring result(3 * text.size() + 16, L'\0');  // no character becomes more than three
    const int length = normalize(kFormC, text.data(), size, result.data(), static_cast<int>(result.size()));
    if (length <= 0) return text;
    result.resize(static_cast<std::size_t>(length));
    return result;
}

// The file system maps each UTF-16 unit by a table without a language. The invariant mapping without linguistic casing
// is the nearest: it changes no length, which is checked.
std::string upperUnicode(std::string_view utf8) {
    std::wstring wide = composed(platform::toWide(utf8));
    if (wide.empty()) return std::string(utf8);
    const int size = static_cast<int>(wide.size());
    std::wstring upper(wide.size(), L'\0');
    if (::LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, wide.data(), size, upper.data(), size,
                        /*lpVersionInformation=*/nullptr, /*lpReserved=*/nullptr, /*sortHandle=*/0) == size)
        wide = std::move(upper);
    return platform::toUtf8(wide);
}

// Removes the last name, and the separator in front of it, from the path.
std::string_view takeLastName(std::string_view& path) {
    const std::size_t separator = path.rfind('/');
    const std::string_view name = path.substr(separator + 1);  // npos + 1 is 0
    path = path.substr(0, separator == std::string_view::npos ? 0 : separator);
    return name;
}

}  // namespace

std::string nameKey(std::string_view utf8) {
    // Most names are ASCII, for which no system call is needed.
    if (!isAscii(utf8)) return upperUnicode(utf8);
    std::string key(utf8);
    std::transform(key.begin(), key.end(), key.begin(), text::toUpper);
    return key;
}

// The hash only selects candidates, whose keys are compared, so that a weak and fast one suffices.
std::uint32_t hashOf(std::string_view key) {
    std::uint32_t hash = 2166136261U;  // FNV-1a
    for (const char c : key) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
    return hash;
}

// From the end, because the folders in front differ between machines.
unsigned countSharedNames(std::string_view a, std::string_view b) {
    unsigned count = 0;
    while (!a.empty() && !b.empty() && nameKey(takeLastName(a)) == nameKey(takeLastName(b))) ++count;
    return count;
}

bool isBelow(std::string_view pathKey, std::string_view folderKey) {
    const bool endsInSeparator = !folderKey.empty() && folderKey.back() == '/';  // a root
    return pathKey.size() > folderKey.size() && pathKey.substr(0, folderKey.size()) == folderKey &&
           (endsInSeparator || pathKey[folderKey.size()] == '/');
}

}  // namespace xo::xref
