// Finds the delimiters and line ends in delimited text, sixty-four bytes at a time.
#ifndef XO_STREAM_CSVMARKS_H
#define XO_STREAM_CSVMARKS_H

#include <algorithm>
#include <cstdint>

#include "text/blocks.h"

namespace xo::stream {

class CsvMarks {
public:
    static constexpr std::ptrdiff_t kBlock = 64;

    // A delimiter of 0x80 or above is no character of UTF-8 text. It is replaced by a mark that is searched for anyway.
    CsvMarks(char columnDelimiter, char stringDelimiter)
        : mColumnDelimiter(_mm_set1_epi8(isCharacter(columnDelimiter) ? columnDelimiter : '\n')),
          mStringDelimiter(_mm_set1_epi8(isCharacter(stringDelimiter) ? stringDelimiter : '\n')) {}

    // A bit for each delimiter, line feed and carriage return among the next 64 bytes. Bytes from end on, which is
    // behind at, do not count, but all 64 must be readable.
    std::uint64_t find(const char* at, const char* end) const {
        const std::uint64_t marks = find16(at) | find16(at + text::kBlock) << 16 | find16(at + 2 * text::kBlock) << 32 |
                                    find16(at + 3 * text::kBlock) << 48;
        const std::ptrdiff_t left = end - at;
        return left >= kBlock ? marks : marks & ((std::uint64_t{1} << left) - 1);
    }

private:
    static bool isCharacter(char c) { return static_cast<unsigned char>(c) < 0x80; }

    std::uint64_t find16(const char* at) const {
        const __m128i bytes = text::loadBlock(at);
        const __m128i delimiters =
            _mm_or_si128(_mm_cmpeq_epi8(bytes, mColumnDelimiter), _mm_cmpeq_epi8(bytes, mStringDelimiter));
        const __m128i lineEnds =
            _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('\n')), _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\r')));
        return text::topBits(_mm_or_si128(delimiters, lineEnds));
    }

    __m128i mColumnDelimiter;
    __m128i mStringDelimiter;
};

}  // namespace xo::stream

#endif
