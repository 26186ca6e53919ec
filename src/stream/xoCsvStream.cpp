// Writes cells as delimited text: https://www.rfc-editor.org/rfc/rfc4180
#include "xoSystem/xoCsvStream.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <exception>
#include <limits>

#include "text/blocks.h"
#include "text/numberText.h"
#include "xoSystem/xoIoDeviceBase.h"

namespace xo {
namespace {

template <class Word>
Word loadWord(const char* at) {
    Word word = 0;
    std::memcpy(&word, at, sizeof word);
    return word;
}

// A block with all bytes of a text of 4 to 16 bytes, some of them twice.
__m128i loadShort(const char* data, std::size_t size) {
    if (size >= 8) return _mm_set_epi64x(loadWord<std::int64_t>(data), loadWord<std::int64_t>(data + size - 8));
    const std::int32_t last = loadWord<std::int32_t>(data + size - 4);
    return _mm_set_epi32(loadWord<std::int32_t>(data), last, last, last);
}

// An index stays at its maximum. If it wrapped to 0, a separator or a line end would be left out.
void count(unsigned int& index) {
    if (index != (std::numeric_limits<unsigned int>::max)()) ++index;
}

}  // namespace

xoCsvStream::xoCsvStream(xoIoDevice* device, char separator, char quote, const std::string& endOfLine)
    : mEndOfLine(endOfLine), mDevice(device), mSeparator(separator), mQuote(quote) {}

void xoCsvStream::setDevice(xoIoDevice* device) {
    mDevice = device;
    mRowIndex = 0;
    mColumnIndex = 0;
    mOk = true;
    std::vector<char>().swap(mEscaped);  // frees what a long cell has taken
}

template <class Integer>
xoCsvStream& xoCsvStream::writeInteger(Integer value) {
    char digits[std::numeric_limits<Integer>::digits10 + 2];  // the last digit and the sign
    const char* const end = std::to_chars(digits, std::end(digits), value).ptr;
    writeCell(digits, static_cast<std::size_t>(end - digits));
    return *this;
}

xoCsvStream& xoCsvStream::operator<<(bool value) { return *this << (value ? "true" : "false"); }

xoCsvStream& xoCsvStream::operator<<(char value) { return writeInteger(static_cast<int>(value)); }

xoCsvStream& xoCsvStream::operator<<(unsigned char value) { return writeInteger(static_cast<int>(value)); }

xoCsvStream& xoCsvStream::operator<<(short value) { return writeInteger(value); }

xoCsvStream& xoCsvStream::operator<<(unsigned short value) { return writeInteger(value); }

xoCsvStream& xoCsvStream::operator<<(int value) { return writeInteger(value); }

xoCsvStream& xoCsvStream::operator<<(unsigned int value) { return writeInteger(value); }

xoCsvStream& xoCsvStream::operator<<(std::int64_t value) { return writeInteger(value); }

xoCsvStream& xoCsvStream::operator<<(std::uint64_t value) { return writeInteger(value); }

xoCsvStream& xoCsvStream::operator<<(float value) { return *this << static_cast<double>(value); }

xoCsvStream& xoCsvStream::operator<<(double value) {
    constexpr int kDigits = 3;  // part of the format: docs/formats.md
    char text[text::kRealCapacity];
    writeCell(text, static_cast<std::size_t>(text::printReal(text, value, kDigits) - text));
    return *this;
}

xoCsvStream& xoCsvStream::operator<<(const std::string& text) {
    writeCell(text);
    return *this;
}

// A null pointer writes no cell, not an empty one.
xoCsvStream& xoCsvStream::operator<<(const char* text) {
    if (text) writeCell(text, std::strlen(text));
    return *this;
}

xoCsvStream& xoCsvStream::operator<<(EndOfRow) {
    if (!mDevice) {
        mOk = false;
        return *this;
    }
    count(mRowIndex);
    mColumnIndex = 0;
    return *this;
}

// Separator, quotes and text are written by calls of their own: a device that counts calls, or fails, sees them so.
void xoCsvStream::writeCell(const char* data, std::size_t size) {
    if (!mOk || !mDevice) {
        mOk = false;
        return;
    }
    if (mColumnIndex != 0) {
        write(&mSeparator, 1);
        // A line end is written in front of the first cell of the next row, so that none follows the last row.
    } else if (mRowIndex != 0) {
        write(mEndOfLine.data(), mEndOfLine.size());
    }
    count(mColumnIndex);
    if (size == 0) return;
    if (!isMarked(data, size)) {
        write(data, size);
        return;
    }
    try {
        escape(data, size);
    } catch (const std::exception&) {  // std::bad_alloc or std::length_error
        mOk = false;                   // so the calls below write nothing
    }
    write(&mQuote, 1);
    write(mEscaped.data(), mEscaped.size());
    write(&mQuote, 1);
}

// Writes unless an error occurred before. The flag is stored only after an error: the members beside it are loaded for
// each cell, and a load that overlaps a store before it waits for that store.
void xoCsvStream::write(const char* data, std::size_t size) {
    if (mOk && mDevice->writeBytes(data, size) != size) mOk = false;
}

// Whether the cell holds a separator or a quote character.
// A line break alone does not count, although RFC 4180 encloses such a cell in quotes too.
bool xoCsvStream::isMarked(const char* data, std::size_t size) const {
    if (size < 4) return std::any_of(data, data + size, [this](char c) { return c == mSeparator || c == mQuote; });
    const auto isMarkedBlock = [separator = _mm_set1_epi8(mSeparator), quote = _mm_set1_epi8(mQuote)](__m128i bytes) {
        return text::topBits(_mm_or_si128(_mm_cmpeq_epi8(bytes, separator), _mm_cmpeq_epi8(bytes, quote))) != 0;
    };
    if (size <= text::kBlock) return isMarkedBlock(loadShort(data, size));
    const char* const last = data + size - text::kBlock;
    for (; data < last; data += text::kBlock)
        if (isMarkedBlock(text::loadBlock(data))) return true;
    // Overlaps the block before it, so that nothing behind the text is loaded.
    return isMarkedBlock(text::loadBlock(last));
}

// Copies the cell with each quote character doubled.
void xoCsvStream::escape(const char* data, std::size_t size) {
    constexpr std::size_t kUsualQuotes = 8;  // so many quotes need no further allocation
    mEscaped.clear();
    mEscaped.reserve(size + kUsualQuotes);
    const char* const end = data + size;
    for (;;) {
        const char* const quote = text::findByte(data, end, mQuote);
        mEscaped.insert(mEscaped.end(), data, quote);
        if (quote == end) return;
        mEscaped.insert(mEscaped.end(), 2, mQuote);
        data = quote + 1;
    }
}

}  // namespace xo
