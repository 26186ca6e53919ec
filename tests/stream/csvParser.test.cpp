#include "stream/csvParser.h"

#include <gtest/gtest.h>

#include <random>

#include "stream/csvModel.h"

namespace xo::tests {
namespace {

using stream::CsvDialect;
using stream::CsvParser;
using Texts = std::vector<std::vector<std::string>>;

constexpr std::uint64_t kAll = ~std::uint64_t{0};

struct Parsed {
    Texts rows;
    std::string error;
};

Texts textsOf(const CsvParser::Table& table) {
    Texts texts;
    for (const auto& row : table) {
        texts.emplace_back();
        for (const xoVariant& cell : row) texts.back().push_back(cell.getString());
    }
    return texts;
}

// How a text reaches the parser: the buffer's size, and where the first read stops short.
struct Way {
    std::size_t blockSize = CsvParser::kBlockSize;
    std::size_t firstRead = ~std::size_t{0};
    std::uint64_t batch = kAll;
    bool clear = false;
};

Parsed parse(const std::string& text, const CsvDialect& dialect, const Way& way) {
    CsvParser parser(way.blockSize);
    std::size_t at = 0;
    parser.start(dialect, text.size(), [&](char* out, std::size_t room) {
        const std::size_t size = (std::min)(room, at < way.firstRead ? way.firstRead - at : room);
        text.copy(out, size, at);
        at += size;
        return size;
    });
    Parsed parsed;
    const CsvParser::Table& table = parser.table();
    for (bool finished = false; !finished;) {
        if (way.clear) parser.clearTable();
        const std::size_t before = table.size();
        const bool done = parser.parse(way.batch, finished);
        EXPECT_LE(table.size() - before, way.batch);
        if (way.clear) {
            for (auto& row : textsOf(table)) parsed.rows.push_back(row);
        } else {
            parsed.rows = textsOf(table);
        }
        if (!done) {
            parsed.error = parser.error();
            break;
        }
    }
    return parsed;
}

// Pieces that meet in every order, broken sequences among them.
std::string makeText(std::mt19937& dice, bool broken) {
    static const std::string pieces[] = {
        ",",
        ",",
        "\"",
        "\"",
        "\"\"",
        "\n",
        "\r\n",
        "\r",
        "a",
        "bc",
        "\xC3\xA9",
        "\xE2\x82\xAC",
        "\xF0\x9F\x98\x80",
        std::string(1, '\0'),
        "a plain run of text that is longer than a block, to be scanned at once as it has no mark"};
    static const std::string faults[] = {"\xC3",         "\xE2\x82",     "\xF0\x9F\x98",     "\x80",
                                         "\xC0\xAF",     "\xE0\x80\xAF", "\xF0\x80\x80\xAF", "\xED\xA0\x80",
                                         "\xED\xBF\xBF", "\xFF",         "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80"};
    std::string text;
    for (unsigned count = dice() % 14; count != 0; --count) text += pieces[dice() % std::size(pieces)];
    if (broken) {
        text += faults[dice() % std::size(faults)];
        for (unsigned count = dice() % 4; count != 0; --count) text += pieces[dice() % std::size(pieces)];
    }
    return text;
}

TEST(CsvParser, readsAsTheModelDoesHoweverTheTextComesIn) {
    const CsvDialect dialects[] = {{},          {';', '\''},  {'a', 'b'},   {',', ','},
                                   {'\n', '"'}, {'\r', '\n'}, {'\0', '\0'}, {'\xC3', '\xA9'}};
    std::mt19937 dice(20240307);
    for (int round = 0; round < 4000; ++round) {
        const std::string text = makeText(dice, round % 4 == 0);
        const CsvDialect& dialect = round % 2 == 0 ? dialects[0] : dialects[dice() % std::size(dialects)];
        const CsvModel model(text, dialect);
        std::vector<Way> ways = {
            {}, {text.size() + 1}, {CsvParser::kBlockSize, kAll, 1}, {1, kAll, 1, true}, {7, kAll, 2, true}};
        for (const std::size_t blockSize : std::initializer_list<std::size_t>{1, 2, 3, 4, 5, 16, 63, 64, 65})
            ways.push_back({blockSize});
        for (std::size_t split = 1; split < text.size(); ++split) ways.push_back({CsvParser::kBlockSize, split});
        for (const Way& way : ways) {
            const Parsed parsed = parse(text, dialect, way);
            ASSERT_EQ(parsed.rows, model.rows) << testing::PrintToString(text) << " in blocks of " << way.blockSize
                                               << " from " << way.firstRead << " by " << way.batch;
            ASSERT_EQ(parsed.error, model.error) << testing::PrintToString(text);
        }
    }
}

}  // namespace
}  // namespace xo::tests
