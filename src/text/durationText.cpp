// Durations as texts. Each form is chosen after rounding, so that 59.99 s become "1 min 00 s".
#include <charconv>
#include <cmath>
#include <iterator>

#include "text/amounts.h"
#include "text/decimal.h"
#include "xoSystem/xoMathUtils.h"

namespace xo {
namespace {

constexpr double kMinute = 60;
constexpr double kHour = 60 * kMinute;
constexpr double kDay = 24 * kHour;
constexpr double kWholeEnd = 9007199254740992.0;  // 2^53: from here on every double is an integer

// The value in that unit, rounded to the nearest integer, a tie to the even one. The remainder of std::fmod is exact,
// while value / unit could round a value just beside a tie onto it.
double countUnits(double value, double unit) {
    const double rest = std::fmod(value, unit);
    const double count = std::round((value - rest) / unit);
    const bool isUp = rest > unit - rest || (rest == unit - rest && std::fmod(count, 2) != 0);
    return isUp ? count + 1 : count;
}

// Two digits; the value is below 100.
char* printTwo(char* out, unsigned value) {
    *out++ = static_cast<char>('0' + value / 10);
    *out++ = static_cast<char>('0' + value % 10);
    return out;
}

char* append(char* out, std::string_view text) {
    for (const char c : text) *out++ = c;
    return out;
}

// A whole number, whatever its size: from 2^64 on it does not fit an integer.
char* printWhole(char* out, char* end, double value) {
    if (value < kWholeEnd) return std::to_chars(out, end, static_cast<std::uint64_t>(value)).ptr;
    return std::to_chars(out, end, value, std::chars_format::fixed, 0).ptr;
}

// "2 h 03 min", from a count of the smaller units. The count of the larger ones is below 1000 in all calls.
char* printPair(char* out, unsigned count, unsigned inLarger, std::string_view larger, std::string_view smaller) {
    out = std::to_chars(out, out + 8, count / inLarger).ptr;
    out = printTwo(append(out, larger), count % inLarger);
    return append(out, smaller);
}

// Of a positive finite number of seconds. Where rounding gives the first count of the next form, that form is taken; it
// rounds the seconds again, not the rounded count.
char* printDuration(char* out, char* end, double seconds) {
    if (seconds < kMinute) {
        constexpr int kNanoseconds = -3;
        char* const begin = out;
        int prefix = 0;
        out = text::printWithPrefix(out, seconds, /*digits=*/3, kNanoseconds, /*mostPrefix=*/0, prefix);
        if (prefix != 0 || std::string_view(begin, static_cast<std::size_t>(out - begin)) != "60.0") {
            *out++ = ' ';
            return append(append(out, text::kPrefixes[prefix - text::kLeastPrefix]), "s");
        }
        // It was rounded up to a minute, which has another form.
        out = begin;
    }
    if (seconds < kHour) {
        const double count = countUnits(seconds, 1);
        if (count < 3600) return printPair(out, static_cast<unsigned>(count), 60, " min ", " s");
    }
    if (seconds < kDay) {
        const double count = countUnits(seconds, kMinute);
        if (count < 24 * 60) return printPair(out, static_cast<unsigned>(count), 60, " h ", " min");
    }
    if (seconds < 1000 * kDay) {
        const double count = countUnits(seconds, kHour);
        if (count < 1000 * 24) return printPair(out, static_cast<unsigned>(count), 24, " d ", " h");
    }
    return append(printWhole(out, end, countUnits(seconds, kDay)), " d");
}

}  // namespace

std::string xoMathUtils::DurationToText(double seconds) {
    if (std::string notFinite; text::printNotFinite(seconds, "s", notFinite)) return notFinite;
    if (seconds == 0) return "0 s";
    char buffer[text::kPlainCapacity];
    char* out = buffer;
    if (seconds < 0) *out++ = '-';
    return {buffer, printDuration(out, std::end(buffer), std::fabs(seconds))};
}

std::string xoMathUtils::DurationToClock(double seconds, int decimals) {
    if (std::string notFinite; text::printNotFinite(seconds, {}, notFinite)) return notFinite;
    constexpr int kMostDecimals = 9;
    decimals = decimals < 0 ? 0 : decimals > kMostDecimals ? kMostDecimals : decimals;

    // std::to_chars rounds the exact value, so the fraction is taken from its text.
    char rounded[text::kPlainCapacity];
    const double magnitude = std::fabs(seconds);
    const char* const end =
        std::to_chars(rounded, std::end(rounded), magnitude, std::chars_format::fixed, decimals).ptr;
    const char* const fraction = decimals != 0 ? end - decimals - 1 : end;
    double whole = magnitude;  // which is an integer from kWholeEnd on
    if (magnitude < kWholeEnd) {
        std::uint64_t count = 0;
        std::from_chars(rounded, fraction, count);
        whole = static_cast<double>(count);
    }
    const double inHour = std::fmod(whole, kHour);
    const double hours = std::round((whole - inHour) / kHour);
    const auto minutes = static_cast<unsigned>(inHour / kMinute);

    char buffer[text::kPlainCapacity];
    char* out = buffer;
    bool isZero = whole == 0;  // after rounding: -0.001 is "0:00", without a sign
    for (const char* at = fraction; at != end; ++at) isZero = isZero && (*at == '0' || *at == '.');
    if (seconds < 0 && !isZero) *out++ = '-';
    if (hours != 0) {
        out = printWhole(out, std::end(buffer), hours);
        *out++ = ':';
        out = printTwo(out, minutes);
    } else {
        out = std::to_chars(out, out + 2, minutes).ptr;
    }
    *out++ = ':';
    out = printTwo(out, static_cast<unsigned>(inHour) % 60);
    return {buffer, append(out, {fraction, static_cast<std::size_t>(end - fraction)})};
}

}  // namespace xo
