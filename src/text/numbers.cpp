// Numbers as texts with a fixed form, for xoStringUtils.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "text/numberText.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {
namespace {

template <class Integer>
std::string printPadded(Integer value, int width) {
    char digits[std::numeric_limits<Integer>::digits10 + 2];  // the last digit and the sign
    const auto length = static_cast<std::size_t>(std::to_chars(digits, std::end(digits), value).ptr - digits);
    const auto wanted = static_cast<std::size_t>((std::max)(width, 0));
    if (length >= wanted) return {digits, length};

    std::string text;
    text.reserve(wanted);
    return text.append(wanted - length, '0').append(digits, length);
}

}  // namespace

std::string xoStringUtils::fromInt(int value, int width) { return printPadded(value, width); }

std::string xoStringUtils::fromUInt(unsigned value, int width) { return printPadded(value, width); }

std::string xoStringUtils::fromInt64(std::int64_t value, int width) { return printPadded(value, width); }

std::string xoStringUtils::fromUInt64(std::uint64_t value, int width) { return printPadded(value, width); }

std::string xoStringUtils::fromFloat(float value, int precision) {
    return fromFloat(static_cast<double>(value), precision);
}

std::string xoStringUtils::fromFloat(double value, int precision) {
    constexpr int kMostDigits = 767;  // no double has more digits
    constexpr int kCapacity = text::kRealCapacity + kMostDigits;
    char text[kCapacity];
    const int digits = precision < 0 ? 6 : (std::min)(precision, kMostDigits);
    return {text, text::printReal(text, value, digits, kCapacity)};
}

std::string xoStringUtils::roundNumber(double value, unsigned char digits, char decimalPoint, bool keepZeros,
                                       unsigned char integerDigits) {
    if (const std::string_view name = text::notFiniteText(value); !name.empty()) return std::string(name);

    // 309 digits in front of the point, the point and 255 decimals.
    char buffer[std::numeric_limits<double>::max_exponent10 + std::numeric_limits<unsigned char>::max() + 2];
    const auto result = std::to_chars(buffer, std::end(buffer), std::fabs(value), std::chars_format::fixed, digits);
    std::string text(buffer, result.ptr);
    const std::size_t point = (std::min)(text.find('.'), text.size());  // the number of digits in front of it
    // A value that is rounded to 0 loses its sign.
    const bool negative = std::signbit(value) && text.find_first_not_of("0.") != std::string::npos;
    if (point != text.size()) {
        text[point] = decimalPoint;
        if (!keepZeros) text.resize((std::max)(text.find_last_not_of('0'), point) + 1);
        if (text.size() == point + 1) text.pop_back();  // no decimals remain, so neither does the point
    }
    if (point < integerDigits) text.insert(0, integerDigits - point, '0');
    if (negative) text.insert(0, 1, '-');
    return text;
}

}  // namespace xo
