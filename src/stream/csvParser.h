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
#include "stream/stringArena.h"
#include "xoSystem/xoVariant.h"

namespace xo::stream {

struct CsvDialect {
    char columnDelimiter = ',';
    char stringDelimiter = '"';
    bool guessTypes = false;
};

// The text is read in blocks into one buffer, where every row is taken apart in place: a cell is a range of the buffer,
// from which delimiters and carriage returns are removed by moving the rest up. So the buffer holds the present row
// from its beginning, and grows only for a row that is longer. The variants of the table borrow their strings from an
// arena, so that neither are created and destroyed one by one.
class CsvParser {
public:
    using Row = std::vector<xoVariant>;
    using Table = std::vector<Row>;
    // Reads at most that many bytes and returns how many it read; 0 is an error, which it may have named by fail(). It
    // is not called after the source's size.
    using Read = std::function<std::size_t(char* out, std::size_t capacity)>;

    // Of the buffer. A row of up to half of it does not make the buffer grow.
    static constexpr std::size_t kBlockSize = 0x100000;

    explicit CsvParser(std::size_t blockSize = kBlockSize) : mBlockSize(blockSize) {}

    // Starts with an empty table and a source of that many bytes.
    void start(const CsvDialect& dialect, std::uint64_t size, Read read);

    // Takes effect at the next row that is completed.
    void setGuessTypes(bool guessTypes) { mDialect.guessTypes = guessTypes; }

    // Appends up to that many rows. After an error the rows before it are in the table, and every later call fails the
    // same way.
    bool parse(std::uint64_t rowCount, bool& finished);

    // Reads a block if fewer bytes are left than the longest sequence of UTF-8 has. moreInput becomes whether the
    // source had unread bytes before. False after an error.
    bool refill(bool& moreInput);

    const Table& table() const { return mTable; }
    void setTable(const Table& table);

    // Empties the table and keeps the memory of its rows for the next ones.
    void clearTable();
    // Empties the table and frees its memory.
    void releaseTable();

    // Makes this and all later calls of parse and refill fail with the error. Returns false.
    bool fail(std::string error);
    const std::string& error() const { return mError; }
    std::uint32_t maxColumnCount() const { return mMaxColumnCount; }

    // Of the source, in bytes.
    std::uint64_t size() const { return mSize; }
    // How many bytes of the source have been scanned.
    std::uint64_t parsedSize() const { return mSize - mUnread - (mEnd - mAt); }

private:
    // AfterDelimiter is inside quotes after a delimiter: it has closed them unless another one follows.
    enum Quotes { Outside, Inside, AfterDelimiter };

    struct Cell {
        std::size_t begin;  // offset from the beginning of the row
        std::size_t size;
    };

    const char* rowText() const { return mBuffer.get() + mRowBegin; }
    bool isAtEnd() const { return mUnread == 0 && mAt == mEnd; }

    bool scan(std::uint64_t& rowsLeft);
    const char* passStringDelimiter(const char* at);
    bool append(const char* run, const char* end);
    void endCell();
    void endRow();
    Row takeSpareRow();
    void fill(xoVariant& value, std::string_view text);
    void finish();
    bool failAtMalformed();
    void makeSpace();

    const std::size_t mBlockSize;
    CsvDialect mDialect;
    CsvMarks mMarks{',', '"'};
    Read mRead;
    std::uint64_t mSize = 0;    // of the source, in bytes
    std::uint64_t mUnread = 0;  // bytes of it

    // The buffer has mCapacity bytes and one block of marks more, which may be read and has no meaning. Its offsets are
    // in ascending order.
    std::unique_ptr<char[]> mBuffer;
    std::size_t mCapacity = 0;
    std::size_t mRowBegin = 0;  // of the present row
    std::size_t mAt = 0;        // the end of what has been scanned
    std::size_t mValid = 0;     // the end of the whole sequences of UTF-8
    std::size_t mEnd = 0;       // the end of what has been read

    Quotes mQuotes = Outside;
    std::vector<Cell> mCells;  // of the present row, the last of them incomplete
    bool mIsHeader = true;
    std::uint32_t mMaxColumnCount = 0;
    std::string mError;
    StringArena mTexts;  // the strings of the table
    Table mTable;
    Table mSpareRows;  // rows for reuse, whose values have no meaning
};

}  // namespace xo::stream

#endif
