// Takes delimited text apart in its buffer: https://www.rfc-editor.org/rfc/rfc4180
#include "stream/csvParser.h"

#include <utf8.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "text/utf8Checks.h"
#include "variant/borrowedText.h"
#include "variant/readNumber.h"

namespace xo::stream {
namespace {

// Bytes of the longest UTF-8 sequence. That many bytes without a valid sequence at their start are malformed, whatever
// follows.
constexpr std::size_t kLongestSequence = 4;
constexpr std::size_t kMaxRead = 0x10000;  // a block that is still in the processor's cache when it is scanned
// In bytes. Only the cells of the first row are limited, as xoCsvFileReader.h says.
constexpr std::size_t kMaxHeaderCell = 65535;
constexpr std::size_t kUsualColumns = 128;

}  // namespace

void CsvParser::start(const CsvDialect& dialect, std::uint64_t size, Read read) {
    mDialect = dialect;
    mMarks = CsvMarks(dialect.columnDelimiter, dialect.stringDelimiter);
    mRead = std::move(read);
    mSize = mUnread = size;
    mRowBegin = mAt = mValid = mEnd = 0;
    mQuotes = Outside;
    mCells.reserve(kUsualColumns);
    mCells.assign(1, {});
    mIsHeader = true;
    mMaxColumnCount = 0;
    mError.clear();
    releaseTable();
    // A buffer that grew for a long row, or was made for a smaller source, is not kept.
    if (mCapacity > mBlockSize || mCapacity < (std::min<std::uint64_t>)(size, mBlockSize)) {
        mBuffer.reset();
        mCapacity = 0;
    }
}

bool CsvParser::parse(std::uint64_t rowCount, bool& finished) {
    finished = false;
    if (!mError.empty()) return false;
    while (rowCount != 0) {
        if (!scan(rowCount)) return false;
        if (rowCount == 0) break;
        // The scan ends in front of a sequence that is not valid or not complete yet.
        if (mEnd - mAt >= kLongestSequence) return failAtMalformed();
        bool moreInput = false;
        if (!refill(moreInput)) return false;
        if (moreInput) continue;
        if (mAt != mEnd) return failAtMalformed();
        finish();
        break;
    }
    finished = isAtEnd();
    if (finished) Table().swap(mSpareRows);
    return true;
}

// Scans the valid bytes up to the end of the last row that is wanted. False after an error. Marks and dialect are
// copied to locals, because the compiler would load members again after each write to the buffer.
bool CsvParser::scan(std::uint64_t& rowsLeft) {
    const CsvMarks marks = mMarks;
    const CsvDialect dialect = mDialect;
    const char* const end = mBuffer.get() + mValid;
    const char* run = mBuffer.get() + mAt;  // the beginning of text that belongs to the present cell
    for (const char* block = run; block < end; block += CsvMarks::kBlock) {
        for (std::uint64_t found = marks.find(block, end); found != 0; found &= found - 1) {
            const char* const at = block + text::lowestBit(found);
            if (mQuotes == Inside && *at != dialect.stringDelimiter) continue;
            if (!append(run, at)) return false;
            if (*at == dialect.stringDelimiter) {
                run = passStringDelimiter(at);
                continue;
            }
            // A carriage return outside quotes is dropped here, also without a line feed behind it.
            run = at + 1;
            mQuotes = Outside;
            if (*at == dialect.columnDelimiter) {
                endCell();
            } else if (*at == '\n') {
                mAt = static_cast<std::size_t>(run - mBuffer.get());
                endCell();
                endRow();
                if (--rowsLeft == 0) return true;
            }
        }
    }
    mAt = mValid;
    return append(run, end);
}

// Opens or closes quotes. Returns where the text after the delimiter begins: the second of two delimiters is text.
const char* CsvParser::passStringDelimiter(const char* at) {
    const char* const run = mQuotes == AfterDelimiter ? at : at + 1;
    mQuotes = mQuotes == Inside ? AfterDelimiter : Inside;
    return run;
}

// Appends the run of text to the present cell. False when a cell of the first row becomes too long.
bool CsvParser::append(const char* run, const char* end) {
    if (run == end) return true;
    // Text behind the closing quote is not an error; it continues the cell.
    if (mQuotes == AfterDelimiter) mQuotes = Outside;
    const auto begin = static_cast<std::size_t>(run - rowText());
    const auto size = static_cast<std::size_t>(end - run);
    Cell& cell = mCells.back();
    if (cell.size == 0) {
        cell.begin = begin;
        // A quote or a carriage return was left out in between. The cell is joined in place, since text only becomes
        // shorter.
    } else if (cell.begin + cell.size != begin) {
        std::memmove(mBuffer.get() + mRowBegin + cell.begin + cell.size, run, size);
    }
    cell.size += size;
    if (!mIsHeader || cell.size <= kMaxHeaderCell) return true;
    return fail("Header cell size during parsing exceed max size of 65535 characters");
}

// Begins the next cell; it stays empty until text is appended.
void CsvParser::endCell() { mCells.emplace_back(); }

// Gives the texts of the cells to the table now, because the next read may overwrite the buffer.
void CsvParser::endRow() {
    // The last entry is the cell that the next text would go to; it belongs to no row yet.
    const std::size_t count = mCells.size() - 1;
    const char* const text = rowText();
    Row row = takeSpareRow();
    // The values of a row of the last table are overwritten, which saves constructing them again.
    const std::size_t spare = (std::min)(row.size(), count);
    row.resize(spare);
    row.reserve(count);
    for (std::size_t i = 0; i != count; ++i) {
        if (i >= spare) row.emplace_back();
        fill(row[i], {text + mCells[i].begin, mCells[i].size});
    }
    mMaxColumnCount = (std::max)(mMaxColumnCount, static_cast<std::uint32_t>(count));
    mTable.push_back(std::move(row));
    mCells.assign(1, {});
    mIsHeader = false;
    mRowBegin = mAt;
}

CsvParser::Row CsvParser::takeSpareRow() {
    if (mSpareRows.empty()) return {};
    Row row = std::move(mSpareRows.back());
    mSpareRows.pop_back();
    return row;
}

// Gives the value of a cell to a variant, which may have any value from an earlier table.
void CsvParser::fill(xoVariant& value, std::string_view text) {
    if (mDialect.guessTypes && variant::readNumber(text, value)) return;
    variant::BorrowedText::put(value, mTexts.add(text));
}

// The end of the input ends a cell that has text, and a row that has a cell.
void CsvParser::finish() {
    if (mCells.back().size != 0) endCell();
    if (mCells.size() > 1) endRow();
    mQuotes = Outside;
}

bool CsvParser::refill(bool& moreInput) {
    moreInput = mUnread != 0;
    if (!mError.empty()) return false;
    // Bytes that the scan has not taken yet come first.
    if (!moreInput || mEnd - mAt >= kLongestSequence) return true;
    makeSpace();
    const auto wanted = static_cast<std::size_t>((std::min<std::uint64_t>)({mCapacity - mEnd, mUnread, kMaxRead}));
    const std::size_t got = mRead(mBuffer.get() + mEnd, wanted);
    // The size was taken at the start: a source that ends before has been cut, or cannot be read.
    if (got == 0) return mError.empty() ? fail("Failed to read the file") : false;
    mUnread -= got;
    mEnd += got;
    // The scan loads whole blocks, so that up to one block behind the end is loaded, and must be initialised.
    std::memset(mBuffer.get() + mEnd, 0, CsvMarks::kBlock);
    mValid += text::utf8Prefix({mBuffer.get() + mValid, mEnd - mValid});
    return true;
}

// Moves the present row to the front of the buffer, or of a larger one when it fills more than half: once for each row,
// and again each time that the row has filled the buffer, so that a long row is moved as often as its size doubles.
void CsvParser::makeSpace() {
    if (mRowBegin == 0 && mEnd < mCapacity) return;
    const std::size_t used = mEnd - mRowBegin;
    const char* const kept = mBuffer.get() + mRowBegin;
    if (mCapacity == 0 || used > mCapacity / 2) {
        const std::uint64_t wanted = (std::max<std::uint64_t>)(mBlockSize, 2 * static_cast<std::uint64_t>(used));
        mCapacity = static_cast<std::size_t>((std::min)(wanted, used + mUnread));
        std::unique_ptr<char[]> larger(new char[mCapacity + CsvMarks::kBlock]);  // make_unique would clear it
        if (used != 0) std::memcpy(larger.get(), kept, used);
        mBuffer = std::move(larger);
    } else if (mRowBegin != 0) {
        std::memmove(mBuffer.get(), kept, used);
    }
    // The cells need no change: their places count from the beginning of the row.
    mAt -= mRowBegin;
    mValid -= mRowBegin;
    mEnd = used;
    mRowBegin = 0;
}

// utfcpp reports the kind of invalid text by its exceptions, also for a sequence that is cut off by the end of the
// text.
bool CsvParser::failAtMalformed() {
    const char* at = mBuffer.get() + mAt;
    try {
        utf8::next(at, static_cast<const char*>(mBuffer.get() + mEnd));
    } catch (const utf8::invalid_code_point& error) {
        return fail(error.what());
    } catch (const utf8::exception&) {
    }
    return fail("Invalid UTF-8");
}

// For a copy of a reader. Copies of variants own their texts, so the table does not depend on the other parser.
void CsvParser::setTable(const Table& table) { mTable = table; }

void CsvParser::clearTable() {
    // After an error no more rows are parsed, so none are kept.
    if (mError.empty()) mSpareRows.swap(mTable);
    mTable.clear();
    mTexts.clear();
}

// The texts last, because the variants refer to them.
void CsvParser::releaseTable() {
    Table().swap(mTable);
    Table().swap(mSpareRows);
    mTexts.release();
}

bool CsvParser::fail(std::string error) {
    mError = std::move(error);
    Table().swap(mSpareRows);
    return false;
}

}  // namespace xo::stream
