// The keys of a path, one after the other.
#ifndef XO_VARIANT_PATHKEYS_H
#define XO_VARIANT_PATHKEYS_H

#include <string_view>

#include "xoSystem/xoVariant.h"

namespace xo::variant {

// The next key of the path, which begins at its first byte; the path then begins behind the key's separator. Returns
// whether a separator ended the key, so that another key (perhaps empty) follows.
inline bool takeKey(std::string_view& path, char separator, std::string_view& key) {
    const std::size_t end = path.find(separator);
    key = path.substr(0, end);
    if (end == std::string_view::npos) return false;
    path.remove_prefix(end + 1);
    return true;
}

}  // namespace xo::variant

#endif
