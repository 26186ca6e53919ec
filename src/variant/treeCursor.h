// A place in a list or a map, read from front to back. Walks over trees keep the cursors of the containers around the
// current one on the heap, so that no tree is too deep for the stack.
#ifndef XO_VARIANT_TREECURSOR_H
#define XO_VARIANT_TREECURSOR_H

#include "xoSystem/xoVariant.h"

namespace xo::variant {

using List = xoVariant::xoVariantListImpl;
using Map = xoVariant::xoVariantMapImpl;

inline bool isContainer(const xoVariant& value) {
    return value.getType() == xoVariant::MAP || value.getType() == xoVariant::LIST;
}

class TreeCursor {
public:
    TreeCursor() = default;
    explicit TreeCursor(const Map& map) : mOnMap(true), mEntry(map.begin()), mLastEntry(map.end()) {}
    explicit TreeCursor(const List& list) : mElement(list.begin()), mLastElement(list.end()) {}

    // The value must be a container.
    static TreeCursor into(const xoVariant& value) {
        return value.getType() == xoVariant::MAP ? TreeCursor(value.getMap()) : TreeCursor(value.getList());
    }

    bool isOnMap() const { return mOnMap; }
    bool atEnd() const { return mOnMap ? mEntry == mLastEntry : mElement == mLastElement; }
    const std::string& key() const { return mEntry->first; }
    const xoVariant& value() const { return mOnMap ? mEntry->second : *mElement; }
    void advance() {
        if (mOnMap) {
            ++mEntry;
        } else {
            ++mElement;
        }
    }

    // The containers' own iterators, for loops over one kind.
    Map::const_iterator& entry() { return mEntry; }
    Map::const_iterator lastEntry() const { return mLastEntry; }
    List::const_iterator& element() { return mElement; }
    List::const_iterator lastElement() const { return mLastElement; }

private:
    bool mOnMap = false;
    Map::const_iterator mEntry, mLastEntry;
    List::const_iterator mElement, mLastElement;
};

}  // namespace xo::variant

#endif
