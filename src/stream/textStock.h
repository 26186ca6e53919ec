// Texts that are handed out one after the other and taken back all at once, with their memory.
#ifndef XO_STREAM_TEXTSTOCK_H
#define XO_STREAM_TEXTSTOCK_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace xo::stream {

class TextStock {
public:
    // A copy of the text, which stays where it is until the stock is released.
    std::string& take(std::string_view text);

    // The texts handed out are nobody's from here on.
    void takeBack();
    void release();

private:
    struct Shelf {
        std::unique_ptr<std::string[]> texts;
        std::size_t size;
    };

    void nextShelf();

    std::vector<Shelf> mShelves;
    std::size_t mNextShelf = 0;    // the one behind that in use
    std::string* mNext = nullptr;  // the next text on the shelf in use
    std::string* mEnd = nullptr;   // and where that ends
};

}  // namespace xo::stream

#endif
