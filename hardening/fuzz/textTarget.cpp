// Splitting, replacing and hexadecimal digits, against the standard library's slow ways. An input is a text, what is
// replaced and what it is replaced by, with a byte 1E between them.
#include <algorithm>

#include "fuzz.h"
#include "xoSystem/xoStringUtils.h"

namespace xo::fuzz {
namespace {

using Pieces = std::vector<std::string>;

std::string shown(const Pieces& pieces) {
    std::string text;
    for (const std::string& piece : pieces) text += '<' + piece + '>';
    return text;
}

void checkSplitting(const std::string& text) {
    Pieces all, out = {"left over"};
    std::istringstream stream(text);
    for (std::string piece; std::getline(stream, piece, ',');) all.push_back(piece);
    Pieces filled = all;
    filled.erase(std::remove(filled.begin(), filled.end(), ""), filled.end());
    require(xoStringUtils::Split(text, ',') == all, shown(xoStringUtils::Split(text, ',')), ", not ", shown(all));
    const Pieces found = xoStringUtils::Split(text, ',', true);
    require(found == filled && found.capacity() == found.size(), shown(found), ", not ", shown(filled));
    require(&xoStringUtils::Split(text, ',', out, true) == &out && out == filled, shown(out), ", into a vector");
    require(xoStringUtils::Split(text, ',', out) == all, shown(out), ", into a vector");

    std::string changed = text;
    std::vector<char*> pointers{nullptr};
    xoStringUtils::Split(changed.data(), ',', pointers);
    const Pieces inPlace(pointers.begin(), pointers.end());
    require(text.find('\0') != std::string::npos || inPlace == all, shown(inPlace), ", in place");
}

void checkReplacing(const std::string& text, const std::string& from, const std::string& to) {
    std::string expected, actual = text;
    std::size_t at = 0;
    for (std::size_t found = 0; !from.empty() && (found = text.find(from, at)) != std::string::npos;
         at = found + from.size())
        expected.append(text, at, found - at).append(to);
    expected.append(text, at);
    require(xoStringUtils::replace(actual, from, to) == expected, actual, ", not ", expected);
}

void checkHexadecimal(const std::string& bytes) {
    std::string expected, hex = "left over", back = "left over";
    for (const char c : bytes) expected += {"0123456789abcdef"[(c & 0xFF) / 16], "0123456789abcdef"[c & 15]};
    xoStringUtils::ToHex(bytes.data(), bytes.size(), hex);
    require(hex == expected, hex, ", not ", expected);
    require(xoStringUtils::FromHex(hex.data(), hex.size(), back) && back == bytes, "there and back");
    xoStringUtils::toUpper(hex);
    require(xoStringUtils::FromHex(hex.data(), hex.size(), hex) && hex == bytes, "onto itself");
    xoStringUtils::ToHex(hex.data(), hex.size(), hex);
    require(hex == expected, "onto itself: ", hex);
}

void checkTexts(const std::string& input) {
    Bytes bytes(input);
    const std::string text = bytes.until('\x1E'), from = bytes.until('\x1E');
    checkSplitting(text);
    checkReplacing(text, from, bytes.rest());
    checkHexadecimal(input);
}

std::string generateTexts(Random& random) {
    static const std::vector<std::string_view> pieces = {"a",  "b",  "c",    "ab", ",",
                                                         ",,", "\n", "\xC3", " ",  "0123456789"};
    static const std::vector<std::string_view> letters = {"a", "b", "c"};
    return random.join(pieces, random.oneIn(2) ? 6 : 60) + '\x1E' + random.join(letters, 3) + '\x1E' +
           random.join(letters, 3);
}

}  // namespace

const Target kTexts = {"texts", 50000, &generateTexts, &checkTexts};

}  // namespace xo::fuzz
