// The parts of a path: its root and its names.
#ifndef XO_FILES_PATHPARTS_H
#define XO_FILES_PATHPARTS_H

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/pathSyntax.h"

namespace xo::files {

using platform::isSeparator;

// Whether the name is "." or "..".
inline bool isDots(std::wstring_view name) noexcept { return name == L"." || name == L".."; }

// The length of the part in front of the first name, separators included: "C:", "C:\", "\", "\\server\share\",
// "\\?\C:\", "\\?\UNC\server\share\", "\\.\device\". 0 for a path that begins with a name.
std::size_t rootLength(std::wstring_view path);

// Whether the path lies on a share: "\\server\...", "\\?\UNC\server\...".
bool isNetworkPath(std::wstring_view path);

// The path without separators at its end; a root keeps its own.
std::wstring_view withoutTrailingSeparators(std::wstring_view path);

// The extended path of the folder in which a search for "folder\*" looks, without separators at its end; empty for a
// path that names nothing.
std::wstring searchedFolder(const std::string& folder);

// The extended path of a folder that may have to be made, without separators at its end. As in an ordinary path,
// trailing dots and blanks are removed: a folder with such a name could be opened by its extended path only. Empty for
// a path that names nothing.
std::wstring madeFolder(const std::string& folder);

}  // namespace xo::files

#endif
