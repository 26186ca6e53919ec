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

TEST(StringArena, KeepsNoMemoryOfLongTexts) {
    stream::StringArena arena;
    const std::string* const first = &arena.add(std::string(1000000, 'x'));
    arena.clear();
    const std::string& added = arena.add("a");
    EXPECT_TRUE(&added == first && added == "a");
    EXPECT_LE(added.capacity(), 256U);
}

TEST(CsvParser, MovesALongRowAsOftenAsItDoubles) {
    constexpr std::size_t kCell = std::size_t{32} << 20;
    const std::string head = "h\n\"", tail = "\"\n";
    CsvParser parser(1024);
    std::size_t at = 0;
    int moves = 0;
    const char* next = nullptr;  // where the buffer goes on if the row stays in its place
    parser.start({}, head.size() + kCell + tail.size(), [&](char* out, std::size_t capacity) {
        if (out != next) ++moves;
        for (std::size_t i = 0; i != capacity; ++i, ++at)
            out[i] = at < head.size() ? head[at] : at < head.size() + kCell ? ',' : tail[at - head.size() - kCell];
        next = out + capacity;
        return capacity;
    });
    bool finished = false;
    ASSERT_TRUE(parser.parse(UINT64_MAX, finished) && finished) << parser.error();
    ASSERT_EQ(parser.table().size(), 2U);
    EXPECT_TRUE(parser.table()[1][0].getString() == std::string(kCell, ','));
    EXPECT_LT(moves, 25) << "from 1 KiB to 32 MiB it doubles 15 times";
}

}  // namespace
}  // namespace xo::tests
