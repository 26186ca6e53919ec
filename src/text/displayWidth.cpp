// Decodes UTF-8 itself: each code point is needed together with its length, and a broken byte counts as one column
// instead of being an error. Runs of plain ASCII are read sixteen bytes at a time.
#include "text/displayWidth.h"

#include <utility>

#include "text/blocks.h"

namespace xo::text {
namespace {

#include "text/displayWidths.inc"  // constants only; made by displayWidths.awk

constexpr char32_t kBroken = 0xFFFFFFFF;  // beyond all code points
constexpr char32_t kZeroWidthJoiner = 0x200D;
constexpr char32_t kEmojiPresentation = 0xFE0F;

struct CodePoint {
    char32_t value;  // or kBroken, of one byte
    unsigned length;
};

unsigned byteAt(const char* at) { return static_cast<unsigned char>(*at); }

bool isContinuation(unsigned byte) { return (byte & 0xC0) == 0x80; }

// The sequence of more than one byte that starts at a place before end. The bounds of the first and second byte exclude
// overlong sequences, surrogates and values beyond U+10FFFF (table 3-7 of the Unicode standard,
// https://www.unicode.org/versions/Unicode15.0.0/ch03.pdf). Of a broken sequence only the first byte is taken, so that
// a well-formed one behind it is found.
CodePoint decodeLong(const char* at, const char* end) {
    constexpr CodePoint broken{kBroken, 1};
    const std::ptrdiff_t left = end - at;
    const unsigned lead = byteAt(at);
    if (lead < 0xC2 || lead > 0xF4 || left < 2) return broken;
    const unsigned second = byteAt(at + 1);
    if (!isContinuation(second)) return broken;
    if (lead < 0xE0) return {(lead & 0x1F) << 6 | (second & 0x3F), 2};

    if (left < 3 || !isContinuation(byteAt(at + 2))) return broken;
    const unsigned third = byteAt(at + 2) & 0x3F;
    if (lead < 0xF0) {
        if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second >= 0xA0)) return broken;
        return {(lead & 0x0F) << 12 | (second & 0x3F) << 6 | third, 3};
    }
    if (left < 4 || !isContinuation(byteAt(at + 3))) return broken;
    if ((lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second >= 0x90)) return broken;
    return {(lead & 0x07) << 18 | (second & 0x3F) << 12 | third << 6 | (byteAt(at + 3) & 0x3F), 4};
}

CodePoint decode(const char* at, const char* end) {
    const unsigned first = byteAt(at);
    return first < 0x80 ? CodePoint{first, 1} : decodeLong(at, end);
}

// A byte of kProperties: its low two bits are the width, the others are flags such as kEmoji. The table has two stages,
// because most blocks of code points have the same pattern.
unsigned propertiesOf(char32_t code) {
    if (code == kBroken) return 1;
    return kProperties[kPatternOfBlock[code / kBlockSize] * kBlockSize + code % kBlockSize];
}

unsigned widthIn(unsigned properties) { return properties & 3; }

// An ASCII character that has a width.
bool isPlain(char c) { return c >= ' ' && c < '\x7F'; }

bool isRegionalIndicator(char32_t code) { return code >= 0x1F1E6 && code <= 0x1F1FF; }
bool isSkinTone(char32_t code) { return code >= 0x1F3FB && code <= 0x1F3FF; }

// Whether all bytes of the block are ASCII characters that have a width.
bool isPlainBlock(__m128i block) {
    const __m128i isPrinted = _mm_cmpgt_epi8(block, _mm_set1_epi8(' ' - 1));  // bytes from 0x80 up are negative
    const __m128i isDelete = _mm_cmpeq_epi8(block, _mm_set1_epi8('\x7F'));
    return topBits(_mm_andnot_si128(isDelete, isPrinted)) == 0xFFFF;
}

// The first byte that may not be a plain ASCII character, or end.
const char* skipPlainBlocks(const char* at, const char* end) {
    while (end - at >= kBlock && isPlainBlock(loadBlock(at))) at += kBlock;
    return at;
}

// Control characters, the separators of lines and paragraphs (U+2028, U+2029), and the formatting characters that
// change the order in which a text is shown: https://www.unicode.org/reports/tr9/#Directional_Formatting_Characters
bool needsEscape(char32_t code) {
    if (code < 0xA0) return code < 0x20 || code >= 0x7F;
    if (code < 0x2000) return code == 0x061C;
    return code == kBroken || code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

// The first place that needs an escape, or end.
const char* skipPrintable(const char* at, const char* end) {
    for (;;) {
        at = skipPlainBlocks(at, end);
        while (at != end && isPlain(*at)) ++at;
        if (at == end) return at;
        const CodePoint code = decode(at, end);
        if (needsEscape(code.value)) return at;
        at += code.length;
    }
}

void appendHex(std::string& out, unsigned value, int digits) {
    for (int shift = 4 * digits - 4; shift >= 0; shift -= 4) out += "0123456789abcdef"[value >> shift & 0xF];
}

// first is the first byte of the code point, which is shown if that is broken. No code point that needs an escape is
// beyond U+FFFF, so four digits are enough.
void appendEscape(std::string& out, CodePoint code, char first) {
    switch (code.value) {
        case '\n': out += "\\n"; return;
        case '\r': out += "\\r"; return;
        case '\t': out += "\\t"; return;
        default: break;
    }
    if (code.value == kBroken || code.value < 0x100) {
        out += "\\x";
        appendHex(out, code.value == kBroken ? byteAt(&first) : code.value, 2);
    } else {
        out += "\\u";
        appendHex(out, code.value, 4);
    }
}

}  // namespace

// Emoji sequences count as one character: https://www.unicode.org/reports/tr51/#Emoji_Sequences
Cluster nextCluster(const char* at, const char* end) {
    // The usual case. A plain character continues no cluster, so the one before it is complete.
    if (isPlain(*at) && (end - at == 1 || isPlain(at[1]))) return {at + 1, 1};

    CodePoint previous = decode(at, end);
    unsigned properties = propertiesOf(previous.value);
    unsigned width = widthIn(properties);
    const bool hasPictograph = (properties & kPictographic) != 0;
    bool wantsPair = isRegionalIndicator(previous.value);  // two of them are a flag; a third begins another
    at += previous.length;
    while (at != end && !isPlain(*at)) {
        const CodePoint code = decode(at, end);
        const unsigned added = propertiesOf(code.value);
        if (code.value == kEmojiPresentation) {
            if ((properties & kEmoji) != 0) width = 2;  // also of a digit, as in a keycap
        } else if (wantsPair && isRegionalIndicator(code.value)) {
            width = 2;
        } else if (widthIn(added) != 0) {  // begins a new cluster unless it belongs to an emoji sequence
            const bool isJoined = hasPictograph && previous.value == kZeroWidthJoiner && (added & kPictographic) != 0;
            const bool isTone = isSkinTone(code.value) && (properties & kModifierBase) != 0;
            if (!isJoined && !isTone) break;
        }
        wantsPair = false;
        previous = code;
        properties = added;
        at += code.length;
    }
    return {at, width};
}

bool isPlain(std::string_view text) {
    const char* const end = text.data() + text.size();
    const char* at = skipPlainBlocks(text.data(), end);
    while (at != end && isPlain(*at)) ++at;
    return at == end;
}

std::size_t displayWidth(std::string_view text) {
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const char* at = begin;
    std::size_t width = 0;
    while (at != end) {
        const char* const plainEnd = skipPlainBlocks(at, end);
        if (plainEnd != at) {
            // The bytes that follow may belong to the last ASCII character.
            width += static_cast<std::size_t>(plainEnd - at) - 1;
            at = plainEnd - 1;
        }
        // One block character by character, then the fast way is tried again.
        const char* const stop = end - at < kBlock ? end : at + kBlock;
        while (at < stop) {
            if (isPlain(*at) && (end - at == 1 || isPlain(at[1]))) {
                ++width;
                ++at;
                continue;
            }
            const CodePoint code = decode(at, end);
            const unsigned properties = propertiesOf(code.value);
            // Without flags it forms no sequence, so the widths of marks behind it, which are 0, may simply be added.
            if (properties == widthIn(properties)) {
                width += properties;
                at += code.length;
                continue;
            }
            const Cluster cluster = nextCluster(at, end);
            width += cluster.width;
            at = cluster.end;
        }
    }
    return width;
}

void appendPrintable(std::string& out, std::string_view text) {
    const char* at = text.data();
    const char* const end = at + text.size();
    for (;;) {
        const char* const stop = skipPrintable(at, end);
        out.append(at, stop);
        if (stop == end) return;
        const CodePoint code = decode(stop, end);
        appendEscape(out, code, *stop);
        at = stop + code.length;
    }
}

void makePrintable(std::string& text) {
    const char* const end = text.data() + text.size();
    const auto printable = static_cast<std::size_t>(skipPrintable(text.data(), end) - text.data());
    if (printable == text.size()) return;
    std::string escaped(text, 0, printable);
    appendPrintable(escaped, std::string_view(text).substr(printable));
    text = std::move(escaped);
}

std::string_view fittingStart(std::string_view text, std::size_t columns) {
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end) {
        const Cluster cluster = nextCluster(at, end);
        if (cluster.width > columns) break;
        columns -= cluster.width;
        at = cluster.end;
    }
    return text.substr(0, static_cast<std::size_t>(at - text.data()));
}

namespace {

// The longest end of the text, in whole clusters, that is no wider than columns. textWidth is the width of the text.
std::string_view fittingEnd(std::string_view text, std::size_t textWidth, std::size_t columns) {
    const char* at = text.data();
    const char* const end = at + text.size();
    while (textWidth > columns) {
        const Cluster cluster = nextCluster(at, end);
        textWidth -= cluster.width;
        at = cluster.end;
    }
    return text.substr(static_cast<std::size_t>(at - text.data()));
}

}  // namespace

void cutToWidth(std::string& text, std::size_t columns, std::string_view mark, bool inMiddle) {
    const std::size_t width = displayWidth(text);
    if (width <= columns) return;
    const std::size_t markWidth = displayWidth(mark);
    if (markWidth > columns) mark = {};
    const std::size_t available = columns - (mark.empty() ? 0 : markWidth);

    // The end gets what the start leaves: half, rounded up, plus a column that a wide character did not fit into.
    const std::string_view start = fittingStart(text, inMiddle ? available / 2 : available);
    const std::string_view rest = std::string_view(text).substr(start.size());
    const std::size_t startWidth = displayWidth(start);
    const std::string_view last =
        inMiddle ? fittingEnd(rest, width - startWidth, available - startWidth) : std::string_view();
    std::string cut;
    cut.reserve(start.size() + mark.size() + last.size());
    cut.append(start).append(mark).append(last);
    text = std::move(cut);
}

}  // namespace xo::text
