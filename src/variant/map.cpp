// The members of xoVariant's map that are not in the header, except paths and merging.
#include "variant/textForm.h"
#include "xoSystem/xoVariant.h"

namespace xo {

using Map = xoVariant::xoVariantMapImpl;

xoVariant Map::getValue(std::string_view key, const xoVariant& defaultValue) const {
    const auto found = find(key);
    return found != mEntries.end() ? found->second : defaultValue;
}

xoVariant& Map::editValue(std::string_view key, const xoVariant& defaultValue) {
    // Keys often arrive in ascending order, for example from a file that was saved: the end is then found by one
    // comparison.
    const bool isBehindAll = !mEntries.empty() && KeyOrder()(std::prev(mEntries.end())->first, key);
    const auto at = isBehindAll ? mEntries.end() : mEntries.lower_bound(key);
    if (at != mEntries.end() && variant::isSameKey(at->first, key)) return at->second;
    // The default may be a value of this map: inserting does not move the nodes of others.
    return mEntries.emplace_hint(at, key, defaultValue)->second;
}

xoVariant& Map::operator[](std::string_view key) { return editValue(key, xoVariant()); }

// lower_bound and an inline comparison instead of std::map::find, which would call the ordering once more to test for
// equality.
Map::iterator Map::find(std::string_view key) {
    const auto at = mEntries.lower_bound(key);
    return at != mEntries.end() && variant::isSameKey(at->first, key) ? at : mEntries.end();
}

Map::const_iterator Map::find(std::string_view key) const {
    const auto at = mEntries.lower_bound(key);
    return at != mEntries.end() && variant::isSameKey(at->first, key) ? at : mEntries.end();
}

bool Map::contains(std::string_view key) const { return find(key) != mEntries.end(); }

std::pair<Map::iterator, bool> Map::insert(std::pair<std::string, xoVariant> entry) {
    return mEntries.try_emplace(std::move(entry.first), std::move(entry.second));
}

bool Map::remove(std::string_view key) {
    const auto found = find(key);
    if (found == mEntries.end()) return false;
    mEntries.erase(found);
    return true;
}

std::string Map::toString() const {
    std::string text;
    variant::appendTree(text, variant::TreeCursor(*this));
    return text;
}

}  // namespace xo
