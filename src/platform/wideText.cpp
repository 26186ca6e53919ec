// UTF-8, UTF-16 and the code page of the system; paths as the functions of Windows take them.
#include "platform/wideText.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "platform/pathSyntax.h"
#include "platform/windows.h"

namespace xo::platform {
namespace {

// CreateDirectoryW leaves space for an 8.3 name below MAX_PATH, so its limit is the lowest one.
constexpr std::size_t kShortPathLimit = MAX_PATH - 12;

bool fitsInt(std::size_t size) { return size <= static_cast<std::size_t>((std::numeric_limits<int>::max)()); }

// Invalid sequences of UTF-8 become U+FFFD. The result is empty for a text that is too long for the call.
std::wstring widen(UINT codePage, std::string_view text) {
    std::wstring wide;
    if (text.empty() || !fitsInt(text.size())) return wide;
    wide.resize(text.size());  // no code page makes more UTF-16 units than it has bytes
    const int length = ::MultiByteToWideChar(codePage, 0, text.data(), static_cast<int>(text.size()), wide.data(),
                                             static_cast<int>(wide.size()));
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}

std::string narrow(UINT codePage, std::wstring_view wide) {
    std::string text;
    if (wide.empty() || !fitsInt(wide.size())) return text;
    const int size = static_cast<int>(wide.size());
    const int length = ::WideCharToMultiByte(codePage, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    text.resize(static_cast<std::size_t>(length));
    ::WideCharToMultiByte(codePage, 0, wide.data(), size, text.data(), length, nullptr, nullptr);
    return text;
}

bool startsWith(std::wstring_view text, std::wstring_view prefix) { return text.substr(0, prefix.size()) == prefix; }

// With these prefixes Windows accepts any length:
// https://learn.microsoft.com/windows/win32/fileio/maximum-file-path-limitation
constexpr wchar_t kExtended[] = LR"(\\?\)";
constexpr wchar_t kExtendedShare[] = LR"(\\?\UNC\)";

// Paths with these prefixes are passed to the file system unchanged.
bool isExtended(std::wstring_view path) { return startsWith(path, kExtended) || startsWith(path, LR"(\\.\)"); }

// An upper bound for the length of the path after Windows has made it absolute.
std::size_t absoluteLength(const std::wstring& path) {
    if (isAbsolutePath(path)) return path.size();
    // Each drive has a working folder of its own.
    if (beginsWithDrive(path)) return ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    return ::GetCurrentDirectoryW(0, nullptr) + path.size();
}

}  // namespace

std::wstring toWide(std::string_view utf8) { return widen(CP_UTF8, utf8); }

std::string toUtf8(std::wstring_view wide) { return narrow(CP_UTF8, wide); }

// Most names are ASCII: their beginning is copied without a call, and the rest is converted in one.
void appendUtf8(std::string& text, std::wstring_view wide) {
    // A surrogate pair becomes four bytes, any other unit at most three.
    constexpr std::size_t kMostBytesPerUnit = 3;
    if (!fitsInt(wide.size() * kMostBytesPerUnit)) return;
    std::size_t length = text.size();
    text.resize(length + wide.size());
    while (!wide.empty() && wide.front() < 0x80) {
        text[length++] = static_cast<char>(wide.front());
        wide.remove_prefix(1);
    }
    if (wide.empty()) return;
    text.resize(length + wide.size() * kMostBytesPerUnit);
    const int added =
        ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), text.data() + length,
                              static_cast<int>(text.size() - length), nullptr, nullptr);
    text.resize(length + static_cast<std::size_t>(added));
}

std::string toNative(std::string_view utf8, std::size_t maxBytes) {
    const std::wstring wide = toWide(utf8);
    std::wstring_view kept(wide.data(), (std::min)(wide.size(), maxBytes));  // each unit becomes a byte or more
    for (;;) {
        if (kept.size() < wide.size() && !kept.empty() && IS_HIGH_SURROGATE(kept.back())) kept.remove_suffix(1);
        std::string native = narrow(CP_ACP, kept);
        if (native.size() <= maxBytes) return native;
        constexpr std::size_t kMostBytesPerUnit = 3;
        // Removes at least one unit per round, and rather too few than too many.
        const std::size_t excess = native.size() - maxBytes;
        kept.remove_suffix((excess + kMostBytesPerUnit - 1) / kMostBytesPerUnit);
    }
}

std::string fromNative(std::string_view native) { return fromCodePage(CP_ACP, native); }

std::string fromCodePage(unsigned codePage, std::string_view text) { return toUtf8(widen(codePage, text)); }

std::wstring toApiPath(std::string_view utf8Path) { return toApiPath(toWide(utf8Path)); }

// Short paths stay as they are, because the prefix turns off the handling of "/", "." and "..".
std::wstring toApiPath(std::wstring path) {
    if (hasNul(path)) return {};
    if (path.empty() || absoluteLength(path) < kShortPathLimit) return path;
    if (std::wstring extended = toExtendedPath(path); !extended.empty()) return extended;
    return path;
}

std::wstring toExtendedPath(const std::wstring& path) {
    if (hasNul(path)) return {};
    if (isExtended(path)) return path;
    std::wstring full =
        readWide([&](wchar_t* buffer, DWORD size) { return ::GetFullPathNameW(path.c_str(), size, buffer, nullptr); });
    if (full.empty() || isExtended(full)) return full;
    if (startsWith(full, LR"(\\)")) return kExtendedShare + full.substr(2);
    return kExtended + full;
}

std::wstring withoutExtendedPrefix(std::wstring path) {
    if (startsWith(path, kExtendedShare)) return path.replace(0, std::size(kExtendedShare) - 1, LR"(\\)");
    return startsWith(path, kExtended) ? path.erase(0, std::size(kExtended) - 1) : path;
}

}  // namespace xo::platform
