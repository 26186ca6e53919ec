#include "stream/textStock.h"

#include <algorithm>

namespace xo::stream {

std::string& TextStock::take(std::string_view text) {
    constexpr std::size_t kMostRoomKept = 256;
    if (mNext == mEnd) nextShelf();
    std::string& taken = *mNext;
    if (taken.capacity() > kMostRoomKept) taken = std::string();
    taken.assign(text);
    ++mNext;
    return taken;
}

void TextStock::takeBack() {
    mNextShelf = 0;
    mNext = mEnd = nullptr;
}

void TextStock::release() {
    takeBack();
    std::vector<Shelf>().swap(mShelves);
}

void TextStock::nextShelf() {
    constexpr std::size_t kFirstSize = 32;
    constexpr std::size_t kMostSize = 1024;
    if (mNextShelf == mShelves.size()) {
        const std::size_t size = mShelves.empty() ? kFirstSize : (std::min)(2 * mShelves.back().size, kMostSize);
        mShelves.push_back({std::make_unique<std::string[]>(size), size});
    }
    const Shelf& shelf = mShelves[mNextShelf++];
    mNext = shelf.texts.get();
    mEnd = mNext + shelf.size;
}

}  // namespace xo::stream
