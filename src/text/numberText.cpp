// Reading and printing numbers. The common cases have fast paths; std::to_chars and std::from_chars do the rest.
#include "text/numberText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "text/ascii.h"

namespace xo::text {
namespace {

// Skips white space and one sign. The number must follow directly.
const char* skipToDigits(const char* at, const char* end, bool& negative) {
    while (at != end && isSpace(*at)) ++at;
    negative = at != end && *at == '-';
    return at != end && (*at == '-' || *at == '+') ? at + 1 : at;
}

// "0x" without a digit behind it is the octal number 0 and a rest, as strtoll reads it.
bool startsHexadecimal(const char* at, const char* end) {
    return end - at > 2 && at[0] == '0' && (at[1] | 0x20) == 'x' && digitValue(at[2]) < 16;
}

bool startsDecimal(const char* at, const char* end) {
    const auto isDigit = [&](const char* p) { return p < end && *p >= '0' && *p <= '9'; };
    return isDigit(at) || (at < end && *at == '.' && isDigit(at + 1));
}

// The exponent that begins behind the 'e', or one far beyond those of a double.
std::int64_t readExponent(const char* at, const char* end) {
    constexpr std::int64_t kFar = std::int64_t{1} << 62;
    if (at != end && *at == '+') ++at;
    std::int64_t exponent = 0;
    if (std::from_chars(at, end, exponent).ec == std::errc::result_out_of_range) return *at == '-' ? -kFar : kFar;
    return std::clamp(exponent, -kFar, kFar);
}

// std::from_chars does not change the value when the number is out of range. The decimal exponent of the first digit
// that is not 0 shows whether the number is too large or too small.
double nearestEnd(const char* at, const char* end) {
    std::int64_t power = 0;
    bool isBehindPoint = false;
    bool isBehindZeros = false;
    for (; at != end && (*at | 0x20) != 'e'; ++at) {
        if (*at == '.') {
            isBehindPoint = true;
            continue;
        }
        isBehindZeros = isBehindZeros || *at != '0';
        if (isBehindZeros && !isBehindPoint) ++power;
        if (!isBehindZeros && isBehindPoint) --power;
    }
    if (at != end) power += readExponent(at + 1, end);
    return power < 0 ? 0.0 : std::numeric_limits<double>::infinity();
}

// The powers of ten that a double holds exactly.
constexpr double kTens[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                            1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

constexpr std::size_t kSpan = 16;  // more than a Rounded has digits

// A value rounded to a few decimal digits, the first of which is worth 10^exponent.
struct Rounded {
    std::uint32_t digits;
    int exponent;
};

double scaleByTens(double value, int power) { return power < 0 ? value / kTens[-power] : value * kTens[power]; }

// Of a normal number that is not negative.
int binaryExponent(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return static_cast<int>(bits >> 52) - 1023;
}

// Rounds by one multiplication or division. Returns false if the value is so close to a tie that the error of that
// operation could change the digits.
//
// The error: the power of ten is at most 10^17 or 10^-14 and so exact, and a correctly rounded operation is off by at
// most 2^-53 of its result (Goldberg, "What every computer scientist should know about floating-point arithmetic",
// theorem 2). The result is below 10^9, so that it is off by less than 1.2e-7. The rest after the integer part is
// exact: it has no more bits than the result. Only a rest within that error of 0.5 can round to the wrong side, and
// kDoubt is eight times as wide. An error across an integer does no harm, because both sides round to that integer.
bool roundQuickly(double magnitude, int precision, Rounded& rounded) {
    constexpr double kLeast = 1e-9;
    constexpr double kEnd = 1e15;
    constexpr double kDoubt = 1e-6;
    constexpr int kMostDigits = 9;
    if (!(magnitude >= kLeast && magnitude < kEnd) || precision < 1 || precision > kMostDigits) return false;

    int exponent = binaryExponent(magnitude) * 1233 >> 12;  // times log10(2): exact, or one too low
    double scaled = scaleByTens(magnitude, precision - 1 - exponent);
    if (scaled >= kTens[precision]) {
        ++exponent;
        scaled = scaleByTens(magnitude, precision - 1 - exponent);
    }
    auto digits = static_cast<std::uint32_t>(scaled);
    const double rest = scaled - digits;
    if (std::fabs(rest - 0.5) < kDoubt) return false;
    if (rest > 0.5) ++digits;
    const bool isCarried = digits == static_cast<std::uint32_t>(kTens[precision]);
    rounded = {isCarried ? digits / 10 : digits, isCarried ? exponent + 1 : exponent};
    return true;
}

// Always copies kSpan bytes: a copy of constant size needs no call, and every buffer has that many.
char* append(char* out, const char* text, int count) {
    std::memcpy(out, text, kSpan);
    return out + count;
}

// The format "%g": without trailing zeros, and with an exponent for large and small numbers.
char* printRounded(char* out, Rounded rounded, int precision) {
    char digits[2 * kSpan] = {};
    std::to_chars(digits, digits + kSpan, rounded.digits);
    int count = precision;
    while (count > 1 && digits[count - 1] == '0') --count;

    const int exponent = rounded.exponent;
    if (exponent < -4 || exponent >= precision) {
        *out++ = digits[0];
        if (count > 1) *out++ = '.';
        out = append(out, digits + 1, count - 1);
        *out++ = 'e';
        *out++ = exponent < 0 ? '-' : '+';
        *out++ = static_cast<char>('0' + std::abs(exponent) / 10);
        *out++ = static_cast<char>('0' + std::abs(exponent) % 10);
        return out;
    }
    if (exponent < 0) return append(append(out, "0.00000000000000", 1 - exponent), digits, count);
    const int whole = exponent + 1;
    out = append(out, digits, whole);
    if (count <= whole) return out;
    *out++ = '.';
    return append(out, digits + whole, count - whole);
}

}  // namespace

bool parseInteger(const char* text, const char* end, std::int64_t& value) {
    value = 0;
    bool negative = false;
    const char* at = skipToDigits(text, end, negative);
    if (at == end) return text == end;

    unsigned base = 10;
    if (startsHexadecimal(at, end)) {
        base = 16;
        at += 2;
    } else if (*at == '0') {
        base = 8;
    }

    constexpr auto kMax = static_cast<std::uint64_t>((std::numeric_limits<std::int64_t>::max)());
    const std::uint64_t limit = negative ? kMax + 1 : kMax;
    // Computed before the loop, so that the test for an overflow needs no division at each digit. Dividing by the
    // literal 10 needs none either: the compiler multiplies instead.
    const std::uint64_t lastWhole = base == 10 ? limit / 10 : limit / base;
    const std::uint64_t lastDigit = limit - lastWhole * base;
    const char* const first = at;
    std::uint64_t magnitude = 0;
    for (; at != end; ++at) {
        const auto digit = digitValue(*at);
        if (digit >= base) break;
        // Beyond the limit the value stays there, and the remaining digits are still read: they belong to the number.
        const bool fits = magnitude < lastWhole || (magnitude == lastWhole && digit <= lastDigit);
        magnitude = fits ? magnitude * base + digit : limit;
    }
    value = static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude);
    return at != first && at == end;
}

bool parseReal(const char* text, const char* end, double& value) {
    value = 0.0;
    bool negative = false;
    const char* const at = skipToDigits(text, end, negative);
    if (at == end) return text == end;
    if (!startsDecimal(at, end)) return false;

    // White space and the sign were skipped above, because std::from_chars takes neither white space nor a plus.
    const auto [stop, error] = std::from_chars(at, end, value);
    if (error == std::errc::result_out_of_range) value = nearestEnd(at, stop);
    if (negative) value = -value;
    return stop == end;
}

bool roundShortly(double value, int count, char* digits, int& exponent) {
    Rounded rounded{};
    if (!roundQuickly(value, count, rounded)) return false;
    std::to_chars(digits, digits + count, rounded.digits);
    exponent = rounded.exponent;
    return true;
}

char* printReal(char* out, double value, int precision, int capacity) {
    Rounded rounded{};
    if (roundQuickly(std::fabs(value), precision, rounded)) {
        if (value < 0) *out++ = '-';
        return printRounded(out, rounded, precision);
    }
    if (std::isnan(value)) return std::copy_n("nan", 3, out);  // std::to_chars may add a sign or the kind of NaN
    return std::to_chars(out, out + capacity, value, std::chars_format::general, precision).ptr;
}

}  // namespace xo::text
