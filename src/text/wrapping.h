// Breaks a line of text into lines that fit a column.
#ifndef XO_TEXT_WRAPPING_H
#define XO_TEXT_WRAPPING_H

#include <cstddef>
#include <string_view>
#include <vector>

namespace xo::text {

struct Piece {
    std::string_view text;  // points into the wrapped text, or to a literal
    std::size_t width;      // in columns
};

// Appends the pieces of a text without control characters, at least one, none wider than columns (at least 1). Breaks
// as AsciiTableBuilder::OverflowWrap says; all blanks at a break are removed. A cluster wider than the column is a "?".
void wrap(std::string_view text, std::size_t columns, std::vector<Piece>& pieces);

}  // namespace xo::text

#endif
