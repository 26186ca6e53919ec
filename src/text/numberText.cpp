#include "text/numberText.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "text/ascii.h"

namespace xo::text {
namespace {

// Skips white space and takes a sign; the rest must begin with the number itself.
const char* skipToDigits(const char* at, const char* end, bool& negative) {
    while (at != end && isSpace(*at)) ++at;
    negative = at != end && *at == '-';
    return at != end && (*at == '-' || *at == '+') ? at + 1 : at;
}

int digitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : 16;
}

bool startsHexadecimal(const char* at, const char* end) {
    return end - at > 2 && at[0] == '0' && (at[1] | 0x20) == 'x' && digitValue(at[2]) < 16;
}

bool startsDecimal(const char* at, const char* end) {
    const auto isDigit = [&](const char* p) { return p < end && *p >= '0' && *p <= '9'; };
    return isDigit(at) || (at < end && *at == '.' && isDigit(at + 1));
}

// from_chars leaves the value alone when it is out of range; the exponent's sign, or else where the digits stand, tells
// which end of the range was missed.
double nearestEnd(const char* at, const char* end) {
    bool digitsBeforePoint = false;
    for (; at != end && (*at | 0x20) != 'e'; ++at) {
        if (*at == '.') {
            for (++at; at != end && (*at | 0x20) != 'e'; ++at) {
            }
            break;
        }
        digitsBeforePoint = digitsBeforePoint || *at != '0';
    }
    const bool tiny = at != end ? at + 1 != end && at[1] == '-' : !digitsBeforePoint;
    return tiny ? 0.0 : std::numeric_limits<double>::infinity();
}

}  // namespace

bool parseInteger(std::string_view text, std::int64_t& value) {
    value = 0;
    const char* const end = text.data() + text.size();
    bool negative = false;
    const char* at = skipToDigits(text.data(), end, negative);
    if (at == end) return text.empty();

    unsigned base = 10;
    if (startsHexadecimal(at, end)) {
        base = 16;
        at += 2;
    } else if (*at == '0') {
        base = 8;
    }

    constexpr auto kMax = static_cast<std::uint64_t>((std::numeric_limits<std::int64_t>::max)());
    const std::uint64_t limit = negative ? kMax + 1 : kMax;
    // Chosen so that no digit costs a division.
    const std::uint64_t lastWhole = base == 10 ? limit / 10 : limit / base;
    const std::uint64_t lastDigit = limit - lastWhole * base;
    const char* const first = at;
    std::uint64_t magnitude = 0;
    for (; at != end; ++at) {
        const auto digit = static_cast<unsigned>(digitValue(*at));
        if (digit >= base) break;
        const bool fits = magnitude < lastWhole || (magnitude == lastWhole && digit <= lastDigit);
        magnitude = fits ? magnitude * base + digit : limit;
    }
    value = static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude);
    return at != first && at == end;
}

bool parseReal(std::string_view text, double& value) {
    value = 0.0;
    const char* const end = text.data() + text.size();
    bool negative = false;
    const char* const at = skipToDigits(text.data(), end, negative);
    if (at == end) return text.empty();
    if (!startsDecimal(at, end)) return false;

    const auto [stop, error] = std::from_chars(at, end, value);
    if (error == std::errc::result_out_of_range) value = nearestEnd(at, stop);
    if (negative) value = -value;
    return stop == end;
}

char* printReal(char* out, double value, int precision, int room) {
    if (std::isnan(value)) value = std::fabs(value);  // its sign means nothing, and a stream prints none
    return std::to_chars(out, out + room, value, std::chars_format::general, precision).ptr;
}

}  // namespace xo::text
