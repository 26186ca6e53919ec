// Cells are made printable and measured when they are added, once; the layout only reads them.
#include "variant/tableContent.h"

#include <algorithm>

#include "text/displayWidth.h"
#include "variant/textForm.h"

namespace xo::variant {
namespace {

std::size_t widthOfLines(std::string_view text) {
    std::size_t widest = 0;
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        widest = (std::max)(widest, text::displayWidth(text.substr(0, end)));
        text.remove_prefix(end + 1);
    }
    return (std::max)(widest, text::displayWidth(text));
}

}  // namespace

std::string cellText(std::string_view text) {
    std::string shown;
    std::string line;
    for (;;) {
        const std::size_t end = (std::min)(text.find_first_of("\r\n"), text.size());
        // A tab has no fixed width in a cell, so it becomes one blank.
        line.assign(text, 0, end);
        std::replace(line.begin(), line.end(), '\t', ' ');
        text::appendPrintable(shown, line);
        if (end == text.size()) return shown;
        shown += '\n';
        // "\r\n" is one line end, "\r" and "\n" alone are too.
        text.remove_prefix(text.compare(end, 2, "\r\n") == 0 ? end + 2 : end + 1);
    }
}

void TableContent::beginRow(std::size_t cellCount) {
    if (wantsRule) rules.push_back(rows.size());  // the index of the row that begins here
    wantsRule = false;
    rows.push_back(cells.size());
    // A row with more cells than there are columns adds columns.
    const std::size_t needed = (std::min)(cellCount, Builder::kMaxColumns);
    if (columns.size() < needed) columns.resize(needed);
}

void TableContent::addCell(const xoVariant& value) {
    TableCell cell;
    cell.offset = texts.size();
    switch (value.getType()) {
        case xoVariant::UNKNOWN: break;
        // The double is stored behind its text, because the column's decimals may be set later and round the value, not
        // the text.
        case xoVariant::REAL: {
            appendText(texts, value);
            addText(cell, TableCell::Real);
            const double real = value.toReal();
            char bytes[sizeof real];
            std::memcpy(bytes, &real, sizeof real);
            texts.append(bytes, sizeof bytes);
            break;
        }
        case xoVariant::INTEGER:
            appendText(texts, value);
            addText(cell, TableCell::Integer);
            break;
        default:
            appendText(texts, value);
            addText(cell, TableCell::Text);
            break;
    }
    cells.push_back(cell);
}

// A Text even if it looks like a number.
void TableContent::addCell(const std::string& text) {
    TableCell cell;
    cell.offset = texts.size();
    texts.append(text);
    addText(cell, TableCell::Text);
    cells.push_back(cell);
}

// Completes a cell whose text has been appended to texts just now, from cell.offset on, and makes that text printable.
void TableContent::addText(TableCell& cell, TableCell::Kind kind) {
    const auto added = std::string_view(texts).substr(cell.offset);
    // The usual case: nothing to escape, and each byte takes one column.
    if (text::isPlain(added)) {
        cell.width = added.size();
    } else {
        const std::string shown = cellText(added);
        cell.hasBreaks = shown.find('\n') != std::string::npos;
        cell.width = widthOfLines(shown);
        texts.replace(cell.offset, std::string::npos, shown);
    }
    cell.size = texts.size() - cell.offset;
    if (cell.size != 0) cell.kind = kind;  // an empty text does not make a column one of text
}

}  // namespace xo::variant
