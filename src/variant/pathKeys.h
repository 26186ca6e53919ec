// Paths of keys in texts that may contain NULs, which are ordinary characters here.
#ifndef XO_VARIANT_PATHKEYS_H
#define XO_VARIANT_PATHKEYS_H

#include <string_view>

#include "variant/treeCursor.h"

namespace xo::variant {

// Stores the first key of the path and removes it, with the separator behind it, from the path. Returns whether there
// was a separator: another key, which may be empty, then follows.
inline bool takeKey(std::string_view& path, char separator, std::string_view& key) {
    std::size_t end = 0;  // keys are short, so that this takes less time than a call to memchr
    while (end != path.size() && path[end] != separator) ++end;
    key = path.substr(0, end);
    if (end == path.size()) return false;
    path.remove_prefix(end + 1);
    return true;
}

// Returns the value at the path, which is inserted as UNKNOWN if absent. Values on the way that are not maps are
// replaced by empty maps. *isNew, unless null, becomes whether the value was inserted.
xoVariant& createPath(Map& map, std::string_view path, char separator, bool* isNew = nullptr);

}  // namespace xo::variant

#endif
