// Changes of texts in place.
#include <algorithm>
#include <limits>

#include "platform/windows.h"
#include "text/ascii.h"
#include "text/blocks.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {
namespace {

// Like text.find, but searches for the first byte sixteen bytes at a time. what is not empty, from at most the size.
std::size_t findText(const std::string& text, const std::string& what, std::size_t from) {
    if (text.size() < what.size()) return std::string::npos;
    const char* const last = text.data() + (text.size() - what.size()) + 1;  // behind the last place where it fits
    for (const char* at = text.data() + from; at < last; ++at) {
        at = text::findByte(at, last, what[0]);
        if (at == last) break;
        if (std::equal(what.begin(), what.end(), at)) return static_cast<std::size_t>(at - text.data());
    }
    return std::string::npos;
}

std::size_t findText(const std::wstring& text, const std::wstring& what, std::size_t from) {
    return text.find(what, from);
}

// Texts of the same length are replaced in place. Otherwise the result is built in a new text: moving the rest at each
// replacement would take quadratic time.
template <class Text>
std::size_t replaceAll(Text& text, const Text& from, const Text& to) {
    if (from.empty()) return 0;
    std::size_t found = findText(text, from, 0);
    if (found == Text::npos) return 0;

    std::size_t count = 0;
    const std::size_t length = from.size();
    if (length == to.size()) {
        for (; found != Text::npos; found = findText(text, from, found + length), ++count)
            text.replace(found, length, to);
        return count;
    }
    Text result;
    result.reserve(text.size());
    std::size_t copied = 0;
    for (; found != Text::npos; found = findText(text, from, copied), ++count) {
        result.append(text, copied, found - copied).append(to);
        copied = found + length;
    }
    result.append(text, copied);
    text = std::move(result);
    return count;
}

}  // namespace

std::string& xoStringUtils::trim(std::string& text) {
    // The end first, so that fewer characters move to the front.
    rtrim(text);
    return ltrim(text);
}

std::string& xoStringUtils::ltrim(std::string& text) {
    const auto first = std::find_if_not(text.begin(), text.end(), text::isSpace);
    text.erase(text.begin(), first);
    return text;
}

std::string& xoStringUtils::rtrim(std::string& text) {
    while (!text.empty() && text::isSpace(text.back())) text.pop_back();
    return text;
}

std::string& xoStringUtils::trimAndRemoveConsecutiveSpaces(std::string& text) {
    auto out = text.begin();  // never behind the character that is read, so the text is overwritten in place
    bool afterSpace = true;   // at the start, so that leading white space goes
    for (const char c : text) {
        const bool space = text::isSpace(c);
        if (!space || !afterSpace) *out++ = space ? ' ' : c;
        afterSpace = space;
    }
    text.erase(out, text.end());
    return rtrim(text);
}

std::string& xoStringUtils::replace(std::string& text, const std::string& from, const std::string& to) {
    replaceAll(text, from, to);
    return text;
}

std::wstring& xoStringUtils::replace(std::wstring& text, const std::wstring& from, const std::wstring& to) {
    replaceAll(text, from, to);
    return text;
}

int xoStringUtils::ReplaceAllOccurences(std::string& text, const std::string& from, const std::string& to) {
    constexpr std::size_t kMost = (std::numeric_limits<int>::max)();
    return static_cast<int>((std::min)(replaceAll(text, from, to), kMost));
}

std::string& xoStringUtils::toUpper(std::string& text) {
    std::transform(text.begin(), text.end(), text.begin(), text::toUpper);
    return text;
}

std::string& xoStringUtils::toLower(std::string& text) {
    std::transform(text.begin(), text.end(), text.begin(), text::toLower);
    return text;
}

void xoStringUtils::SecureClear(std::string& text) {
    text.resize(text.capacity());  // bytes of an earlier, longer content may be behind the end
    // A compiler may remove an ordinary fill of memory that is not read again:
    // https://learn.microsoft.com/previous-versions/windows/desktop/legacy/aa366877(v=vs.85)
    ::SecureZeroMemory(text.data(), text.size());
    text.clear();
}

}  // namespace xo
