// The cells of a table as they are stored, and how each is shown.
#ifndef XO_VARIANT_TABLECONTENT_H
#define XO_VARIANT_TABLECONTENT_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "xoSystem/xoAsciiTableBuilder.h"

namespace xo::variant {

struct TableCell {
    enum Kind : std::uint8_t { Empty, Text, Integer, Real };

    Kind kind = Empty;
    bool hasBreaks = false;  // whether a Text has line feeds
    std::size_t offset = 0;  // of its first byte in TableContent::texts
    std::size_t size = 0;    // in bytes
    std::size_t width = 0;   // of the widest line, in columns of a terminal
};

// All texts are in one string, and the cells of all rows in one vector, so that neither a cell nor a row allocates
// memory of its own. Nothing is ever removed.
struct TableContent {
    using Builder = AsciiTableBuilder;

    std::deque<Builder::Column> columns;  // at most kMaxColumns; a deque, since hosts hold references to them
    std::vector<TableCell> cells;
    std::vector<std::size_t> rows;   // the index of each row's first cell
    std::vector<std::size_t> rules;  // the indices of the rows with a separator in front of them, ascending
    std::string texts;               // of the cells: printable, with line feeds between lines; behind that of a
                                     // Real its value, as the bytes of a double
    Builder::Style style = Builder::StyleAscii;
    unsigned maxWidth = 0;  // of the whole table; 0 is without limit
    bool hasRowLines = false;
    bool wantsRule = false;  // whether a separator was added behind the last row

    template <class Value>
    void addRow(const Value* values, std::size_t count) {
        beginRow(count);
        for (std::size_t i = 0; i != count && i != Builder::kMaxColumns; ++i) addCell(values[i]);
    }

    // The index behind the row's last cell. A row may have fewer cells than there are columns, but not more.
    std::size_t rowEnd(std::size_t row) const { return row + 1 == rows.size() ? cells.size() : rows[row + 1]; }
    std::string_view textOf(const TableCell& cell) const { return {texts.data() + cell.offset, cell.size}; }
    // The exact value of a cell of the kind Real.
    double realOf(const TableCell& cell) const {
        double value = 0;
        std::memcpy(&value, texts.data() + cell.offset + cell.size, sizeof value);
        return value;
    }

private:
    void beginRow(std::size_t cellCount);
    void addCell(const xoVariant& value);
    void addCell(const std::string& text);
    void addText(TableCell& cell, TableCell::Kind kind);
};

// The text as a cell shows it: printable, with line feeds between lines.
std::string cellText(std::string_view text);

}  // namespace xo::variant

#endif
