// A position in a list or a map, for algorithms that visit a tree from front to back. They store the positions in the
// enclosing containers on the heap instead of recursing, so that no tree is too deep for the stack.
#ifndef XO_VARIANT_TREECURSOR_H
#define XO_VARIANT_TREECURSOR_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "xoSystem/xoVariant.h"

namespace xo::variant {

using List = xoVariant::xoVariantListImpl;
using Map = xoVariant::xoVariantMapImpl;

inline bool isContainer(const xoVariant& value) {
    return value.getType() == xoVariant::MAP || value.getType() == xoVariant::LIST;
}

// By copies, since the texts need not be aligned; compilers make plain loads of them.
template <class Word>
bool isSameWord(const char* a, const char* b) {
    Word left, right;
    std::memcpy(&left, a, sizeof left);
    std::memcpy(&right, b, sizeof right);
    return left == right;
}

// Keys are short, so that comparing them inline, in words of which the last two may overlap, takes less time than a
// call to memcmp.
inline bool isSameKey(std::string_view a, std::string_view b) {
    const std::size_t size = a.size();
    if (size != b.size()) return false;
    const char* const left = a.data();
    const char* const right = b.data();
    if (size >= 8) {
        for (std::size_t at = 0; at + 8 < size; at += 8)
            if (!isSameWord<std::uint64_t>(left + at, right + at)) return false;
        return isSameWord<std::uint64_t>(left + size - 8, right + size - 8);
    }
    if (size >= 4)
        return isSameWord<std::uint32_t>(left, right) && isSameWord<std::uint32_t>(left + size - 4, right + size - 4);
    return std::equal(left, left + size, right);
}

// A position in one container, which must outlive the cursor and must not change meanwhile. key, value and advance need
// a position before the end, key also one in a map.
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

    // The iterators of the container, for loops that know whether it is a map or a list.
    Map::const_iterator& entry() { return mEntry; }
    Map::const_iterator lastEntry() const { return mLastEntry; }
    List::const_iterator& element() { return mElement; }
    List::const_iterator lastElement() const { return mLastElement; }

private:
    bool mOnMap = false;  // selects the pair of iterators that is used
    Map::const_iterator mEntry, mLastEntry;
    List::const_iterator mElement, mLastElement;
};

}  // namespace xo::variant

#endif
