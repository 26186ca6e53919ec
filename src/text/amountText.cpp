// Texts of bytes, counts, quantities with prefixes, percentages and plain real numbers, for xoMathUtils. All rounding
// happens on exact values: of integers by division with remainder, of doubles by their decimal digits.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>

#include "text/amounts.h"
#include "text/decimal.h"
#include "text/numberText.h"
#include "xoSystem/xoMathUtils.h"

namespace xo {
namespace {

using text::Digits;
using text::printNotFinite;

// The largest number of significant digits: 17 tell any two doubles apart, and as an integer they fit 64 bits.
constexpr int kMostDigits = 17;

int withinDigits(int digits) { return (std::max)(1, (std::min)(digits, kMostDigits)); }

// 0 has none: in a number below 1 the significant digits begin behind the point.
int countDigits(std::uint64_t value) {
    int count = 0;
    for (; value != 0; value /= 10) ++count;
    return count;
}

// A non-negative number rounded to some decimals.
struct Fixed {
    std::uint64_t whole;
    std::uint64_t fraction;  // the decimals as an integer
    int decimals;
};

// dividend / divisor with so many significant digits, or more if the integer part has more; a tie is rounded to the
// even digit. The divisor is at most 2^60, so that ten times a remainder fits 64 bits.
Fixed divide(std::uint64_t dividend, std::uint64_t divisor, int digits) {
    Fixed result{dividend / divisor, 0, 0};
    std::uint64_t rest = dividend % divisor;
    const int wholeDigits = countDigits(result.whole);
    result.decimals = (std::max)(0, digits - wholeDigits);
    std::uint64_t end = 1;  // 10^decimals, which the fraction may reach by rounding
    for (int i = 0; i != result.decimals; ++i) {
        rest *= 10;
        end *= 10;
        result.fraction = result.fraction * 10 + rest / divisor;
        rest %= divisor;
    }
    const std::uint64_t last = result.decimals != 0 ? result.fraction : result.whole;
    if (rest > divisor - rest || (rest == divisor - rest && last % 2 != 0)) {
        if (result.decimals == 0 || ++result.fraction == end) {
            result.fraction = 0;
            ++result.whole;
        }
        // 9.996 with three digits is 10.0, not 10.00. The fraction is 0 then, so dropping a decimal changes nothing.
        if (result.decimals != 0 && countDigits(result.whole) != wholeDigits) --result.decimals;
    }
    return result;
}

char* printFixed(char* out, char* end, const Fixed& number) {
    out = std::to_chars(out, end, number.whole).ptr;
    if (number.decimals == 0) return out;
    *out++ = '.';
    std::uint64_t rest = number.fraction;  // written from the last decimal on, with its leading zeros
    for (int i = number.decimals; i-- != 0; rest /= 10) out[i] = static_cast<char>('0' + rest % 10);
    return out + number.decimals;
}

char* append(char* out, std::string_view text) { return std::copy(text.begin(), text.end(), out); }

std::string withUnit(const char* begin, const char* end, std::string_view prefix, std::string_view unit) {
    std::string text;
    text.reserve(static_cast<std::size_t>(end - begin) + 1 + prefix.size() + unit.size());
    text.assign(begin, end);
    if (!prefix.empty() || !unit.empty()) text += ' ';
    return text.append(prefix).append(unit);
}

// exponent / 3 rounded down, where the division of C++ rounds towards 0.
int floorOfThird(int exponent) { return exponent >= 0 ? exponent / 3 : -((2 - exponent) / 3); }

}  // namespace

std::string xoMathUtils::printBytes(std::uint64_t bytes, bool isNegative, xoByteUnit unit, int digits) {
    const std::uint64_t base = unit == ByteUnitDecimal ? 1000 : 1024;
    char buffer[64];
    char* out = buffer;
    if (isNegative) *out++ = '-';
    if (bytes < base) {
        out = append(std::to_chars(out, std::end(buffer), bytes).ptr, " B");
        return {buffer, out};
    }
    constexpr std::string_view kPrefixes = "KMGTPE";  // 2^64 bytes are 16 EiB, so no more are needed
    std::uint64_t divisor = base;
    std::size_t prefix = 0;
    while (prefix + 1 != kPrefixes.size() && bytes / divisor >= base) {
        divisor *= base;
        ++prefix;
    }
    Fixed number = divide(bytes, divisor, withinDigits(digits));
    if (number.whole >= base && prefix + 1 != kPrefixes.size()) {  // rounded up to the next prefix
        ++prefix;
        number = divide(bytes, divisor * base, withinDigits(digits));
    }
    out = printFixed(out, std::end(buffer), number);
    *out++ = ' ';
    // The SI prefix of 1000 is a small letter; the binary prefix and Windows use the capital one.
    *out++ = prefix == 0 && unit == ByteUnitDecimal ? 'k' : kPrefixes[prefix];
    if (unit != ByteUnitDecimal && unit != ByteUnitWindows) *out++ = 'i';
    *out++ = 'B';
    return {buffer, out};
}

std::string xoMathUtils::printCount(std::uint64_t value, bool isNegative, char separator) {
    char digits[20];  // 2^64 - 1 has as many
    const char* const end = std::to_chars(digits, std::end(digits), value).ptr;
    char buffer[32];  // the digits, 6 separators and the sign
    char* out = buffer;
    if (isNegative) *out++ = '-';
    for (const char* at = digits; at != end; ++at) {
        if (separator != '\0' && at != digits && (end - at) % 3 == 0) *out++ = separator;
        *out++ = *at;  // NOLINT(clang-analyzer-core.uninitialized.Assign): to_chars has written up to the end
    }
    return {buffer, out};
}

bool text::printNotFinite(double value, std::string_view unit, std::string& text) {
    const std::string_view name = notFiniteText(value);
    if (name.empty()) return false;
    text = name;
    if (!unit.empty()) text.append(" ").append(unit);
    return true;
}

char* text::printWithPrefix(char* out, double value, int digits, int leastPrefix, int mostPrefix, int& prefix) {
    // Up to three digits precede the point, and all of them are shown whatever the number of digits. So the prefix is
    // chosen with at least three: 995 with one digit is "995", not "1 k".
    Digits number;
    text::roundToDigits(value, (std::max)(digits, 3), number);
    prefix = (std::max)(leastPrefix, (std::min)(floorOfThird(number.exponent), mostPrefix));
    const int wholeDigits = number.exponent - 3 * prefix + 1;
    int wanted = (std::max)(digits, wholeDigits);
    // Fewer digits may round 99.6 up to 100, but never reach the next prefix.
    if (wanted != number.count) text::roundToDigits(value, wanted, number);
    // More digits may show that three were rounded up: of a value beyond the last prefix, which is shown with all whole
    // digits, the last of them is then a decimal.
    if (wanted > digits && number.exponent - 3 * prefix + 1 < wanted) text::roundToDigits(value, --wanted, number);
    number.exponent -= 3 * prefix;  // divides exactly
    return text::printPlain(out, number);
}

std::string xoMathUtils::SiToText(double value, std::string_view unit, int digits) {
    std::string notFinite;
    if (printNotFinite(value, unit, notFinite)) return notFinite;
    char buffer[text::kPlainCapacity];
    char* out = buffer;
    int prefix = 0;
    if (value == 0) {  // has no first digit, by which the prefix is chosen
        *out++ = '0';
    } else {
        if (value < 0) *out++ = '-';
        out = text::printWithPrefix(out, std::fabs(value), withinDigits(digits), text::kLeastPrefix, text::kMostPrefix,
                                    prefix);
    }
    return withUnit(buffer, out, text::kPrefixes[prefix - text::kLeastPrefix], unit);
}

std::string xoMathUtils::PercentToText(double fraction, int decimals) {
    std::string text;
    if (printNotFinite(fraction, "%", text)) return text;
    decimals = (std::max)(0, (std::min)(decimals, kMostDigits));
    char buffer[text::kPlainCapacity];
    // Moving the point in the text multiplies by 100 exactly; multiplying the double could round it. There is always a
    // point, because two decimals more than wanted are printed.
    char* const end =
        std::to_chars(buffer, std::end(buffer), std::fabs(fraction), std::chars_format::fixed, decimals + 2).ptr;
    char* const point = std::find(buffer, end, '.');
    std::memmove(point, point + 1, 2);
    point[2] = '.';
    char* begin = buffer;  // "0.47" has become "047.": the leading zeros are skipped, but for the last whole digit
    while (begin != point + 1 && *begin == '0') ++begin;
    char* const last = decimals == 0 ? point + 2 : end;
    const bool isZero = std::all_of(begin, last, [](char c) { return c == '0' || c == '.'; });
    if (fraction < 0 && !isZero) text = '-';
    return text.append(begin, last).append(" %");
}

std::string xoMathUtils::SignificantToText(double value, int digits) {
    std::string notFinite;
    if (printNotFinite(value, {}, notFinite)) return notFinite;
    if (value == 0) return "0";
    Digits number;
    text::roundToDigits(std::fabs(value), withinDigits(digits), number);
    char buffer[text::kPlainCapacity];
    char* out = buffer;
    if (value < 0) *out++ = '-';
    const bool isPlain = number.exponent >= -5 && number.exponent < 15;  // of the rounded value
    out = isPlain ? text::printPlain(out, number) : text::printScientific(out, number);
    return {buffer, out};
}

namespace {

// For double and float: the digits that a float needs are fewer than those of the double of the same value.
template <class Real>
std::string printShortest(Real value) {
    std::string notFinite;
    if (printNotFinite(static_cast<double>(value), {}, notFinite)) return notFinite;
    char buffer[64];  // the longest texts have 24 characters: "-1.2345678901234567e-308"
    char* out = buffer;
    if (std::signbit(value)) *out++ = '-';  // also of -0, which is to be read back as such
    if (value == 0) {
        *out++ = '0';
        return {buffer, out};
    }
    Digits number;
    text::shortestDigits(std::fabs(value), number);
    const bool isPlain = number.exponent >= -4 && number.exponent < 16;
    out = isPlain ? text::printPlain(out, number) : text::printScientific(out, number);
    return {buffer, out};
}

}  // namespace

std::string xoMathUtils::RealToText(double value) { return printShortest(value); }

std::string xoMathUtils::RealToText(float value) { return printShortest(value); }

}  // namespace xo
