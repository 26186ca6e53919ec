// Strings in blocks, which keep their memory from one table to the next.
#include "stream/stringArena.h"

#include <algorithm>

namespace xo::stream {

std::string& StringArena::add(std::string_view text) {
    // A larger capacity is freed. Otherwise each string would keep the capacity of the longest text that it ever held.
    // By swap: libstdc++ keeps the capacity of a string that an empty one is assigned to.
    constexpr std::size_t kMaxCapacityKept = 256;
    if (mNext == mEnd) nextBlock();
    std::string& added = *mNext;
    if (added.capacity() > kMaxCapacityKept) std::string().swap(added);
    added.assign(text);
    ++mNext;
    return added;
}

void StringArena::clear() {
    mNextBlock = 0;
    mNext = mEnd = nullptr;
}

void StringArena::release() {
    clear();
    std::vector<Block>().swap(mBlocks);
}

void StringArena::nextBlock() {
    // In strings. Each block is twice as large as the one before, so that a small table takes little memory.
    constexpr std::size_t kFirstSize = 32;
    constexpr std::size_t kMaxSize = 1024;
    if (mNextBlock == mBlocks.size()) {
        const std::size_t size = mBlocks.empty() ? kFirstSize : (std::min)(2 * mBlocks.back().size, kMaxSize);
        mBlocks.push_back({std::make_unique<std::string[]>(size), size});
    }
    const Block& block = mBlocks[mNextBlock++];
    mNext = block.strings.get();
    mEnd = mNext + block.size;
}

}  // namespace xo::stream
