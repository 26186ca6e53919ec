// The CSV parser, which must give the same rows and error however the text comes in: in blocks of any size, after a
// short first read, in batches. An input is a byte for the dialect and a text.
#include <algorithm>

#include "fuzz.h"
#include "stream/csvParser.h"

namespace xo::fuzz {
namespace {

using stream::CsvDialect;
using stream::CsvParser;

constexpr std::size_t kWhole = SIZE_MAX;
constexpr std::uint64_t kAll = UINT64_MAX;

struct Outcome {
    std::vector<std::vector<std::string>> rows;
    std::string error;
};

// How a text reaches the parser: the buffer's size, where the first read stops short, and in what batches.
struct Way {
    std::size_t blockSize = CsvParser::kBlockSize;
    std::size_t firstRead = kWhole;
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
    Outcome outcome;
    std::size_t seen = 0;
    for (bool finished = false; !finished && outcome.error.empty();) {
        if (way.clear) parser.clearTable(), seen = 0;
        if (!parser.parse(way.batch, finished)) outcome.error = parser.error();
        require(parser.table().size() - seen <= way.batch, "a batch of ", parser.table().size() - seen);
        for (; seen != parser.table().size(); ++seen) {
            outcome.rows.emplace_back();
            for (const xoVariant& cell : parser.table()[seen]) outcome.rows.back().push_back(cell.getString());
        }
    }
    return outcome;
}

void checkParser(const std::string& input) {
    static const CsvDialect dialects[] = {{},          {';', '\''},  {'a', 'b'},   {',', ','},
                                          {'\n', '"'}, {'\r', '\n'}, {'\0', '\0'}, {'\xC3', '\xA9'}};
    Bytes bytes(input);
    const unsigned choice = bytes.byte();
    const CsvDialect& dialect = dialects[choice % 2 == 0 ? 0 : choice / 2 % 8];
    const std::string text = bytes.rest();
    std::vector<Way> ways = {{text.size() + 1}, {64, kWhole, 1}, {1, kWhole, 1, true}, {7, kWhole, 2, true}};
    for (const unsigned blockSize : {1u, 2u, 3u, 4u, 5u, 16u, 63u, 64u, 65u}) ways.push_back({blockSize});
    for (std::size_t split = 1; split < text.size(); ++split) ways.push_back({CsvParser::kBlockSize, split});
    const Outcome atOnce = parse(text, dialect, {});
    for (const Way& way : ways) {
        const Outcome outcome = parse(text, dialect, way);
        require(outcome.rows == atOnce.rows && outcome.error == atOnce.error, "other rows in blocks of ", way.blockSize,
                " from ", way.firstRead, " by ", way.batch);
    }
}

std::string generateParser(Random& random) {
    static const std::string_view x90 =
        "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx";
    static const std::vector<std::string_view> pieces = {",",
                                                         "\"",
                                                         "\"\"",
                                                         "\n",
                                                         ",",
                                                         "\"",
                                                         "\r",
                                                         "\r\n",
                                                         "a",
                                                         "bc",
                                                         "\xC3\xA9",
                                                         "\xE2\x82\xAC",
                                                         "\xF0\x9F\x98\x80",
                                                         std::string_view("\0", 1),
                                                         x90};
    static const std::vector<std::string_view> faults = {
        "\xC3",         "\xE2\x82",     "\xF0\x9F\x98",     "\x80",
        "\xC0\xAF",     "\xE0\x80\xAF", "\xF0\x80\x80\xAF", "\xED\xA0\x80",
        "\xED\xBF\xBF", "\xFF",         "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80"};
    std::string input(1, static_cast<char>(random.next()));
    if (random.oneIn(4)) input.append(random.pick(pieces)).append(random.pick(faults));
    return input + random.join(pieces, 14);
}

}  // namespace

const Target kCsvParser = {"csvParser", 4000, &generateParser, &checkParser};

}  // namespace xo::fuzz
