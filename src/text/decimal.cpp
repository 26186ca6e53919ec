// Decimal digits by std::to_chars and std::from_chars, which are exact and know no locale.
#include "text/decimal.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string>

#include "text/ascii.h"
#include "text/numberText.h"

namespace xo::text {
namespace {

// Reads "1.234e-05", or "1e-05" if there is one digit, as std::to_chars writes them. The sign of the exponent is
// skipped here, because std::from_chars accepts no plus.
void readScientific(const char* at, const char* end, Digits& digits) {
    digits.count = 0;
    for (; *at != 'e'; ++at)
        if (*at != '.') digits.text[digits.count++] = *at;
    ++at;
    const bool isNegative = *at++ == '-';
    std::from_chars(at, end, digits.exponent);
    if (isNegative) digits.exponent = -digits.exponent;
}

// A number is rounded by comparing it with the midpoint between two doubles, and no midpoint has that many significant
// digits. Of the digits beyond, it matters only whether one of them is not 0.
constexpr std::size_t kMostDigits = 800;

// Whether the value could be read as a finite number.
bool isInRange(std::from_chars_result result, double value) { return result.ec == std::errc() && !std::isinf(value); }

}  // namespace

void roundToDigits(double value, int count, Digits& digits) {
    // The fast path, which refuses values that it may round to the wrong side.
    if (roundShortly(value, count, digits.text, digits.exponent)) {
        digits.count = count;
        return;
    }
    char text[Digits::kMost + 16];  // also the point, the "e" and the exponent
    const auto result =
        std::to_chars(text, std::end(text), value, std::chars_format::scientific, (std::min)(count, Digits::kMost) - 1);
    readScientific(text, result.ptr, digits);
}

template <class Real>
void shortestDigits(Real value, Digits& digits) {
    char text[32];
    const auto result = std::to_chars(text, std::end(text), value, std::chars_format::scientific);
    readScientific(text, result.ptr, digits);
}
template void shortestDigits(double value, Digits& digits);
template void shortestDigits(float value, Digits& digits);

char* printPlain(char* out, const Digits& digits) {
    const auto put = [&](const char* from, int count) {
        std::memcpy(out, from, static_cast<std::size_t>(count));
        out += count;
    };
    const int whole = digits.exponent + 1;  // the number of digits in front of the point
    if (whole <= 0) {
        *out++ = '0';
        *out++ = '.';
        std::memset(out, '0', static_cast<std::size_t>(-whole));
        out += -whole;
        put(digits.text, digits.count);
        return out;
    }
    put(digits.text, (std::min)(digits.count, whole));
    if (digits.count > whole) {
        *out++ = '.';
        put(digits.text + whole, digits.count - whole);
    } else {
        std::memset(out, '0', static_cast<std::size_t>(whole - digits.count));
        out += whole - digits.count;
    }
    return out;
}

char* printScientific(char* out, const Digits& digits) {
    *out++ = digits.text[0];
    if (digits.count > 1) *out++ = '.';
    std::memcpy(out, digits.text + 1, static_cast<std::size_t>(digits.count - 1));
    out += digits.count - 1;
    *out++ = 'e';
    *out++ = digits.exponent < 0 ? '-' : '+';
    const int exponent = std::abs(digits.exponent);
    if (exponent < 10) *out++ = '0';  // two digits at least, as the C runtime prints an exponent
    return std::to_chars(out, out + 4, exponent).ptr;
}

bool takeDecimal(std::string_view& text, DecimalText& number) {
    const auto takeDigits = [](std::string_view& from) {
        std::size_t count = 0;
        while (count != from.size() && isDigit(from[count])) ++count;
        const std::string_view digits = from.substr(0, count);
        from.remove_prefix(count);
        return digits;
    };
    std::string_view rest = text;  // replaces the text only once a number is found
    number.whole = takeDigits(rest);
    number.fraction = {};
    number.hasPoint = false;
    if (!rest.empty() && rest.front() == '.') {
        rest.remove_prefix(1);
        number.fraction = takeDigits(rest);
        number.hasPoint = true;
    }
    if (number.whole.empty() && number.fraction.empty()) return false;
    text = rest;
    return true;
}

// Writes the number as "0.digits", with the power of ten behind it, for one call of std::from_chars. Multiplying a
// double by the power of ten instead would round twice.
bool toReal(const DecimalText& number, int exponent, double& value) {
    char local[64];  // avoids an allocation for numbers of usual length
    std::string longer;
    char* text = local;
    // Leading zeros are not counted as digits; those of a fraction reduce the exponent.
    std::string_view whole = number.whole;
    std::string_view fraction = number.fraction;
    while (!whole.empty() && whole.front() == '0') whole.remove_prefix(1);
    long long power = exponent;
    if (whole.empty()) {
        while (!fraction.empty() && fraction.front() == '0') {
            fraction.remove_prefix(1);
            --power;
        }
        if (fraction.empty()) {
            value = 0;
            return true;
        }
    }
    power += static_cast<long long>(whole.size());  // the point moves in front of all digits
    const bool isRestZero = fraction.find_first_not_of('0') == std::string_view::npos;
    if (whole.size() > kMostDigits) {
        // If any omitted digit is not 0, one digit that is not 0 is appended for them.
        const bool isTailZero = whole.find_first_not_of('0', kMostDigits) == std::string_view::npos && isRestZero;
        longer.assign(whole, 0, kMostDigits);
        if (!isTailZero) longer += '1';
        whole = longer;
        fraction = {};
    } else if (whole.size() + fraction.size() > kMostDigits) {
        const std::size_t kept = kMostDigits - whole.size();
        const bool isTailZero = fraction.find_first_not_of('0', kept) == std::string_view::npos;
        longer.assign(fraction, 0, kept);
        if (!isTailZero) longer += '1';
        fraction = longer;
    }

    std::string buffer;
    const std::size_t needed = whole.size() + fraction.size() + 26;  // "0.", "e" and the exponent
    if (needed > sizeof local) {
        buffer.resize(needed);
        text = buffer.data();
    }
    char* out = text;
    *out++ = '0';
    *out++ = '.';
    out = std::copy(whole.begin(), whole.end(), out);
    out = std::copy(fraction.begin(), fraction.end(), out);
    *out++ = 'e';
    out = std::to_chars(out, text + needed, power).ptr;
    double read = 0;
    // The number is not 0 here, so a result of 0 means that it is too small.
    if (!isInRange(std::from_chars(text, out, read), read) || read == 0) return false;
    value = read;
    return true;
}

bool toInteger(std::string_view digits, std::uint64_t& value) {
    value = 0;
    const char* const end = digits.data() + digits.size();
    return digits.empty() || std::from_chars(digits.data(), end, value).ec == std::errc();
}

}  // namespace xo::text
