// Searching in texts. Case is ignored for ASCII letters only, so that UTF-8 sequences are compared byte by byte.
#include <algorithm>

#include "text/ascii.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {

// compare() limits the size to that of the text, so that a text shorter than the prefix is simply unequal.
bool xoStringUtils::StartsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

bool xoStringUtils::endsWith(const std::string& text, const std::string& suffix) {
    if (suffix.size() > text.size()) return false;
    return text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

std::size_t xoStringUtils::FindCaseSensitive(const std::string& text, const std::string& what) {
    return text.find(what);
}

std::size_t xoStringUtils::FindCaseInsensitive(const std::string& text, const std::string& what) {
    // In the worst case the time is proportional to the product of the sizes.
    const auto same = [](char a, char b) { return text::toLower(a) == text::toLower(b); };
    const auto found = std::search(text.begin(), text.end(), what.begin(), what.end(), same);
    // An empty text is found at the start, which is also the end where the searched text is empty.
    if (found == text.end() && !what.empty()) return std::string::npos;
    return static_cast<std::size_t>(found - text.begin());
}

bool xoStringUtils::Contains(const std::string& text, const std::string& what, bool caseSensitive) {
    const std::size_t found = caseSensitive ? FindCaseSensitive(text, what) : FindCaseInsensitive(text, what);
    return found != std::string::npos;
}

bool xoStringUtils::parseBool(const char* text) {
    if (!text) return false;
    const std::string_view word = text::trimmed(text);
    const auto isWord = [&](std::string_view spelling) { return text::equalIgnoringCase(word, spelling); };
    return isWord("1") || isWord("true") || isWord("yes") || isWord("on");
}

}  // namespace xo
