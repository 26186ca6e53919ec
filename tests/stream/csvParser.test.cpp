#include "stream/csvParser.h"

#include <gtest/gtest.h>

#include <random>

#include "xoSystem/xoStringUtils.h"

namespace xo::tests {
namespace {

using namespace std::string_literals;
using stream::CsvDialect;
using stream::CsvParser;

constexpr std::uint64_t kAll = ~std::uint64_t{0};

using Outcome = std::pair<std::vector<std::vector<std::string>>, std::string>;  // the rows and the error

// How a text reaches the parser: the buffer's size, where the first read stops short, and in what batches.
struct Way {
    std::size_t blockSize = CsvParser::kBlockSize;
    std::size_t firstRead = kAll;
    std::uint64_t batch = kAll;
    bool clear = false;
};

Outcome parse(const std::string& text, const CsvDialect& dialect, const Way& way) {
    CsvParser parser(way.blockSize);
    std::size_t at = 0;
    parser.start(dialect, text.size(), [&](char* out, std::size_t capacity) {
        const std::size_t size =
            text.copy(out, at < way.firstRead ? (std::min)(capacity, way.firstRead - at) : capacity, at);
        at += size;
        return size;
    });
    auto [rows, error] = Outcome();
    std::size_t seen = 0;
    for (bool finished = false; !finished && error.empty();) {
        if (way.clear) parser.clearTable(), seen = 0;
        if (!parser.parse(way.batch, finished)) error = parser.error();
        EXPECT_LE(parser.table().size() - seen, way.batch);
        for (; seen != parser.table().size(); ++seen) {
            rows.emplace_back();
            for (const xoVariant& cell : parser.table()[seen]) rows.back().push_back(cell.getString());
        }
    }
    return {rows, error};
}

// Pieces that meet in every order, a broken sequence among them.
std::string makeText(std::mt19937& dice, bool isBroken) {
    static const std::vector<std::string> pieces = xoStringUtils::Split(
        ",|\"|\"\"|\n|,|\"|\r|\r\n|a|bc|\xC3\xA9|\xE2\x82\xAC|\xF0\x9F\x98\x80|\0|"s + std::string(90, 'x'), '|');
    static const std::string faults[] = {"\xC3",         "\xE2\x82",     "\xF0\x9F\x98",     "\x80",
                                         "\xC0\xAF",     "\xE0\x80\xAF", "\xF0\x80\x80\xAF", "\xED\xA0\x80",
                                         "\xED\xBF\xBF", "\xFF",         "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80"};
    std::string text = isBroken ? pieces[dice() % pieces.size()] + faults[dice() % std::size(faults)] : "";
    for (unsigned count = dice() % 14; count != 0; --count) text += pieces[dice() % pieces.size()];
    return text;
}

TEST(CsvParser, GivesEachMarkItsMeaning) {
    const std::tuple<std::string, CsvDialect, std::vector<std::vector<std::string>>> cases[] = {
        {"a,b\r\nc\n\nd,e,\nf,", {}, {{"a", "b"}, {"c"}, {""}, {"d", "e", ""}, {"f"}}},
        {"a'b,\nc'd,'it''s','''','e'f''g", {',', '\''}, {{"ab,\ncd", "it's", "'", "efg"}}},
        {"\"a\rb\"c\rd,\"never closed\n,e", {}, {{"a\rbcd", "never closed\n,e"}}},
        {"a,b,c\n", {',', ','}, {{"abc"}}},  // of two meanings, the string delimiter comes first
        {"a\nb", {'\n', '"'}, {{"a", "b"}}},
        {"a\rb\nc\rd\ne", {'\r', '\n'}, {{"a", "bc\rde"}}},
        {"\xC3\xA9,\"", {'\xC3', '\xA9'}, {{"\xC3\xA9,\""}}},  // parts of a character delimit nothing
    };
    for (const auto& [text, dialect, rows] : cases)
        EXPECT_EQ(parse(text, dialect, {}), Outcome(rows, "")) << testing::PrintToString(text);
}

// The fuzzer compares generated texts with a model; here each way of reading them is compared with reading at once.
TEST(CsvParser, ReadsTheSameHoweverTheTextComesIn) {
    const CsvDialect dialects[] = {{},          {';', '\''},  {'a', 'b'},   {',', ','},
                                   {'\n', '"'}, {'\r', '\n'}, {'\0', '\0'}, {'\xC3', '\xA9'}};
    std::mt19937 dice(20240307);
    for (int round = 0; round < 4000; ++round) {
        const std::string text = makeText(dice, round % 4 == 0);
        const CsvDialect& dialect = round % 2 == 0 ? dialects[0] : dialects[dice() % std::size(dialects)];
        std::vector<Way> ways = {{text.size() + 1}, {64, kAll, 1}, {1, kAll, 1, true}, {7, kAll, 2, true}};
        for (const unsigned blockSize : {1u, 2u, 3u, 4u, 5u, 16u, 63u, 64u, 65u}) ways.push_back({blockSize});
        for (std::size_t split = 1; split < text.size(); ++split) ways.push_back({CsvParser::kBlockSize, split});
        const Outcome atOnce = parse(text, dialect, {});
        for (const Way& way : ways)
            ASSERT_EQ(parse(text, dialect, way), atOnce)
                << testing::PrintToString(text) << " in blocks of " << way.blockSize << " from " << way.firstRead
                << " by " << way.batch;
    }
}

}  // namespace
}  // namespace xo::tests
