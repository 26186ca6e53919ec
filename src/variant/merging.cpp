// Insertion of several values under one key, merging of maps, and flattening of a tree to one level.
#include "variant/pathWalk.h"
#include "variant/treeCursor.h"
#include "xoSystem/xoVariant.h"

namespace xo {

using Map = xoVariant::xoVariantMapImpl;
using List = xoVariant::xoVariantListImpl;

// One multi-value insertion. Pairs of maps to be merged wait on the heap until the level above is complete, so that no
// tree is too deep for the stack.
struct Map::Merge {
    bool asList;
    std::vector<std::pair<Map*, xoVariant>> waiting;  // a map, and the MAP whose entries go into it

    // Makes the existing value one that holds both: a merged map, a STRINGLIST or a LIST. What holds them is complete
    // before the existing value moves into it, so that an exception leaves that value where it was.
    void combine(xoVariant& existing, xoVariant&& added);
    bool combineAlike(xoVariant& existing, xoVariant& added);
    // Moves all entries of the source into the target. Two maps under one key are added to waiting instead.
    void takeEntries(Map& target, Map& source);
    // Merges the pairs in waiting, and those that this adds.
    void finish();
};

void Map::Merge::combine(xoVariant& existing, xoVariant&& added) {
    if (!asList && combineAlike(existing, added)) return;
    if (existing.getType() != LIST) {  // a LIST gets the value as a further element
        xoVariant both(LIST);
        both.editList().reserve(2);
        both.editList().push_back(std::move(existing));
        existing = std::move(both);
    }
    existing.editList().push_back(std::move(added));
}

// Merges maps, and collects strings in a STRINGLIST. Returns false for other combinations, which become a LIST.
bool Map::Merge::combineAlike(xoVariant& existing, xoVariant& added) {
    if (existing.getType() == MAP && added.getType() == MAP) {
        waiting.emplace_back(&existing.editMap(), std::move(added));
        return true;
    }
    if (added.getType() != STRING) return false;
    if (existing.getType() == STRING) {
        xoVariant both(STRINGLIST);
        both.editStringList().reserve(2);
        both.editStringList().push_back(std::move(existing.editString()));
        existing = std::move(both);
    }
    if (existing.getType() != STRINGLIST) return false;
    existing.editStringList().push_back(std::move(added.editString()));
    return true;
}

void Map::Merge::takeEntries(Map& target, Map& source) {
    while (!source.mEntries.empty()) {
        // The node moves from one map to the other: neither the key nor the value is copied, and no memory is
        // allocated.
        auto result = target.mEntries.insert(source.mEntries.extract(source.mEntries.begin()));
        if (!result.inserted) combine(result.position->second, std::move(result.node.mapped()));
    }
}

void Map::Merge::finish() {
    while (!waiting.empty()) {
        // Moved out before it is processed, because that may append to the vector.
        auto [target, source] = std::move(waiting.back());
        waiting.pop_back();
        takeEntries(*target, source.editMap());
    }
}

void Map::multiInsert(std::string_view key, const xoVariant& value, bool asList) {
    multiInsertAndDestroy(key, xoVariant(value), asList);
}

// The value is moved out first, because it may be the one that is stored under this key.
void Map::multiInsertAndDestroy(std::string_view key, xoVariant& value, bool asList) {
    xoVariant added(std::move(value));
    const auto at = mEntries.lower_bound(key);
    if (at == mEntries.end() || at->first != key) {
        mEntries.emplace_hint(at, key, std::move(added));
        return;
    }
    Merge merge{asList, {}};
    merge.combine(at->second, std::move(added));
    merge.finish();
}

void Map::mergeWith(const Map& other, bool asList) {
    // A copy, because entries are moved out of it, and because the other map may be this one or a part of it.
    Map copy(other);
    Merge merge{asList, {}};
    merge.takeEntries(*this, copy);
    merge.finish();
}

namespace {

// The leaves of a tree as copies under their joined keys, in the order of the walk.
class Flattening : variant::PathWalk<variant::TreeCursor> {
public:
    explicit Flattening(char separator) : mSeparator(separator) {}

    std::vector<std::pair<std::string, xoVariant>> leavesOf(const Map& map) {
        walk(variant::TreeCursor(map), [this] { visit(); });
        return std::move(mLeaves);
    }

private:
    // The position advances before a container is entered, because entering stores it as the place to return to.
    void visit() {
        const bool inMap = mPosition.isOnMap();
        const xoVariant& value = mPosition.value();
        if (inMap) mPath += mPosition.key();
        mPosition.advance();
        if (!inMap) {  // lists are entered for their maps only, which share the list's path
            if (value.getType() == xoVariant::MAP) enterValue(value);
        } else if (value.getType() == xoVariant::MAP) {
            mPath += mSeparator;
            enterValue(value);
        } else if (value.getType() == xoVariant::LIST) {
            visitList(value);
        } else {
            mLeaves.emplace_back(mPath, value);
        }
    }

    // Elements that are not maps stay together in one leaf. A list without maps is a leaf even if it is empty; a list
    // of maps alone is none.
    void visitList(const xoVariant& value) {
        List rest;
        for (const xoVariant& element : value.getList())
            if (element.getType() != xoVariant::MAP) rest.push_back(element);
        const bool hasMaps = rest.size() != value.getList().size();
        if (!hasMaps || !rest.empty()) mLeaves.emplace_back(mPath, std::move(rest));
        if (!hasMaps) return;
        mPath += mSeparator;
        enterValue(value);
    }

    void enterValue(const xoVariant& container) { enter(variant::TreeCursor::into(container)); }

    char mSeparator;
    std::vector<std::pair<std::string, xoVariant>> mLeaves;
};

}  // namespace

void Map::toFlattenMap(Map& out, char separator) const {
    auto leaves = Flattening(separator).leavesOf(*this);  // complete before out changes, which may be this map
    for (auto& [path, value] : leaves) out.multiInsertAndDestroy(path, value, false);
}

}  // namespace xo
