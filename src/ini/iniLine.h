// The lines of an INI file.
#ifndef XO_INI_INILINE_H
#define XO_INI_INILINE_H

#include <cstddef>
#include <string_view>

#include "text/ascii.h"
#include "text/blocks.h"

namespace xo::ini {

// Some editors write it in front of a UTF-8 text: https://www.unicode.org/faq/utf_bom.html#BOM
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

inline bool isEnclosed(std::string_view text, char first, char last) {
    return text.size() >= 2 && text.front() == first && text.back() == last;
}

// The text without its first and last character.
inline std::string_view inner(std::string_view text) { return text.substr(1, text.size() - 2); }

// The first line of a text, which must outlive this object. One pass over its bytes finds its end, its first equals
// sign and whether it has escapes.
class Line {
public:
    enum Kind { Skipped, Section, Key, Invalid };  // skipped are empty lines and comments

    explicit Line(std::string_view from) {
        bool isComplete = false;
        while (!isComplete && from.size() - end >= kBlock) isComplete = scanBlock(from.data() + end);
        for (; end != from.size() && from[end] != '\n'; ++end) {
            if (from[end] == '=' && equals == std::string_view::npos) equals = end;
            if (from[end] == '\\') hasBackslash = true;
        }
        whole = from.substr(0, end);
        trimmed = text::trimmed(whole);
    }

    // A line in brackets is a section even if it has an equals sign. Only a ";" begins a comment; a "#" is part of a
    // key.
    Kind kind() const {
        if (isEnclosed(trimmed, '[', ']')) return Section;
        if (trimmed.empty() || trimmed.front() == ';') return Skipped;
        return equals == std::string_view::npos ? Invalid : Key;
    }

    std::string_view sectionName() const { return inner(trimmed); }                     // of a Section
    std::string_view key() const { return text::trimmed(whole.substr(0, equals)); }     // of a Key; it may be empty
    std::string_view value() const { return text::trimmed(whole.substr(equals + 1)); }  // of a Key

    // Where the next line begins.
    std::size_t next(std::string_view from) const { return end == from.size() ? end : end + 1; }

    std::size_t end = 0;  // of the line, without its line feed
    std::size_t equals = std::string_view::npos;
    bool hasBackslash = false;
    std::string_view whole, trimmed;

private:
    static constexpr std::size_t kBlock = text::kBlock;

    // Moves end over the block, or to the line end in it; returns whether there is one.
    bool scanBlock(const char* at) {
        const __m128i block = text::loadBlock(at);
        const unsigned newlines = text::maskOf(block, '\n');
        // The lowest bit that is set minus 1 has all bits below it; without a line feed the subtraction wraps around to
        // all bits.
        const unsigned inLine = (newlines & (0u - newlines)) - 1;  // the bits below the lowest one, or all
        const unsigned signs = text::maskOf(block, '=') & inLine;
        if (signs != 0 && equals == std::string_view::npos) equals = end + text::lowestBit(signs);
        if ((text::maskOf(block, '\\') & inLine) != 0) hasBackslash = true;
        end += newlines != 0 ? text::lowestBit(newlines) : kBlock;
        return newlines != 0;
    }
};

}  // namespace xo::ini

#endif
