// Dividing texts at a separator.
#include <algorithm>
#include <cstring>

#include "xoSystem/xoStringUtils.h"

namespace xo {
namespace {

// The number of pieces of a text that is not empty. Reserving that many saves the vector from moving its strings while
// it grows. If empty pieces count and the text ends with a separator, the number is one too large.
std::size_t countPieces(const std::string& text, char sep, bool skipEmpty) {
    if (!skipEmpty) return static_cast<std::size_t>(std::count(text.begin(), text.end(), sep)) + 1;
    std::size_t starts = text[0] != sep ? 1 : 0;
    for (std::size_t i = 1; i < text.size(); ++i) starts += text[i - 1] == sep && text[i] != sep ? 1 : 0;
    return starts;
}

}  // namespace

std::vector<std::string> xoStringUtils::Split(const std::string& text, char sep, bool skipEmpty) {
    std::vector<std::string> pieces;
    if (text.empty()) return pieces;
    pieces.reserve(countPieces(text, sep, skipEmpty));
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at < end;) {
        const char* const stop = std::find(at, end, sep);
        if (stop != at || !skipEmpty) pieces.emplace_back(at, static_cast<std::size_t>(stop - at));
        at = stop + 1;  // at most one behind the NUL that ends the string, so the pointer is valid
    }
    return pieces;
}

std::vector<std::string>& xoStringUtils::Split(const std::string& text, char sep, std::vector<std::string>& out,
                                               bool skipEmpty) {
    out = Split(text, sep, skipEmpty);  // built as a new vector, because the text may be an element of out
    return out;
}

// Divides the text in place: each separator becomes a NUL, and the pieces point into the caller's buffer. A separator
// at the end is not followed by an empty piece.
std::vector<char*>& xoStringUtils::Split(char* text, char sep, std::vector<char*>& out) {
    out.clear();
    while (text && *text) {
        out.push_back(text);
        text = std::strchr(text, sep);
        if (text && *text) *text++ = '\0';
    }
    return out;
}

bool xoStringUtils::SplitFirst(const std::string& text, char sep, std::string& first, std::string& second) {
    const std::size_t found = text.find(sep);
    // Both results are complete before either output is written, because an output may be the text itself.
    std::string rest = found == std::string::npos ? std::string() : text.substr(found + 1);
    std::string start = text.substr(0, found);
    first = std::move(start);
    second = std::move(rest);
    return found != std::string::npos;
}

}  // namespace xo
