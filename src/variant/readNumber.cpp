#include "variant/numberGuess.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "text/ascii.h"
#include "text/numberText.h"

namespace xo::variant {
namespace {

// Most texts that are no number say so in their first character.
bool mayStartNumber(char c) {
    return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == ',' || text::isSpace(c);
}

bool readReal(std::string_view text, double& value) {
    if (text.find(',') == std::string_view::npos) return text::parseReal(text, value);
    constexpr std::size_t kUsualSize = 64;
    char room[kUsualSize];
    std::string longer;
    char* points = room;
    if (text.size() > kUsualSize) {
        longer.resize(text.size());
        points = longer.data();
    }
    std::replace_copy(text.begin(), text.end(), points, ',', '.');
    return text::parseReal({points, text.size()}, value);
}

}  // namespace

bool readNumber(std::string_view text, xoVariant& number) {
    if (!text.empty() && !mayStartNumber(text.front())) return false;
    std::int64_t integer = 0;
    double real = 0.0;
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
