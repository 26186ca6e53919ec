// What the characters of a path mean, before Windows is asked about it.
#ifndef XO_PLATFORM_PATHSYNTAX_H
#define XO_PLATFORM_PATHSYNTAX_H

#include <string_view>

namespace xo::platform {

inline bool isSeparator(wchar_t c) noexcept { return c == L'\\' || c == L'/'; }

// A path with a NUL inside names no file: Windows would read it only up to there.
inline bool hasNul(std::wstring_view text) noexcept { return text.find(L'\0') != std::wstring_view::npos; }

inline bool beginsWithDrive(std::wstring_view path) noexcept { return path.size() >= 2 && path[1] == L':'; }

// Whether the path depends neither on the working folder nor on the current drive. "C:a" depends on the working folder
// of that drive.
inline bool isAbsolutePath(std::wstring_view path) noexcept {
    if (beginsWithDrive(path)) return path.size() >= 3 && isSeparator(path[2]);
    return path.size() >= 2 && isSeparator(path[0]) && isSeparator(path[1]);
}

}  // namespace xo::platform

#endif
