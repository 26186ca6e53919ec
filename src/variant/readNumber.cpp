#include "variant/readNumber.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "text/ascii.h"
#include "text/numberText.h"

namespace xo::variant {
namespace {

// Most texts that are no numbers can be recognised by their first character, without an attempt to parse them.
bool mayStartNumber(char c) {
    return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == ',' || text::isSpace(c);
}

// A decimal comma counts as a point. Most texts with one fit the buffer, so that they need no allocation.
bool readReal(std::string_view text, double& value) {
    if (text.find(',') == std::string_view::npos) return text::parseReal(text, value);
    constexpr std::size_t kUsualSize = 64;
    char buffer[kUsualSize];
    std::string longBuffer;
    char* withPoints = buffer;
    if (text.size() > kUsualSize) {
        longBuffer.resize(text.size());
        withPoints = longBuffer.data();
    }
    std::replace_copy(text.begin(), text.end(), withPoints, ',', '.');
    return text::parseReal({withPoints, text.size()}, value);
}

}  // namespace

bool readNumber(std::string_view text, xoVariant& number) {
    // The parsers read an empty text as 0, so it becomes the INTEGER 0.
    if (!text.empty() && !mayStartNumber(text.front())) return false;
    std::int64_t integer = 0;
    double real = 0.0;
    // Integers first: the text of an integer is also one of a real number, which would lose digits beyond 2^53.
    if (text::parseInteger(text, integer)) {
        number = integer;
    } else if (readReal(text, real)) {
        number = real;
    } else {
        return false;
    }
    return true;
}

}  // namespace xo::variant
