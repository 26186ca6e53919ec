// Delimited text to rows of variants, over any source of bytes.
#ifndef XO_STREAM_CSVPARSER_H
#define XO_STREAM_CSVPARSER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "stream/csvMarks.h"
#include "stream/textStock.h"
#include "xoSystem/xoVariant.h"

namespace xo::stream {

struct CsvDialect {
    char columnDelimiter = ',';
    char stringDelimiter = '"';
    bool guessTypes = false;
};

// The text is read in blocks into one buffer, in which every row is taken apart in place: a cell is a piece of the
// buffer, closed up where a delimiter or carriage return fell out of it, until the row becomes variants. So the buffer
// holds the row under way from its start, and grows only for a row that is longer. The texts of the table are lent to
// its variants, so that neither they nor the variants are made or destroyed one by one.
class CsvParser {
public:
    using Row = std::vector<xoVariant>;
    using Table = std::vector<Row>;
    // Reads at most that many bytes and returns how many; 0 is a failure, it is never asked beyond the size.
    using Read = std::function<std::size_t(char* out, std::size_t room)>;

    static constexpr std::size_t kBlockSize = 0x100000;

    explicit CsvParser(std::size_t blockSize = kBlockSize) : mBlockSize(blockSize) {}

    // Begins anew, with an empty table and a source of that many bytes.
    void start(const CsvDialect& dialect, std::uint64_t size, Read read);

    // From the next row on.
    void setGuessTypes(bool guessTypes) { mDialect.guessTypes = guessTypes; }

    // Appends up to that many rows. A failure leaves those before it, and every later call fails the same way.
    bool parse(std::uint64_t rowCount, bool& finished);

    // Reads on when fewer bytes are left than the longest sequence has. False after a failure.
    bool refill(bool& moreInput);

    const Table& table() const { return mTable; }
    void setTable(const Table& table);

    // Empties the table. The memory of its rows serves the next ones.
    void clearTable();
    // Gives its memory back too.
    void releaseTable();

    bool fail(std::string error);
    const std::string& error() const { return mError; }
    std::uint32_t maxColumnCount() const { return mMaxColumnCount; }

private:
    enum Quotes { Outside, Inside, AfterDelimiter };  // the last: inside, and a delimiter may have closed them

    struct Cell {
        std::size_t begin;  // from the start of the row
        std::size_t size;
    };

    const char* rowText() const { return mBuffer.get() + mRowBegin; }
    bool isAtEnd() const { return mUnread == 0 && mAt == mEnd; }

    bool scan(std::uint64_t& rowsLeft);
    bool append(const char* run, const char* end);
    void endCell();
    void endRow();
    void fill(xoVariant& value, std::string_view text);
    void finish();
    bool failAtMalformed();
    void makeRoom();

    const std::size_t mBlockSize;
    CsvDialect mDialect;
    CsvMarks mMarks{',', '"'};
    Read mRead;
    std::uint64_t mUnread = 0;  // bytes of the source

    std::unique_ptr<char[]> mBuffer;  // and a block of marks more, which may be read and means nothing
    std::size_t mRoom = 0;
    std::size_t mRowBegin = 0;  // of the row under way
    std::size_t mAt = 0;        // up to here the bytes are dealt with,
    std::size_t mValid = 0;     // up to here they are whole sequences of UTF-8,
    std::size_t mEnd = 0;       // up to here they are read

    Quotes mQuotes = Outside;
    std::vector<Cell> mCells;  // of the row, the last one under way
    bool mIsHeader = true;
    std::uint32_t mMaxColumnCount = 0;
    std::string mError;
    TextStock mTexts;  // of the table
    Table mTable;
    Table mSpareRows;  // what they hold has no meaning
};

}  // namespace xo::stream

#endif
