// A first pass over all cells finds the widths of the columns; a second one draws row by row. The text
// that a cell shows is made in both instead of being stored, because most cells show their stored text itself.
#include "variant/tableLayout.h"

#include <algorithm>

#include "text/displayWidth.h"
#include "text/wrapping.h"
#include "xoSystem/xoStringUtils.h"

namespace xo::variant {
namespace {

using Builder = AsciiTableBuilder;
using text::Piece;

// The parts of a horizontal line; cross is drawn where two columns meet. A rule without fill is not drawn.
struct Rule {
    std::string_view left, fill, cross, right;
};

struct Look {
    Rule top, middle, bottom;
    std::string_view left, between, right;  // of a line of cells, with the blanks
    std::string_view mark;                  // in place of what is cut off a cell
    std::size_t frameWidth;                 // of left and right, in columns of a terminal
    std::size_t gapWidth;                   // of between
};

constexpr Rule kNoRule = {};
constexpr Rule kAsciiRule = {"+", "-", "+", "+"};
constexpr Look kAscii = {kAsciiRule, kAsciiRule, kAsciiRule, "| ", " | ", " |", "...", 4, 3};
constexpr Look kBox = {{"┌", "─", "┬", "┐"}, {"├", "─", "┼", "┤"}, {"└", "─", "┴", "┘"}, "│ ", " │ ", " │", "…", 4, 3};
constexpr Look kMarkdown = {kNoRule, kNoRule, kNoRule, "| ", " | ", " |", {}, 4, 3};
constexpr Look kPlain = {kNoRule, kNoRule, kNoRule, {}, "  ", {}, "...", 0, 2};

const Look& lookOf(Builder::Style style) {
    switch (style) {
        case Builder::StyleBox: return kBox;
        case Builder::StyleMarkdown: return kMarkdown;
        case Builder::StylePlain: return kPlain;
        default: return kAscii;
    }
}

// Any number that is no Overflow counts as OverflowWrap, and so does not cut.
bool cuts(const Builder::Column& column) {
    return column.overflow == Builder::OverflowCutEnd || column.overflow == Builder::OverflowCutMiddle;
}

// The characters of ASCII rules are written in one call; those of box rules are three bytes of UTF-8 each.
void repeat(std::string& out, std::string_view text, std::size_t times) {
    if (text.size() == 1) {
        out.append(times, text[0]);
        return;
    }
    for (; times != 0; --times) out += text;
}

// Whether a text has to be changed for a cell of Markdown, in which a line feed would end the row.
bool isSpecialInMarkdown(std::string_view text) { return text.find_first_of("|\\*`<\n") != std::string_view::npos; }

// A pipe would end the cell, and the other characters would begin markup:
// https://github.github.com/gfm/#tables-extension-
std::string markdownText(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c == '\n') {
            out += "<br>";
            continue;
        }
        if (isSpecialInMarkdown({&c, 1})) out += '\\';
        out += c;
    }
    return out;
}

// The layout of one table. build() is called once, because it moves the text out.
class Layout {
public:
    explicit Layout(const TableContent& content)
        : mContent(content), mLook(lookOf(content.style)), mIsMarkdown(content.style == Builder::StyleMarkdown) {
        addTitles();
        measure();
        limitWidths();
    }

    std::string build() {
        reserve();
        drawRule(mLook.top);
        if (mHasTitles || mIsMarkdown) drawTitles();  // a table of Markdown must begin with titles, if empty ones
        auto rule = mContent.rules.begin();
        for (std::size_t row = 0; row != mContent.rows.size(); ++row) {
            bool isSeparated = mContent.hasRowLines && row != 0;
            if (rule != mContent.rules.end() && *rule == row) {
                ++rule;
                isSeparated = true;
            }
            // The rule below the titles is drawn with them, so a separator before the first row would double it. The
            // plain style has no such rule.
            if (isSeparated && (row != 0 || (mHasTitles && mContent.style == Builder::StylePlain))) drawSeparator();
            drawRow(row);
        }
        drawRule(mLook.bottom);
        return std::move(mOut);
    }

    bool hasTitles() const { return mHasTitles; }

private:
    // A column as it is laid out, and its cell of the row that is being drawn. The views are into the content or into
    // scratch and title, so they are valid until the next row.
    struct Place {
        const Builder::Column* column = nullptr;
        std::string title;
        std::size_t width = 1;
        Builder::Align align = Builder::AlignLeft;
        bool isNumeric = false;
        bool hasText = false;       // a cell that is neither empty nor a number
        std::string scratch;        // the cell's text where it is not shown as it is stored
        Piece whole{{}, 0};         // the cell if it fits in one line
        std::vector<Piece> pieces;  // its lines otherwise

        // A cell with fewer lines than its row is blank below its last one.
        Piece line(std::size_t index) const {
            if (index < pieces.size()) return pieces[index];
            return index == 0 ? whole : Piece{{}, 0};
        }
    };

    void addTitles() {
        mPlaces.resize(mContent.columns.size());
        for (std::size_t i = 0; i != mPlaces.size(); ++i) {
            Place& place = mPlaces[i];
            place.column = &mContent.columns[i];
            place.title = cellText(place.column->title);
            std::replace(place.title.begin(), place.title.end(), '\n', ' ');
            if (mIsMarkdown) place.title = markdownText(place.title);
            mHasTitles = mHasTitles || !place.title.empty();
            place.width = (std::max)(place.width, text::displayWidth(place.title));
        }
    }

    // The cell's text before it is cut or wrapped; its lines are separated by line feeds.
    Piece shown(const TableCell& cell, Place& place) const {
        if (cell.kind == TableCell::Real && place.column->decimals >= 0) return shownReal(mContent.realOf(cell), place);
        const std::string_view text = mContent.textOf(cell);
        if (mIsMarkdown && isSpecialInMarkdown(text)) {
            place.scratch = markdownText(text);
        } else if (cell.hasBreaks && cuts(*place.column)) {
            place.scratch = text;
            std::replace(place.scratch.begin(), place.scratch.end(), '\n', ' ');
        } else {
            return {text, cell.width};
        }
        return {place.scratch, text::displayWidth(place.scratch)};
    }

    // The result is ASCII, so that its size is its width. roundNumber takes at most 255 decimals.
    static Piece shownReal(double value, Place& place) {
        const auto decimals = static_cast<unsigned char>((std::min)(place.column->decimals, 255));
        place.scratch = xoStringUtils::roundNumber(value, decimals, '.', /*keepZeros=*/true);
        return {place.scratch, place.scratch.size()};
    }

    // A column is aligned as numbers if it has at least one number and no text; empty cells do not matter.
    void measure() {
        for (std::size_t row = 0; row != mContent.rows.size(); ++row) {
            const TableCell* cell = mContent.cells.data() + mContent.rows[row];
            const TableCell* const end = mContent.cells.data() + mContent.rowEnd(row);
            for (Place* place = mPlaces.data(); cell != end; ++cell, ++place) {
                place->isNumeric =
                    place->isNumeric || cell->kind == TableCell::Integer || cell->kind == TableCell::Real;
                place->hasText = place->hasText || cell->kind == TableCell::Text;
                place->width = (std::max)(place->width, shown(*cell, *place).width);
            }
        }
        for (Place& place : mPlaces) {
            place.isNumeric = place.isNumeric && !place.hasText;
            switch (place.column->align) {
                case Builder::AlignLeft:
                case Builder::AlignRight:
                case Builder::AlignCenter: place.align = place.column->align; break;
                default: place.align = place.isNumeric ? Builder::AlignRight : Builder::AlignLeft; break;
            }
        }
    }

    bool isFrameless() const { return mLook.right.empty(); }

    std::size_t frameWidth() const { return mLook.frameWidth + mLook.gapWidth * (mPlaces.size() - 1); }

    void limitWidths() {
        // The reader of Markdown lays out the table itself, and its cells cannot be broken into lines.
        if (mIsMarkdown) return;
        for (Place& place : mPlaces)
            if (place.column->maxWidth != 0) place.width = (std::min)(place.width, std::size_t{place.column->maxWidth});
        if (mContent.maxWidth == 0) return;

        // Text columns shrink first, because a number that is broken over two lines is hard to read. If that is not
        // enough, all columns shrink, to one character at the least: the table may then still be wider than the limit.
        constexpr std::size_t kLeastBesideNumbers = 3;  // which AsciiTableBuilder::setMaxWidth promises
        const std::size_t available = mContent.maxWidth > frameWidth() ? mContent.maxWidth - frameWidth() : 0;
        limitWidths(available, kLeastBesideNumbers, [](const Place& place) { return !place.isNumeric; });
        limitWidths(available, 1, [](const Place&) { return true; });
    }

    // Narrows the widest of the chosen columns to one common width: the greatest with which all columns together take
    // no more than available, but not less than least. Columns that are narrower than that keep their widths.
    template <class Choice>
    void limitWidths(std::size_t available, std::size_t least, Choice isChosen) {
        std::vector<std::size_t> widths;
        std::size_t others = 0;
        for (const Place& place : mPlaces) {
            if (isChosen(place)) {
                widths.push_back(place.width);
            } else {
                others += place.width;
            }
        }
        // From the narrowest on, each column keeps its width as long as the rest, if it were all as wide, would fit.
        std::sort(widths.begin(), widths.end());
        std::size_t narrow = others;  // what the columns take that keep their widths
        for (std::size_t i = 0; i != widths.size(); ++i) {
            const std::size_t wide = widths.size() - i;  // how many have this width or a larger one
            if (narrow + widths[i] * wide > available) {
                const std::size_t common = (std::max)(least, available > narrow ? (available - narrow) / wide : 0);
                for (Place& place : mPlaces)
                    if (isChosen(place)) place.width = (std::min)(place.width, common);
                return;
            }
            narrow += widths[i];
        }
    }

    // Not without a frame, where no blanks fill a line to its end: one wide cell would make that far too much.
    void reserve() {
        if (isFrameless()) return;
        std::size_t line = frameWidth() + 1;
        for (const Place& place : mPlaces) line += place.width;
        // One line for each row, and the titles and rules: enough for ASCII text without broken cells and row lines.
        mOut.reserve(line * (mContent.rows.size() + 5));
    }

    void drawRule(const Rule& rule) {
        if (rule.fill.empty()) return;
        std::string_view border = rule.left;
        for (const Place& place : mPlaces) {
            mOut += border;
            repeat(mOut, rule.fill, place.width + 2);  // with the blanks beside the cell
            border = rule.cross;
        }
        mOut += rule.right;
        mOut += '\n';
    }

    void drawSeparator() {
        if (mContent.style == Builder::StylePlain) {
            mOut += '\n';
        } else {
            drawRule(mLook.middle);
        }
    }

    void drawTitles() {
        std::size_t lines = 1;
        for (Place& place : mPlaces) {
            place.pieces.clear();
            breakText({place.title, text::displayWidth(place.title)}, place);
            lines = (std::max)(lines, place.pieces.size());
        }
        drawLines(lines);
        if (mIsMarkdown) {
            drawAlignments();
        } else if (!mContent.rows.empty()) {
            drawRule(mLook.middle);
        }
    }

    // The delimiter row below the titles. A colon at an end of a column aligns it to that side, colons at both ends
    // center it: https://github.github.com/gfm/#tables-extension-
    void drawAlignments() {
        for (const Place& place : mPlaces) {
            mOut += '|';
            mOut += place.align == Builder::AlignCenter ? ':' : '-';
            mOut.append(place.width, '-');
            mOut += place.align == Builder::AlignLeft ? '-' : ':';
        }
        mOut += "|\n";
    }

    void drawRow(std::size_t row) {
        const TableCell* cell = mContent.cells.data() + mContent.rows[row];
        const TableCell* const end = mContent.cells.data() + mContent.rowEnd(row);
        std::size_t lines = 1;
        for (Place& place : mPlaces) {
            place.pieces.clear();
            place.whole = {{}, 0};
            if (cell == end) continue;  // a row with fewer cells than columns
            place.whole = shown(*cell, place);
            if (place.whole.width > place.width || cell->hasBreaks) {
                breakText(place.whole, place);
                lines = (std::max)(lines, place.pieces.size());
            }
            ++cell;
        }
        drawLines(lines);
    }

    // Makes the lines of a text that is wider than its column or has line feeds, as the column's overflow says.
    void breakText(const Piece& whole, Place& place) const {
        if (mIsMarkdown) {
            place.pieces.push_back(whole);
        } else if (cuts(*place.column)) {
            if (whole.width <= place.width) {  // it is one line: its line feeds have become blanks
                place.pieces.push_back(whole);
                return;
            }
            std::string cut(whole.text);
            text::cutToWidth(cut, place.width, mLook.mark, place.column->overflow == Builder::OverflowCutMiddle);
            if (cut.empty()) cut = "?";  // not even the first character is narrow enough
            place.scratch = std::move(cut);
            place.pieces.push_back({place.scratch, text::displayWidth(place.scratch)});
        } else {
            std::string_view rest = whole.text;
            for (std::size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
                text::wrap(rest.substr(0, end), place.width, place.pieces);
                rest.remove_prefix(end + 1);
            }
            text::wrap(rest, place.width, place.pieces);
        }
    }

    // The size of each line is known before it is written, so that the text grows once a line and is filled through a
    // pointer.
    void drawLines(std::size_t count) {
        for (std::size_t line = 0; line != count; ++line) {
            const std::size_t begin = mOut.size();
            const std::size_t columns = columnsIn(line);
            mOut.resize(begin + lineSize(line, columns));
            char* out = put(mOut.data() + begin, mLook.left);
            for (std::size_t i = 0; i != columns; ++i) {
                if (i != 0) out = put(out, mLook.between);
                const Piece piece = mPlaces[i].line(line);
                Blanks blanks = blanksOf(piece, mPlaces[i]);
                if (i + 1 == columns && isFrameless()) blanks.behind = 0;
                out = putPiece(out, piece, blanks);
            }
            *put(out, mLook.right) = '\n';
            if (isFrameless()) trimLine(begin);
        }
    }

    // Without a frame, empty cells at the end of a line are left out, and no blanks fill the last column.
    std::size_t columnsIn(std::size_t line) const {
        std::size_t count = mPlaces.size();
        while (isFrameless() && count != 0 && mPlaces[count - 1].line(line).text.empty()) --count;
        return count;
    }

    // In bytes: those of the pieces, which may be more than the columns that they take, and of the blanks beside them.
    std::size_t lineSize(std::size_t line, std::size_t columns) const {
        if (columns == 0) return 1;  // the line feed
        std::size_t size = mLook.left.size() + mLook.between.size() * (columns - 1) + mLook.right.size() + 1;
        for (std::size_t i = 0; i != columns; ++i) {
            const Piece piece = mPlaces[i].line(line);
            size += piece.text.size() + mPlaces[i].width - piece.width;
        }
        if (!isFrameless()) return size;
        const Place& last = mPlaces[columns - 1];
        return size - blanksOf(last.line(line), last).behind;
    }

    // The blanks that fill the column of a piece. In a centered column the odd one is behind the piece.
    struct Blanks {
        std::size_t before, behind;
    };

    static Blanks blanksOf(const Piece& piece, const Place& place) {
        const std::size_t blanks = place.width - piece.width;
        const std::size_t before = place.align == Builder::AlignRight    ? blanks
                                   : place.align == Builder::AlignCenter ? blanks / 2
                                                                         : 0;
        return {before, blanks - before};
    }

    // Removes the blanks at the end of the last line, those that a text ends with, since no frame shows them.
    void trimLine(std::size_t begin) {
        mOut.pop_back();
        mOut.resize((std::max)(mOut.find_last_not_of(' ') + 1, begin));
        mOut += '\n';
    }

    static char* put(char* out, std::string_view text) { return std::copy(text.begin(), text.end(), out); }

    static char* putPiece(char* out, const Piece& piece, const Blanks& blanks) {
        out = put(std::fill_n(out, blanks.before, ' '), piece.text);
        return std::fill_n(out, blanks.behind, ' ');
    }

    const TableContent& mContent;
    const Look& mLook;
    const bool mIsMarkdown;
    bool mHasTitles = false;
    std::vector<Place> mPlaces;
    std::string mOut;
};

}  // namespace

std::string layOut(const TableContent& content) {
    if (content.columns.empty()) return {};
    Layout layout(content);
    if (content.rows.empty() && !layout.hasTitles()) return {};
    return layout.build();
}

}  // namespace xo::variant
