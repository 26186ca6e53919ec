// Texts for a terminal: what is shown of them against a reader of one code point at a time; tables, whose lines all
// have one width. An input is the style and the limits, a byte each, and cells with a byte 1E between them.
#include <algorithm>

#include "fuzz.h"
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
}

void checkTables(const std::string& input) {
    Bytes bytes(input);
    AsciiTableBuilder table;
    const auto style = static_cast<AsciiTableBuilder::Style>(bytes.byte() % 4);
    table.setStyle(style).setMaxWidth(bytes.byte() % 64);
    const unsigned columns = 1 + bytes.byte() % 4;
    const unsigned limit = bytes.byte();
    for (unsigned i = 0; i != columns; ++i) {
        table.editColumn(i).overflow = static_cast<AsciiTableBuilder::Overflow>((limit + i) % 3);
        table.editColumn(i).maxWidth = limit % 11;
    }
    while (!bytes.atEnd()) {
        std::vector<std::string> row;
        for (unsigned i = 0; i != columns && !bytes.atEnd(); ++i) row.push_back(bytes.until('\x1E'));
        for (const std::string& cell : row) checkText(cell, limit % 23);
        table.addRow(row);
    }
    const std::string built = table.build();
    std::size_t width = SIZE_MAX;
    for (const std::string& line : xoStringUtils::Split(built, '\n')) {
        require(printable(line) == line, "a line that is not printable: ", line);
        const std::size_t ofLine = xoStringUtils::GetDisplayWidth(line);
        if (width == SIZE_MAX) width = ofLine;
        if (style != AsciiTableBuilder::StylePlain) require(ofLine == width, "lines of several widths:\n", built);
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
