// Texts for a terminal: what is shown of them against a reader of one code point at a time; tables, whose lines all
// have one width within the limit; cells, of which breaking loses nothing. An input is the style and the limits, a byte
// each, and cells with a byte 1E between them.
#include <algorithm>

#include "fuzz.h"
#include "text/displayWidth.h"
#include "utf8Model.h"
#include "xoSystem/xoAsciiTableBuilder.h"
#include "xoSystem/xoStringUtils.h"

namespace xo::fuzz {
namespace {

bool isHarmful(char32_t code) {
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x61C || code == 0x200E || code == 0x200F ||
           (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

std::string escaped(char32_t code) {
    if (code == '\n') return "\\n";
    if (code == '\r') return "\\r";
    if (code == '\t') return "\\t";
    char text[16];
    std::snprintf(text, sizeof text, code < 0x100 ? "\\x%02x" : "\\u%04x", static_cast<unsigned>(code));
    return text;
}

std::string printable(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        std::size_t length = 0;
        char32_t code = decode(text, length);
        const bool isBroken = code == kBroken || code == kNoCharacter;
        if (isBroken) {
            length = 1;
            code = static_cast<unsigned char>(text[0]);
        }
        out += isBroken || isHarmful(code) ? escaped(code) : std::string(text.substr(0, length));
        text.remove_prefix(length);
    }
    return out;
}

void checkText(const std::string& text, std::size_t columns) {
    std::string shown = text;
    require(xoStringUtils::MakePrintable(shown) == printable(text), "shown as ", shown);
    for (const bool inMiddle : {false, true}) {
        std::string cut = text;
        const bool fits = xoStringUtils::GetDisplayWidth(text) <= columns;
        xoStringUtils::CutToDisplayWidth(cut, columns, "\xE2\x80\xA6", inMiddle);
        require(fits ? cut == text : xoStringUtils::GetDisplayWidth(cut) <= columns, "cut to ", cut);
    }
    std::string start = text, middle = text;
    xoStringUtils::CutToDisplayWidth(start, columns, "");
    require(text.compare(0, start.size(), start) == 0, "cut to ", start);
    xoStringUtils::CutToDisplayWidth(middle, columns, "..", /*inMiddle=*/true);
    const bool isCut = xoStringUtils::GetDisplayWidth(text) > columns && columns >= 2;
    require(!isCut || xoStringUtils::GetDisplayWidth(middle) + 2 >= columns, "more cut than it must: ", middle);

    std::size_t sum = 0;
    for (const char *at = text.data(), *const end = at + text.size(); at != end;) {
        const text::Cluster cluster = text::nextCluster(at, end);
        require(at < cluster.end && cluster.end <= end, "a cluster of ", cluster.end - at, " bytes");
        sum += cluster.width;
        at = cluster.end;
    }
    require(sum == xoStringUtils::GetDisplayWidth(text), "clusters of ", sum, " columns");
}

std::string withoutBlanks(std::string text) { return xoStringUtils::replace(text, " ", ""); }

void checkBreaking(const std::string& text, unsigned width) {
    if (printable(text) != text) return;
    AsciiTableBuilder table;
    table.editColumn(0).maxWidth = width;
    std::string joined;
    const std::string built = table.setStyle(AsciiTableBuilder::StylePlain).addRow({text}).build();
    for (const std::string& line : xoStringUtils::Split(built, '\n')) {
        require(xoStringUtils::GetDisplayWidth(line) <= width, "too wide: ", line);
        joined += line;
    }
    require(withoutBlanks(joined) == withoutBlanks(text), "broken to ", built);
}

void checkTables(const std::string& input) {
    Bytes bytes(input);
    const unsigned look = bytes.byte();
    const unsigned most = bytes.byte() % 64;
    const unsigned columns = 1 + bytes.byte() % 4;
    const unsigned limit = bytes.byte();
    std::vector<std::vector<std::string>> rows;
    while (!bytes.atEnd()) {
        rows.emplace_back();
        for (unsigned i = 0; i != columns && !bytes.atEnd(); ++i) rows.back().push_back(bytes.until('\x1E'));
        for (const std::string& cell : rows.back()) {
            checkText(cell, limit % 23);
            checkBreaking(cell, 2 + limit % 20);
        }
    }
    const bool isTitled = !rows.empty() && (look & 4) != 0;
    AsciiTableBuilder table(isTitled ? rows[0] : std::vector<std::string>());
    const auto style = static_cast<AsciiTableBuilder::Style>(look % 4);
    table.setStyle(style).setMaxWidth(most);
    for (unsigned i = 0; i != columns; ++i) {
        table.editColumn(i).overflow = static_cast<AsciiTableBuilder::Overflow>((limit + i) % 3);
        table.editColumn(i).align = static_cast<AsciiTableBuilder::Align>((limit / 3 + i) % 4);
        table.editColumn(i).maxWidth = limit % 11;
    }
    for (std::size_t i = isTitled ? 1 : 0; i < rows.size(); ++i) table.addRow(rows[i]);
    const std::string built = table.build();
    require(table.build() == built, "another table the second time:\n", built);
    const bool isLimited = most > 4 * columns && style != AsciiTableBuilder::StyleMarkdown;
    std::size_t width = SIZE_MAX;
    for (const std::string& line : xoStringUtils::Split(built, '\n')) {
        require(printable(line) == line, "a line that is not printable: ", line);
        const std::size_t ofLine = xoStringUtils::GetDisplayWidth(line);
        if (width == SIZE_MAX) width = ofLine;
        require(!isLimited || ofLine <= most, "wider than ", most, ":\n", built);
        if (style == AsciiTableBuilder::StylePlain)
            require(line.empty() || line.back() != ' ', "blanks at the end:\n", built);
        else
            require(ofLine == width, "lines of several widths:\n", built);
    }
}

std::string generateTables(Random& random) {
    static const std::vector<std::string_view> pieces = {"a",
                                                         "word",
                                                         " ",
                                                         "  ",
                                                         "-",
                                                         "/",
                                                         "\\",
                                                         "|",
                                                         "1",
                                                         "\x1E",
                                                         "\x1E",
                                                         "\n",
                                                         "\r\n",
                                                         "\t",
                                                         "\xE6\x97",
                                                         "\xE6\x97\xA5",
                                                         "\xCC\x81",
                                                         "\xEF\xB8\x8F",
                                                         "\xE2\x80\x8D",
                                                         "\xF0\x9F\x91\xA9",
                                                         "\xF0\x9F\x8F\xBD",
                                                         "\xF0\x9F\x87\xB8",
                                                         "\xE1\x85\xA1",
                                                         "\xE2\x80\xAE",
                                                         "\x1b",
                                                         "\xFF",
                                                         "\x9B"};
    std::string input;
    for (int i = 0; i != 4; ++i) input += static_cast<char>(random.below(256));
    return input + random.join(pieces, 60);
}

}  // namespace

const Target kTables = {"tables", 20000, &generateTables, &checkTables};

}  // namespace xo::fuzz
