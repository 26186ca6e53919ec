#include <algorithm>
#include <cstring>

#include "xoSystem/xoStringUtils.h"

namespace xo {
namespace {

// No more pieces than this come out, and most often just as many.
std::size_t countPieces(const std::string& text, char sep, bool skipEmpty) {
    const auto separators = static_cast<std::size_t>(std::count(text.begin(), text.end(), sep));
    return skipEmpty ? (std::min)(separators, text.size() / 2) + 1 : separators + 1;
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
        at = stop + 1;
    }
    return pieces;
}

std::vector<std::string>& xoStringUtils::Split(const std::string& text, char sep, std::vector<std::string>& out,
                                               bool skipEmpty) {
    out = Split(text, sep, skipEmpty);  // not filled piece by piece, since the text may be one of its elements
    return out;
}

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
    std::string rest = found == std::string::npos ? std::string() : text.substr(found + 1);
    std::string start = text.substr(0, found);
    first = std::move(start);
    second = std::move(rest);
    return found != std::string::npos;
}

}  // namespace xo
