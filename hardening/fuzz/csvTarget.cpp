// Delimited text: reading at once and in batches, against a reader that goes character by character; then the table is
// written and read again. An input is three bytes (delimiters, batch, padding) and a file.
#include <algorithm>
#include <sstream>

#include "fuzz.h"
#include "treeModel.h"
#include "utf8Model.h"
#include "xoSystem/xoCsvFileReader.h"
#include "xoSystem/xoCsvStream.h"
#include "xoSystem/xoIoDevice.h"

namespace xo::fuzz {
namespace {

using Row = std::vector<std::string>;

struct Dialect {
    char column, quote;
    bool guess, clear;
    std::uint64_t batch;
};

struct Model {
    std::vector<Row> rows;
    std::string error;
    std::size_t widest = 0;
};

Model readModel(std::string_view text, const Dialect& dialect) {
    Model model;
    Row row;
    std::string cell;
    bool isQuoted = false, wasQuote = false;
    const auto endRow = [&] {
        model.widest = (std::max)(model.widest, row.size());
        model.rows.push_back(std::exchange(row, {}));
    };
    for (std::size_t length = 0; !text.empty(); text.remove_prefix(length)) {
        const char32_t c = decode(text, length);
        if (c > 0x10FFFF) return model.error = c == kBroken ? "Invalid UTF-8" : "Invalid code point", model;
        const bool isAscii = length == 1;
        const bool isQuote = isAscii && text[0] == dialect.quote;
        if (isQuoted && isQuote) {
            if (wasQuote) cell += text[0];
            wasQuote = !wasQuote;
        } else if (isQuoted && !wasQuote) {
            cell += text.substr(0, length);
        } else if (isQuote) {
            isQuoted = true;
        } else {
            isQuoted = wasQuote = false;
            if (isAscii && text[0] == dialect.column) {
                row.push_back(std::exchange(cell, {}));
            } else if (c == '\n') {
                row.push_back(std::exchange(cell, {}));
                endRow();
            } else if (c != '\r') {
                cell += text.substr(0, length);
            }
        }
        if (cell.size() > 65535 && model.rows.empty())
            return model.error = "Header cell size during parsing exceed max size of 65535 characters", model;
    }
    if (!cell.empty()) row.push_back(cell);
    if (!row.empty()) endRow();
    return model;
}

void compareRow(const std::vector<xoVariant>& row, const Row& texts, bool guess) {
    require(row.size() == texts.size(), "a row of ", row.size(), " cells, not ", texts.size());
    for (std::size_t i = 0; i < row.size(); ++i) {
        const xoVariant cell = guess ? xoVariant::BuildFromString(texts[i]) : xoVariant(texts[i]);
        require(Node::of(row[i]).show() == Node::of(cell).show(), "the cell ", row[i].toString(), ", not ", texts[i]);
    }
}

void compareOutcome(const xoCsvFileReader& reader, bool passed, const Model& model) {
    require(passed == model.error.empty(), "the result ", passed, " with ", reader.getLastError());
    require(reader.getLastError() == model.error, reader.getLastError(), ", not ", model.error);
    require(!passed || reader.getMaxColumnCount() == model.widest, "the widest row ", reader.getMaxColumnCount());
}

void readAtOnce(xoCsvFileReader& reader, const Model& model, bool guess) {
    compareOutcome(reader, reader.parseCsvFile(), model);
    require(reader.getTable().size() == model.rows.size(), reader.getTable().size(), " rows, not ", model.rows.size());
    for (std::size_t i = 0; i < model.rows.size(); ++i) compareRow(reader.getTable()[i], model.rows[i], guess);
}

void readInBatches(xoCsvFileReader& reader, const Model& model, const Dialect& dialect) {
    bool finished = false;
    std::size_t seen = 0;
    bool passed = reader.parseFirst(finished, dialect.batch);
    for (;; passed = reader.parseNext(finished, dialect.clear, dialect.batch)) {
        const std::size_t before = dialect.clear ? 0 : seen;
        const auto& table = reader.getTable();
        require(table.size() >= before && table.size() - before <= dialect.batch, "a batch of ", table.size() - before);
        require(!passed || finished || table.size() - before == dialect.batch, "a short batch");
        for (std::size_t i = before; i < table.size(); ++i, ++seen) {
            require(seen < model.rows.size(), "more than ", seen, " rows");
            compareRow(table[i], model.rows[seen], dialect.guess);
        }
        if (!passed || finished) break;
    }
    compareOutcome(reader, passed, model);
    require(seen == model.rows.size(), seen, " rows in batches");
    require(finished == passed && (!passed || reader.parseNext(finished, false, 1)), "after the end");
}

// What the writer can give back to the reader.
std::vector<Row> writable(std::vector<Row> rows) {
    for (Row& row : rows)
        for (std::string& cell : row)
            cell.erase(std::remove_if(cell.begin(), cell.end(), [](char c) { return c == '\n' || c == '\r'; }),
                       cell.end());
    if (!rows.empty() && rows.back().back().empty()) rows.back().back() = "x";
    return rows;
}

std::string writeModel(const std::vector<Row>& rows, const Dialect& dialect) {
    std::string text;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t k = 0; k < rows[i].size(); ++k) {
            const std::string& cell = rows[i][k];
            const bool isMarked = cell.find_first_of(std::string{dialect.column, dialect.quote}) != std::string::npos;
            if (k != 0) text += dialect.column;
            if (k == 0 && i != 0) text += "\r\n";
            if (isMarked) text += dialect.quote;
            for (const char c : cell) text.append(c == dialect.quote ? 2 : 1, c);
            if (isMarked) text += dialect.quote;
        }
    }
    return text;
}

void writeAndRead(const std::vector<Row>& rows, const Dialect& dialect) {
    std::ostringstream out;
    xoIoDeviceStdStreamProxy device(nullptr, &out);
    xoCsvStream stream(&device, dialect.column, dialect.quote, "\r\n");
    for (const Row& row : rows) {
        for (const std::string& cell : row) stream << cell;
        stream << xoCsvStream::EndOfRow();
    }
    const std::string expected = writeModel(rows, dialect);
    require(stream.isOk() && out.str() == expected, "wrote ", out.str(), "\nnot   ", expected);
    require(readModel(out.str(), dialect).rows == rows, "not what was written");
}

Dialect dialectOf(unsigned first, unsigned second) {
    constexpr char kColumns[] = {',', ';', '\t', '"', ',', ',', '\n', '\xC3'};
    constexpr char kQuotes[] = {'"', '"', '\'', '\r'};
    return {kColumns[first & 7], kQuotes[(first >> 3) & 3], (first & 32) != 0, (first & 64) != 0, 1 + second % 5};
}

void check(const std::string& input) {
    Bytes bytes(input);
    const unsigned first = bytes.byte(), second = bytes.byte();
    const Dialect dialect = dialectOf(first, second);
    // What follows stands where a block of the reader ends, or a cell of the first row becomes too long.
    const unsigned padding = bytes.byte();
    std::string text;
    if (padding > 250) text = std::string((1u << 20) - 256 + padding % 4, 'x').replace(100, 1, "\n");
    if (padding < 5) text = std::string(65530 - padding, 'x');
    text += bytes.rest();
    writeScratch("a.csv", text);

    Model model = readModel(text, dialect);
    xoCsvFileReader reader(dialect.guess);
    reader.setColumnDelimiter(dialect.column);
    reader.setStringDelimiter(dialect.quote);
    reader.setFileName(scratchFile("a.csv"));
    readAtOnce(reader, model, dialect.guess);
    readInBatches(reader, model, dialect);
    const bool canWrite = dialect.column > '\r' && dialect.quote > '\r' && dialect.column != dialect.quote;
    if (canWrite && text.size() < 1000) writeAndRead(writable(model.rows), dialect);
}

std::string generate(Random& random) {
    static const std::vector<std::string_view> pieces = {"a",
                                                         "b c",
                                                         "12",
                                                         "3,25",
                                                         "",
                                                         "\"",
                                                         "\"\"",
                                                         "'",
                                                         ",",
                                                         ",",
                                                         ";",
                                                         "\t",
                                                         "\n",
                                                         "\n",
                                                         "\r\n",
                                                         "\r",
                                                         "\"a,b\"",
                                                         "\"a\"\"b\"",
                                                         "\xC3\xA9",
                                                         "\xE4\xB8\xAD",
                                                         "\xF0\x9F\x98\x80",
                                                         "\xED\xA0\x80",
                                                         "\xF4\x90\x80\x80",
                                                         "\xC0\x80",
                                                         "\xFF",
                                                         "\xEF\xBB\xBF",
                                                         "0123456789abcdef0123456789abcdef,"};
    const auto broken = random.oneIn(4) ? pieces.size() : 21;
    const std::vector<std::string_view> chosen(pieces.begin(), pieces.begin() + static_cast<std::ptrdiff_t>(broken));
    std::string text{static_cast<char>(random.next()), static_cast<char>(random.next()), 'p'};
    if (random.oneIn(100)) text[2] = static_cast<char>(250 + random.below(11));
    return text + random.join(chosen, 25);
}

}  // namespace

const Target kCsv = {"csv", 3000, &generate, &check};

}  // namespace xo::fuzz
