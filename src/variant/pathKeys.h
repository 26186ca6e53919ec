// Paths of keys, as texts in which a NUL is a character like any other.
#ifndef XO_VARIANT_PATHKEYS_H
#define XO_VARIANT_PATHKEYS_H

#include <string_view>

#include "variant/treeCursor.h"

namespace xo::variant {

// The next key of the path, which begins at its first byte; the path then begins behind the key's separator. Returns
// whether a separator ended the key, so that another key (perhaps empty) follows.
inline bool takeKey(std::string_view& path, char separator, std::string_view& key) {
    std::size_t end = 0;  // keys are short: a call to search for the separator costs more
    while (end != path.size() && path[end] != separator) ++end;
    key = path.substr(0, end);
    if (end == path.size()) return false;
    path.remove_prefix(end + 1);
    return true;
}

// The value at the path, made UNKNOWN if absent. What is on the way and no map is replaced by one.
xoVariant& createPath(Map& map, std::string_view path, char separator, bool* isNew = nullptr);

}  // namespace xo::variant

#endif
