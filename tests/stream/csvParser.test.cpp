#include "stream/csvParser.h"

#include <gtest/gtest.h>

namespace xo::tests {
namespace {

using stream::CsvDialect;
using stream::CsvParser;

using Rows = std::vector<std::vector<std::string>>;

Rows parse(const std::string& text, const CsvDialect& dialect) {
    CsvParser parser(CsvParser::kBlockSize);
    std::size_t at = 0;
    parser.start(dialect, text.size(), [&](char* out, std::size_t capacity) {
        const std::size_t size = text.copy(out, capacity, at);
        at += size;
        return size;
    });
    bool finished = false;
    EXPECT_TRUE(parser.parse(UINT64_MAX, finished) && finished) << parser.error();
    Rows rows;
    for (const auto& row : parser.table()) {
        rows.emplace_back();
        for (const xoVariant& cell : row) rows.back().push_back(cell.getString());
    }
    return rows;
}

TEST(CsvParser, GivesEachMarkItsMeaning) {
    const std::tuple<std::string, CsvDialect, Rows> cases[] = {
        {"a,b\r\nc\n\nd,e,\nf,", {}, {{"a", "b"}, {"c"}, {""}, {"d", "e", ""}, {"f"}}},
        {"a'b,\nc'd,'it''s','''','e'f''g", {',', '\''}, {{"ab,\ncd", "it's", "'", "efg"}}},
        {"\"a\rb\"c\rd,\"never closed\n,e", {}, {{"a\rbcd", "never closed\n,e"}}},
        {"a,b,c\n", {',', ','}, {{"abc"}}},  // of two meanings, the string delimiter comes first
        {"a\nb", {'\n', '"'}, {{"a", "b"}}},
        {"a\rb\nc\rd\ne", {'\r', '\n'}, {{"a", "bc\rde"}}},
        {"\xC3\xA9,\"", {'\xC3', '\xA9'}, {{"\xC3\xA9,\""}}},  // parts of a character delimit nothing
    };
    for (const auto& [text, dialect, rows] : cases)
        EXPECT_EQ(parse(text, dialect), rows) << testing::PrintToString(text);
}

}  // namespace
}  // namespace xo::tests
