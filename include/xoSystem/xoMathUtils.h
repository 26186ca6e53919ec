// xoMathUtils: numbers as people write and read them: sizes, counts, durations, quantities with a unit, percentages.
//
//     xo::xoMathUtils::BytesToText(1468006);                  // "1.40 MiB"
//     xo::xoMathUtils::CountToText(1234567);                  // "1,234,567"
//     xo::xoMathUtils::DurationToText(7380);                  // "2 h 03 min"
//     xo::xoMathUtils::SiToText(12.3e-6, "F");                // "12.3 uF" with the micro sign
//     std::uint64_t limit = 0;
//     if (!xo::xoMathUtils::ParseBytes(typed, limit)) complain();     // "1.5 MiB", "250Mi", "10 mb"
//
// Texts are in the classic locale, with a full stop in front of decimals. The exact value is rounded to the nearest, a
// tie to the even digit. The prefix or unit is chosen after rounding, so neither "1000 kB" nor "60 s" occurs. A blank
// precedes every unit. A value that rounds to zero has no sign. A value that is not finite is "nan", "inf" or "-inf"
// with the base unit: "inf s".
//
// Each parser reads what its counterpart writes, given the same unit and separator, if the value is finite, in range
// and, for bytes, not negative. It reads more: white space may surround the text and separate number and unit. If a
// parser cannot read the whole text, it returns false and does not change its target. Numbers are digits with at most
// one point; "0.1 kB" is exactly 100.
//
// All functions may be called from any thread at any time. Nothing throws except std::bad_alloc.
#ifndef XOSYSTEM_XOMATHUTILS_H
#define XOSYSTEM_XOMATHUTILS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "xoSystem/xoExport.h"

namespace xo {

template <class E>
class xoEnumList;

class XOSYSTEM_API xoMathUtils {
public:
    // What the prefixes of bytes mean. Any other number is ByteUnitBinary.
    enum xoByteUnit : int {
        ByteUnitBinary = 0,   // KiB, MiB ... of 1024
        ByteUnitDecimal = 1,  // kB, MB ... of 1000
        ByteUnitWindows = 2,  // KB, MB ... of 1024, as in the Explorer
    };

    xoMathUtils() = delete;

    // ---- Texts. digits is the number of significant digits, from 1 to 17; any other number means the nearest of
    // these. Trailing zeros are kept, and all digits in front of the point are shown: "1023 KiB".

    // "0 B", "1023 B", "1.00 KiB", "-3.00 MiB", up to "16.0 EiB".
    template <class Integer>
    static std::string BytesToText(Integer bytes, xoByteUnit unit = ByteUnitBinary, int digits = 3) {
        return printBytes(magnitudeOf(bytes), isNegative(bytes), unit, digits);
    }

    // With the separator between groups of three digits, or without groups when that is 0: "-1,234,567".
    template <class Integer>
    static std::string CountToText(Integer value, char separator = ',') {
        return printCount(magnitudeOf(value), isNegative(value), separator);
    }

    // For reading: "14.2 ns", "42.1 s", "2 min 05 s", "2 h 03 min", "3 d 04 h", from 1000 days on "1000 d". Below a
    // minute with three significant digits.
    static std::string DurationToText(double seconds);
    // As on a clock: "0:17", "2:03:09", "100:00:00", with up to 9 decimals "0:17.25".
    static std::string DurationToClock(double seconds, int decimals = 0);

    // With a prefix from q (10^-30) to Q (10^30): "1.50 kHz", "12.3 uF" with the micro sign U+00B5, "1.00 M" without a
    // unit; 0 is "0 V". Values beyond these prefixes have the last one, with all digits in front of the point.
    static std::string SiToText(double value, std::string_view unit = {}, int digits = 3);

    // "47 %" for the fraction 0.4711, or with one of up to 17 decimals "47.1 %".
    static std::string PercentToText(double fraction, int decimals = 0);

    // "1230", "0.00012", "2.00"; scientific, "1.00e+20", below 1e-5 and from 1e15 on. 0 is "0".
    static std::string SignificantToText(double value, int digits);

    // The shortest text that ParseReal reads back as the same value: "0.1", "-0"; scientific, "1e+22", below 1e-4 and
    // from 1e16 on. For a float, the shortest text that is read back as the same float.
    static std::string RealToText(double value);
    static std::string RealToText(float value);
    template <class Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
    static std::string RealToText(Integer value) {
        return RealToText(static_cast<double>(value));
    }

    // ---- Parsers.

    // "10", "10 B", "1.5MiB", "250Mi", "10 mb", "2 bytes", in any case. With an "i" a prefix is of 1024; without, of
    // 1000 for ByteUnitDecimal and of 1024 otherwise. The result is rounded to whole bytes. False for bits, for a
    // negative number and for one beyond 2^64 - 1.
    static bool ParseBytes(std::string_view text, std::uint64_t& bytes, xoByteUnit unit = ByteUnitDecimal);

    // A decimal number with "-" or nothing in front, in groups of three digits or without; with the separator 0, groups
    // are not accepted. False for a number beyond 64 bits.
    static bool ParseCount(std::string_view text, std::int64_t& value, char separator = ',');

    // "90" (seconds), "2h 3m", "1h30m", "1.5 h", "14.2ms", "3 days 4 hours", "2:03:09", "0:17.2", with "-" or nothing
    // in front. Units, in any case and with a plural s: ns, us (also with U+00B5), ms, s sec second, m min minute, h hr
    // hour, d day, w week; each once, the larger first, a fraction in the last number alone. In the form of a clock all
    // numbers but the first are below 60.
    static bool ParseDuration(std::string_view text, double& seconds);

    // "1.5 kHz", "12.3uF", "-5". K too is 1000, and u, U+00B5 and U+03BC are 10^-6; otherwise case counts. The unit may
    // be omitted. A letter that could be a prefix or the unit is the unit: "5 m" with the unit "m" is 5. False for a
    // number out of range.
    static bool ParseSi(std::string_view text, double& value, std::string_view unit = {});

    // Also with "+" in front and an exponent; "inf", "infinity" and "nan" in any case; not hexadecimal. False for a
    // number out of range, such as 1e999 and 1e-999.
    static bool ParseReal(std::string_view text, double& value);

private:
    template <class Integer>
    static constexpr bool isNegative(Integer value) {
        static_assert(std::is_integral_v<Integer>, "bytes and counts are integers");
        if constexpr (std::is_signed_v<Integer>) return value < 0;
        return static_cast<void>(value), false;
    }
    template <class Integer>
    static constexpr std::uint64_t magnitudeOf(Integer value) {
        const auto bits = static_cast<std::uint64_t>(value);
        return isNegative(value) ? 0 - bits : bits;
    }
    static std::string printBytes(std::uint64_t bytes, bool isNegative, xoByteUnit unit, int digits);
    static std::string printCount(std::uint64_t value, bool isNegative, char separator);
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoMathUtils::xoByteUnit> xoEnumEntries(xoMathUtils::xoByteUnit);

}  // namespace xo

#endif
