// Text tables beside the CSV of the same cells and beside rows whose widths the program knows; the width of texts
// beside other looks at their bytes.
#include <fmt/compile.h>
#include <fmt/format.h>

#include <cstring>
#include <string>
#include <vector>

#include "dice.h"
#include "families.h"
#include "xoSystem/xoAsciiTableBuilder.h"
#include "xoSystem/xoCsvStream.h"
#include "xoSystem/xoIoDevice.h"
#include "xoSystem/xoStringUtils.h"

namespace bench {
namespace {

constexpr std::size_t kRows = 100000;
constexpr std::size_t kCellsInRow = 6;

struct Record {
    std::string name, state;
    std::int64_t rows, bytes;
    double seconds, share;
};

std::vector<Record> someRecords() {
    Dice dice;
    std::vector<Record> records;
    for (std::size_t i = 0; i < kRows; ++i) {
        Record record;
        record.name = dice.pick({"Oslo", "Bergen", "Tromso", "Kristiansand", "Hammerfest", "Bodo"});
        record.state = dice.pick({"done", "failed", "waiting for its turn", ""});
        record.rows = static_cast<std::int64_t>(dice.roll(1u << 20));
        record.bytes = static_cast<std::int64_t>(dice.roll(1u << 30));
        record.seconds = static_cast<double>(dice.roll(100000)) / 4;
        record.share = static_cast<double>(dice.roll(1000)) / 8;
        records.push_back(record);
    }
    return records;
}

std::string buildTable(const std::vector<Record>& records) {
    xo::AsciiTableBuilder table({"Name", "State", "Rows", "Bytes", "Seconds", "Share"});
    for (const Record& record : records)
        table.addRow({record.name, record.state, record.rows, record.bytes, record.seconds, record.share});
    return table.build();
}

class TextDevice final : public xo::xoIoDevice {
public:
    std::uint64_t readBytes(char*, std::uint64_t) override { return 0; }
    std::uint64_t writeBytes(const char* data, std::uint64_t size) override {
        text.append(data, size);
        return size;
    }
    bool hasError() const override { return false; }
    bool atEnd() const override { return true; }
    bool seekg(std::int64_t, SeekStart) override { return false; }
    bool seekp(std::int64_t, SeekStart) override { return false; }
    std::uint64_t tellg() override { return 0; }
    std::uint64_t tellp() override { return text.size(); }

    std::string text;
};

std::string writeCsv(const std::vector<Record>& records) {
    TextDevice device;
    xo::xoCsvStream stream(&device);
    for (const Record& record : records)
        stream << record.name << record.state << record.rows << record.bytes << record.seconds << record.share
               << xo::xoCsvStream::EndOfRow();
    return std::move(device.text);
}

// A program that knows how wide each column will be.
std::string formatRows(const std::vector<Record>& records) {
    constexpr std::string_view rule =
        "+--------------+----------------------+---------+------------+---------+---------+\n";
    std::string text(rule);
    const auto out = std::back_inserter(text);
    fmt::format_to(out, FMT_COMPILE("| {:<12} | {:<20} | {:>7} | {:>10} | {:>7} | {:>7} |\n"), "Name", "State", "Rows",
                   "Bytes", "Seconds", "Share");
    text += rule;
    for (const Record& record : records)
        fmt::format_to(out, FMT_COMPILE("| {:<12} | {:<20} | {:>7} | {:>10} | {:>7.6g} | {:>7.6g} |\n"), record.name,
                       record.state, record.rows, record.bytes, record.seconds, record.share);
    return text += rule;
}

void measureWidth(Suite& suite, const char* name, const std::string& piece, std::size_t pieceWidth) {
    constexpr std::size_t kSize = 65536;
    std::string text, copy(kSize, '\0');
    std::size_t width = 0;
    for (; text.size() + piece.size() <= kSize; width += pieceWidth) text += piece;
    require(xo::xoStringUtils::GetDisplayWidth(text) == width, "the width is wrong");
    suite.compare("tables", name, static_cast<double>(text.size()),
                  [&] { keep(xo::xoStringUtils::GetDisplayWidth(text)); },
                  {{"IsUtf8String", [&] { keep(xo::xoStringUtils::IsUtf8String(text)); }},
                   {"limit: memcpy", [&] { keep(std::memcpy(copy.data(), text.data(), text.size())); }}});
}

}  // namespace

void measureTables(Suite& suite) {
    if (!suite.wants("tables")) return;
    const std::vector<Record> records = someRecords();
    require(buildTable(records) == formatRows(records), "the tables differ");
    suite.compare("tables", "100,000 rows of 6 cells, a cell", kRows * kCellsInRow, [&] { keep(buildTable(records)); },
                  {{"xoCsvStream into memory", [&] { keep(writeCsv(records)); }},
                   {"fmt, widths known", [&] { keep(formatRows(records)); }}});
    measureWidth(suite, "width of ASCII, a byte", "The quick brown fox. ", 21);
    measureWidth(suite, "width of mixed text, a byte", "日本の東京 and 한국 ", 20);
}

}  // namespace bench
