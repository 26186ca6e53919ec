// AsciiTableBuilder: lays rows of values out as a table of text, for a console, a log, a report or a Markdown page.
//
//     xo::AsciiTableBuilder table({"Region", "Rows", "Note"});
//     for (const Region& region : regions) table.addRow({region.name, region.rows, region.note});
//     std::cout << table.addSeparator().addRow({"all", total}).build();
//
//     +---------+------+-------+
//     | Region  | Rows | Note  |
//     +---------+------+-------+
//     | Aalborg |   12 | ok    |
//     | Bergen  | 1234 | two   |
//     |         |      | lines |
//     +---------+------+-------+
//     | all     | 1246 |       |
//     +---------+------+-------+
//
// A cell shows its variant's toString(); UNKNOWN is empty. A text is never taken for a number, so that identifiers made
// of digits stay on the left. Line breaks (LF, CR LF and CR) in a cell begin a new line of it, a tab is a blank, and
// xoStringUtils::MakePrintable makes all other control characters harmless, so that a cell cannot write to the
// terminal. Widths are those of xoStringUtils::GetDisplayWidth: in a box, all lines of a table have the same.
//
// A builder is a plain value: copies are independent, and one thread at a time may use it. Nothing fails or throws,
// except that memory may run out. A builder that was moved from is empty.
#ifndef XOSYSTEM_XOASCIITABLEBUILDER_H
#define XOSYSTEM_XOASCIITABLEBUILDER_H

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoVariant.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

template <class E>
class xoEnumList;

namespace variant {
struct TableContent;
}

class XOSYSTEM_API AsciiTableBuilder {
public:
    // The look of a table. Any other number counts as StyleAscii.
    enum Style : int {
        StyleAscii = 0,     // a box of + - |, as above
        StyleBox = 1,       // a box of the Unicode line characters, which are not in every console's font
        StyleMarkdown = 2,  // a table of GitHub's Markdown: no limits of width, line breaks are <br>, no separators
        StylePlain = 3,  // columns with two blanks between, no blanks at the ends of lines, separators are empty lines
    };

    // The position of a title and of cells in their column. Any other number counts as AlignAuto.
    enum Align : int {
        AlignAuto = 0,  // right if all cells that are not empty are INTEGER or REAL and there is one, else left
        AlignLeft = 1,
        AlignRight = 2,
        AlignCenter = 3,
    };

    // What happens to a cell that is wider than its column. Any other number counts as OverflowWrap.
    enum Overflow : int {
        // Continues in the next line. The line is broken at a blank, which is removed, behind a slash, a backslash or
        // the hyphen of a word, between two characters of width 2, and inside a word that alone is wider than the
        // column.
        OverflowWrap = 0,
        OverflowCutEnd = 1,     // ends in "...", in a box of line characters in U+2026
        OverflowCutMiddle = 2,  // its middle is removed: for paths
    };

    // The properties of a column.
    struct Column {
        std::string title;                 // a line break in it becomes a blank
        Align align = AlignAuto;           // of cells and title
        Overflow overflow = OverflowWrap;  // cutting makes line breaks blanks
        unsigned maxWidth = 0;             // in terminal columns; 0 is without limit
        int decimals = -1;                 // places of REAL cells, zeros kept, at most 255; below 0 as variants print
    };

    // The most columns that a table has.
    static constexpr std::size_t kMaxColumns = 4096;

    // A column for each title, as far as kMaxColumns go. If no column has a title, the table has no title line, or an
    // empty one in Markdown, which requires it.
    explicit AsciiTableBuilder(const std::vector<std::string>& titles = {});
    AsciiTableBuilder(const AsciiTableBuilder& other);
    AsciiTableBuilder(AsciiTableBuilder&& other) noexcept;
    AsciiTableBuilder& operator=(const AsciiTableBuilder& other);
    AsciiTableBuilder& operator=(AsciiTableBuilder&& other) noexcept;
    ~AsciiTableBuilder();

    // The column of that index, counted from 0; makes all columns up to it. An index from kMaxColumns up means the last
    // possible one. The reference is valid until the builder is assigned to, moved from or destroyed.
    Column& editColumn(std::size_t index);

    // Missing cells at the end of a row are empty; additional ones make further columns, and what lies beyond
    // kMaxColumns is left out. Braces choose the first: {"a", 1, 2.5, true}.
    AsciiTableBuilder& addRow(std::initializer_list<xoVariant> cells);
    AsciiTableBuilder& addRow(const std::vector<xoVariant>& cells);
    AsciiTableBuilder& addRow(const std::vector<std::string>& cells);

    // Draws a line before the next row, if there is one. Several separators in succession count as one. A separator
    // beside the frame or the line below the titles is not drawn.
    AsciiTableBuilder& addSeparator();

    // For the whole table, whenever they are called before build().
    AsciiTableBuilder& setStyle(Style style);
    // In terminal columns; 0 is without limit. The widest columns are narrowed first, columns of numbers only when no
    // other column is wider than 3. Each column keeps a width of at least 1, so that the table may exceed a very small
    // limit.
    AsciiTableBuilder& setMaxWidth(unsigned columns);
    // Whether there is a line between all rows, for cells of several lines.
    AsciiTableBuilder& setRowLines(bool on);

    // The table; every line ends in LF. Empty without columns, and when there is neither a row nor a title. May be
    // called at any time, and again.
    std::string build() const;

    // Two columns, "Key" and "Value": the leaves of the map, their keys joined by "/".
    static AsciiTableBuilder FromMap(const xoVariant::xoVariantMapImpl& map);
    // A row for each element. The leaves of a MAP stand in columns named after their keys, joined by "/", in the order
    // in which the keys first come; any other element is alone in its row, in a first column without title.
    static AsciiTableBuilder FromList(const xoVariant::xoVariantListImpl& list);
    // Such as the rows that xoCsvFileReader reads. The titles are the texts of the first row's cells.
    static AsciiTableBuilder FromRows(const std::vector<std::vector<xoVariant>>& rows, bool firstRowIsTitles = true);

    // The width of standard output's window, for setMaxWidth; 0 when standard output is not a console, for example a
    // file or a pipe.
    static unsigned GetConsoleWidth();

private:
    variant::TableContent& content();

    std::unique_ptr<variant::TableContent> mContent;  // none in a builder that was moved from
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<AsciiTableBuilder::Style> xoEnumEntries(AsciiTableBuilder::Style);
XOSYSTEM_API xoEnumList<AsciiTableBuilder::Align> xoEnumEntries(AsciiTableBuilder::Align);
XOSYSTEM_API xoEnumList<AsciiTableBuilder::Overflow> xoEnumEntries(AsciiTableBuilder::Overflow);

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
