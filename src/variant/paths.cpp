// Access to values of nested maps by a path of keys.
#include "variant/pathKeys.h"
#include "xoSystem/xoVariant.h"

namespace xo {

xoVariant& variant::createPath(Map& map, std::string_view path, char separator, bool* isNew) {
    Map* at = &map;
    std::string_view key;
    while (takeKey(path, separator, key)) at = &(*at)[key].editMap();
    const std::size_t before = at->size();  // operator[] does not say whether it has inserted
    xoVariant& value = (*at)[key];
    if (isNew != nullptr) *isNew = at->size() != before;
    return value;
}

using Map = xoVariant::xoVariantMapImpl;

// Reads the path once and stops at the first key that is absent. A value on the way that is not a map ends the search;
// nothing is converted.
const xoVariant* Map::findPath(const char* path, char separator) const {
    if (path == nullptr) return nullptr;
    for (const Map* map = this;; ++path) {
        const char* const key = path;
        while (*path != separator && *path != '\0') ++path;
        const auto found = map->find(std::string_view(key, static_cast<std::size_t>(path - key)));
        if (found == map->end()) return nullptr;
        if (*path == '\0') return &found->second;
        if (found->second.getType() != MAP) return nullptr;
        map = &found->second.getMap();
    }
}

xoVariant* Map::findPath(const char* path, char separator) {
    return const_cast<xoVariant*>(std::as_const(*this).findPath(path, separator));
}

xoVariant Map::getValuePath(const char* path, const xoVariant& defaultValue, char separator) const {
    const xoVariant* const found = findPath(path, separator);
    return found != nullptr ? *found : defaultValue;
}

xoVariant& Map::editValuePath(const char* path, const xoVariant& defaultValue, char separator) {
    // A null path has no place in the map, but the caller gets a reference that it may write to: a value of the calling
    // thread, which the next such call overwrites.
    if (path == nullptr) {
        static thread_local xoVariant scratch;
        return scratch = defaultValue;
    }
    std::string_view rest(path);
    std::string_view key;
    Map* map = this;
    // At most one existing value is replaced by a map, because everything below it is new. It lives until the end of
    // the call, since the path and the default may be parts of it.
    xoVariant lost;
    const xoVariant* fill = &defaultValue;
    while (variant::takeKey(rest, separator, key)) {
        xoVariant& value = (*map)[key];
        if (value.getType() != MAP) {
            if (&value == fill) fill = &lost;
            if (!value.isNull()) lost.swap(value);
        }
        map = &value.editMap();
    }
    return map->editValue(key, *fill);
}

}  // namespace xo
