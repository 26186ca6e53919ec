// Delimited text in and out: files read against Boost's tokenizer and the loop that many programs write for themselves,
// cells written against std::ofstream and fmt.
#include <fmt/compile.h>
#include <fmt/format.h>

#include <algorithm>
#include <boost/tokenizer.hpp>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "dice.h"
#include "families.h"
#include "peakHeap.h"
#include "xoSystem/xoCsvFileReader.h"
#include "xoSystem/xoCsvStream.h"
#include "xoSystem/xoProgress.h"

namespace bench {
namespace {

constexpr std::uint64_t kBatch = 1000;

struct CsvFile {
    std::string name;
    std::filesystem::path path;
    double bytes;
    std::size_t cells;
    std::vector<bool> isText;  // of each column
};

// ---- Reading. Each returns how many cells it saw.

std::size_t countCells(const xo::xoCsvFileReader::Table& table) {
    std::size_t cells = 0;
    for (const auto& row : table) cells += row.size();
    return cells;
}

std::size_t readWhole(const CsvFile& file, bool typed) {
    xo::xoCsvFileReader reader(typed);
    reader.setFileName(file.path.u8string());
    return reader.parseCsvFile() ? countCells(reader.getTable()) : 0;
}

// As a host that shows a bar: the notifier is called ten times a second.
std::size_t readWatched(const CsvFile& file) {
    xo::xoProgressNotifier notifier(/*intervalMs=*/100);
    xo::xoCsvFileReader reader(/*enableTypeGuess=*/false);
    reader.setFileName(file.path.u8string());
    return reader.parseCsvFile(&notifier) ? countCells(reader.getTable()) : 0;
}

std::size_t readBatches(const CsvFile& file, bool typed) {
    xo::xoCsvFileReader reader(typed);
    reader.setFileName(file.path.u8string());
    std::size_t cells = 0;
    bool finished = false;
    for (bool ok = reader.parseFirst(finished, kBatch); ok; ok = reader.parseNext(finished, true, kBatch)) {
        cells += countCells(reader.getTable());
        if (finished) return cells;
    }
    return 0;
}

using Strings = std::vector<std::vector<std::string>>;

std::size_t countCells(const Strings& table) {
    std::size_t cells = 0;
    for (const auto& row : table) cells += row.size();
    return cells;
}

std::size_t readByBoost(const CsvFile& file) {
    using Separator = boost::escaped_list_separator<char>;
    std::ifstream in(file.path, std::ios::binary);
    Strings table;
    for (std::string line; std::getline(in, line);) {
        const boost::tokenizer<Separator> cells(line, Separator('\\', ',', '"'));
        table.emplace_back(cells.begin(), cells.end());
    }
    return countCells(table);
}

// One character after the other, minding quotes.
void split(const std::string& line, std::vector<std::string>& row) {
    std::string cell;
    bool quoted = false;
    for (const char c : line) {
        if (c == '"') {
            quoted = !quoted;
        } else if (c == ',' && !quoted) {
            row.push_back(std::move(cell));
            cell.clear();
        } else {
            cell += c;
        }
    }
    row.push_back(std::move(cell));
}

std::size_t readBySplitting(const CsvFile& file, bool keepAll) {
    std::ifstream in(file.path, std::ios::binary);
    Strings table;
    std::size_t cells = 0;
    for (std::string line; std::getline(in, line);) {
        table.emplace_back();
        split(line, table.back());
        cells += table.back().size();
        if (!keepAll && table.size() == kBatch) table.clear();
    }
    return cells;
}

class Bytes {
public:
    explicit Bytes(const CsvFile& file)
        : mSize(static_cast<std::size_t>(file.bytes)),
          mBytes(new char[mSize]),
          mFile(::_wfopen(file.path.c_str(), L"rb")) {
        mSize = std::fread(mBytes.get(), 1, mSize, mFile);
        std::fclose(mFile);
    }
    // Calls cell(begin, end) for each piece between commas and line ends, and row() behind each line.
    template <class Cell>
    std::size_t scan(Cell&& cell) const {
        std::size_t cells = 0;
        const char* at = mBytes.get();
        const char* const end = at + mSize;
        while (at < end) {
            const auto* const found =
                static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)));
            const char* const stop = found ? found : end;
            for (std::size_t column = 0;; ++column, ++cells) {
                const auto* const comma =
                    static_cast<const char*>(std::memchr(at, ',', static_cast<std::size_t>(stop - at)));
                cell(column, at, comma ? comma : stop);
                at = comma ? comma + 1 : stop + 1;
                if (!comma) break;
            }
            ++cells;
        }
        return cells;
    }

private:
    std::size_t mSize;
    std::unique_ptr<char[]> mBytes;
    std::FILE* mFile;
};

struct LimitCell {
    std::int64_t type;
    union {
        std::int64_t integer;
        double real;
        std::string* text;
    };
};

// What no typed table can do without: it is told which columns are text and how many cells there are.
std::size_t readAtLimit(const CsvFile& file, bool typed) {
    const Bytes bytes(file);
    std::vector<LimitCell> table;
    table.reserve(file.cells + file.cells / 4);
    const std::size_t cells = bytes.scan([&](std::size_t column, const char* begin, const char* end) {
        LimitCell cell{0, {0}};
        if (typed && !file.isText[column % file.isText.size()]) {
            std::from_chars(begin, end, cell.integer);
        } else {
            cell.type = 1;
            cell.text = new std::string(begin, end);
        }
        table.push_back(cell);
    });
    for (const LimitCell& cell : table)
        if (cell.type == 1) delete cell.text;
    return cells;
}

std::size_t scanBytes(const CsvFile& file) {
    const Bytes bytes(file);
    std::size_t total = 0;
    const std::size_t cells = bytes.scan(
        [&](std::size_t, const char* begin, const char* end) { total += static_cast<std::size_t>(end - begin); });
    return cells + total % 2;
}

double peakMegabytes(const std::function<void()>& run) {
    const PeakHeap heap;
    run();
    return heap.peak() / 1e6;
}

void compareReads(Suite& suite, const CsvFile& file) {
    const std::string name = file.name + ", a byte";
    const auto ours = [&](bool typed) { return [&file, typed] { keep(readWhole(file, typed)); }; };
    const auto batches = [&](bool typed) { return [&file, typed] { keep(readBatches(file, typed)); }; };
    const auto limit = [&](bool typed) {
        return Other{"limit: heap string, 16-byte cell", [&file, typed] { keep(readAtLimit(file, typed)); }};
    };
    const Other boosts{"boost escaped list, stored", [&] { keep(readByBoost(file)); }};
    const Other splits{"getline and split, stored", [&] { keep(readBySplitting(file, true)); }};
    const Other splitsBatches{"getline and split, in batches", [&] { keep(readBySplitting(file, false)); }};
    const Other scan{"limit: fread, memchr", [&] { keep(scanBytes(file)); }};

    for (const bool typed : {true, false})
        require(readWhole(file, typed) == file.cells && readBatches(file, typed) == file.cells, "we read other cells");
    require(readByBoost(file) == file.cells && readBySplitting(file, true) == file.cells, "the peers read other cells");

    suite.compare("csv", name + ", typed", file.bytes, ours(true), {boosts, splits, limit(true), scan});
    suite.compare("csv", name + ", texts", file.bytes, ours(false), {boosts, splits, limit(false)});
    suite.compare("csv", name + ", texts, watched", file.bytes, [&] { keep(readWatched(file)); },
                  {{"not watched", ours(false)}});
    suite.compare("csv", name + ", typed, in batches", file.bytes, batches(true), {splitsBatches, scan});
    suite.compare("csv", name + ", texts, in batches", file.bytes, batches(false), {splitsBatches, scan});

    const std::pair<const Other&, double> peers[] = {{boosts, peakMegabytes(boosts.run)},
                                                     {splits, peakMegabytes(splits.run)}};
    for (const Other& kind :
         {Other{"typed", ours(true)}, {"texts", ours(false)}, {"typed, in batches", batches(true)}}) {
        const double held = peakMegabytes(kind.run);
        for (const auto& [peer, theirs] : peers) {
            const double ratio = held / theirs;
            suite.add({"csv", file.name + ", peak MB, " + kind.name, peer.name, held, theirs, ratio, ratio, ratio});
        }
    }
}

// Integers, codes, texts of which some need quotes, reals and addresses, a third of the cells numbers.
CsvFile makeMixedFile(const std::filesystem::path& path, std::size_t size) {
    Dice dice;
    std::string text;
    std::size_t rows = 0;
    for (; text.size() < size; ++rows) {
        const auto id = 300000 + rows;
        const char* const place = dice.pick(
            {"Canillo", "Encamp", "La Massana", "Ordino", "Sant Juli\xC3\xA0 de L\xC3\xB2ria", "Ajman", "Dubai"});
        text +=
            fmt::format(FMT_COMPILE("{},{}-{:02},{}{} Parish{},{}.{:03},{},https://en.example.org/wiki/{:x},\"{}\"\n"),
                        id, dice.pick({"AD", "AE", "AF", "AG"}), id % 32, id % 4 == 0 ? "\"Old; " : "", place,
                        id % 4 == 0 ? "\"" : "", dice.roll(2000), dice.roll(1000), dice.roll(100), dice.roll(1 << 20),
                        id % 8 == 0 ? "Airports in the parish" : "");
    }
    std::ofstream(path, std::ios::binary) << text;
    return {
        "read 100 MB", path, static_cast<double>(text.size()), rows * 7, {false, true, true, false, false, true, true}};
}

// ---- Writing rows of four cells.

constexpr std::size_t kRows = 2500000;
constexpr std::size_t kCells = 4 * kRows;

struct Sample {
    int integer;
    double real;
    std::string code;
    std::string name;
};

void writeByOurs(const std::filesystem::path& folder, const std::vector<Sample>& samples) {
    xo::xoCsvFileWriter writer(folder.u8string(), "ours", 0xFFFFFFFF);
    for (std::size_t row = 0; row != kRows; ++row) {
        const Sample& sample = samples[row % samples.size()];
        writer.getStream() << sample.integer << sample.real << sample.code << sample.name
                           << xo::xoCsvStream::EndOfRow();
    }
}

void writeByStream(const std::filesystem::path& folder, const std::vector<Sample>& samples) {
    std::ofstream out(folder / L"stream.csv", std::ios::binary);
    out.precision(3);
    for (std::size_t row = 0; row != kRows; ++row) {
        const Sample& sample = samples[row % samples.size()];
        if (row != 0) out << '\n';
        out << sample.integer << ',' << sample.real << ',' << sample.code << ',' << sample.name;
    }
}

void writeByFmt(const std::filesystem::path& folder, const std::vector<Sample>& samples) {
    std::FILE* const out = ::_wfopen((folder / L"fmt.csv").c_str(), L"wb");
    fmt::memory_buffer buffer;
    const auto flush = [&] {
        std::fwrite(buffer.data(), 1, buffer.size(), out);
        buffer.clear();
    };
    for (std::size_t row = 0; row != kRows; ++row) {
        const Sample& sample = samples[row % samples.size()];
        if (row != 0) buffer.push_back('\n');
        fmt::format_to(std::back_inserter(buffer), FMT_COMPILE("{},{:.3g},{},{}"), sample.integer, sample.real,
                       sample.code, sample.name);
        if (buffer.size() > 60000) flush();
    }
    flush();
    std::fclose(out);
}

void compareWrites(Suite& suite, const std::filesystem::path& folder) {
    Dice dice;
    std::vector<Sample> samples;
    for (int i = 0; i != 1000; ++i)
        samples.push_back({static_cast<int>(dice.roll(1000000)), static_cast<double>(dice.roll(1000000)) / 64, "AD-02",
                           dice.pick({"Canillo Parish", "Encamp", "Sant Julia de Loria Parish", "Ajman"})});
    writeByOurs(folder, samples);
    writeByStream(folder, samples);
    writeByFmt(folder, samples);
    const auto size = std::filesystem::file_size(folder / L"ours.csv");
    require(size == std::filesystem::file_size(folder / L"stream.csv") &&
                size == std::filesystem::file_size(folder / L"fmt.csv"),
            "the sides write different text");
    suite.compare("csv", "write 10 million cells, a cell", kCells, [&] { writeByOurs(folder, samples); },
                  {{"std::ofstream <<", [&] { writeByStream(folder, samples); }},
                   {"fmt, compiled, fwrite", [&] { writeByFmt(folder, samples); }}});
}

}  // namespace

void measureCsv(Suite& suite) {
    if (!suite.wants("csv")) return;
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / L"xoBench";
    std::filesystem::create_directories(folder);
    CsvFile regions{"read regions", XO_BENCH_REGIONS, 0, 3988 * 8, {false, true, false, true, true, true, true, true}};
    regions.bytes = static_cast<double>(std::filesystem::file_size(regions.path));
    compareReads(suite, regions);
    compareWrites(suite, folder);
    compareReads(suite, makeMixedFile(folder / L"mixed.csv", 100000000));
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

}  // namespace bench
