// An arena of strings: they are handed out one by one and become free all at once, and their memory is used again.
#ifndef XO_STREAM_STRINGARENA_H
#define XO_STREAM_STRINGARENA_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace xo::stream {

class StringArena {
public:
    // A copy of the text. It keeps its address until the arena is released.
    std::string& add(std::string_view text);

    // Makes all strings free for reuse. They keep their capacity.
    void clear();

    // Deletes all strings.
    void release();

private:
    struct Block {
        std::unique_ptr<std::string[]> strings;
        std::size_t size;
    };

    void nextBlock();

    std::vector<Block> mBlocks;
    std::size_t mNextBlock = 0;    // the index after the block in use
    std::string* mNext = nullptr;  // the next free string of the block in use
    std::string* mEnd = nullptr;   // the end of that block
};

}  // namespace xo::stream

#endif
