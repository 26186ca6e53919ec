// Parsers for the texts of amounts: bytes, counts, durations, quantities with prefixes, and plain real numbers. Each
// leaves its output unchanged when it fails.
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "text/amounts.h"
#include "text/ascii.h"
#include "text/decimal.h"
#include "xoSystem/xoMathUtils.h"

namespace xo {
namespace {

using text::DecimalText;

constexpr std::uint64_t kEnd = (std::numeric_limits<std::uint64_t>::max)();  // the largest value, not one behind it

// Removes a minus from the start; false if there is none.
bool takeMinus(std::string_view& text) {
    if (text.empty() || text.front() != '-') return false;
    text.remove_prefix(1);
    return true;
}

void skipSpaces(std::string_view& text) {
    while (!text.empty() && text::isSpace(text.front())) text.remove_prefix(1);
}

bool startsWith(std::string_view text, std::string_view start) { return text.substr(0, start.size()) == start; }

// ---- Bytes.

// A decimal fraction below 1, exact to 72 digits, to be multiplied by up to 2^60 or 10^18. The product is a tie only if
// the fraction is a multiple of 2^-61 or of 5 * 10^-19, and so has at most 61 digits. Of the digits beyond 72 it is
// therefore enough to know whether one of them is not 0.
class Fraction {
public:
    explicit Fraction(std::string_view digits) {
        for (; mUsed != mGroups.size() && !digits.empty(); ++mUsed) {
            const std::string_view group = digits.substr(0, kGroupDigits);
            std::uint64_t& value = mGroups[mUsed];
            text::toInteger(group, value);
            for (std::size_t i = group.size(); i != kGroupDigits; ++i) value *= 10;
            digits.remove_prefix(group.size());
        }
        if (digits.find_first_not_of('0') != std::string_view::npos) mGroups.back() |= 1;  // breaks a tie
    }

    // Multiplies by a factor of up to 16, and returns the integer part.
    std::uint64_t takeTimes(std::uint64_t factor) {
        std::uint64_t carry = 0;
        for (std::size_t i = mUsed; i-- != 0;) {
            const std::uint64_t product = mGroups[i] * factor + carry;
            carry = product / kGroupEnd;
            mGroups[i] = product % kGroupEnd;
        }
        return carry;
    }

    bool isZero() const {
        for (const std::uint64_t group : mGroups)
            if (group != 0) return false;
        return true;
    }

private:
    static constexpr std::size_t kGroupDigits = 18;
    static constexpr std::uint64_t kGroupEnd = 1000000000000000000;  // 16 times that has 64 bits

    std::array<std::uint64_t, 4> mGroups{};  // the most significant first, each below kGroupEnd
    std::size_t mUsed = 0;                   // the groups behind are 0
};

// number * base^power, rounded to the nearest integer, a tie to the even one. The base is 1000 or 1024; with the power
// 0 it does not matter. False, with the result unchanged, beyond 64 bits.
bool scale(const DecimalText& number, unsigned base, int power, std::uint64_t& result) {
    std::uint64_t whole = 0;
    if (!text::toInteger(number.whole, whole)) return false;
    Fraction fraction(number.fraction);
    // Small factors keep the product of a group of digits within 64 bits.
    const int steps = base == 1024 ? power * 5 : power * 3;  // 1024 is 4 to the fifth power
    const unsigned factor = base == 1024 ? 4 : 10;
    for (int i = 0; i != steps; ++i) {
        if (whole > kEnd / factor) return false;
        whole *= factor;
        const std::uint64_t added = fraction.takeTimes(factor);
        if (whole > kEnd - added) return false;
        whole += added;
    }
    // Twice the rest is 1 or more from one half up. A tie is rounded to the even number.
    const bool isHalf = fraction.takeTimes(2) != 0;
    if (isHalf && (!fraction.isZero() || whole % 2 != 0)) {
        if (whole == kEnd) return false;
        ++whole;
    }
    result = whole;
    return true;
}

// Whether the word is the unit of bytes, which may be omitted.
bool isBytes(std::string_view word) {
    return word.empty() || text::equalIgnoringCase(word, "b") || text::equalIgnoringCase(word, "byte") ||
           text::equalIgnoringCase(word, "bytes");
}

// ---- Durations.

struct TimeUnit {
    std::string_view names[6];  // unused places are empty
    std::uint64_t size;         // in units of 10^exponent seconds
    int exponent;
};

// From large to small, which readUnits relies on.
constexpr TimeUnit kTimeUnits[] = {
    {{"w", "week", "weeks"}, 604800, 0},
    {{"d", "day", "days"}, 86400, 0},
    {{"h", "hr", "hrs", "hour", "hours"}, 3600, 0},
    {{"m", "min", "mins", "minute", "minutes"}, 60, 0},
    {{"s", "sec", "secs", "second", "seconds"}, 1, 0},
    {{"ms"}, 1, -3},
    {{"us", "\xC2\xB5s", "\xCE\xBCs"}, 1, -6},
    {{"ns"}, 1, -9},
};

// Both micro signs, U+00B5 and the Greek letter U+03BC, mean microseconds: keyboards and tools write either.
const TimeUnit* findTimeUnit(std::string_view name) {
    for (const TimeUnit& unit : kTimeUnits)
        for (const std::string_view known : unit.names)
            if (!known.empty() && text::equalIgnoringCase(name, known)) return &unit;
    return nullptr;
}

// Bytes from 0x80 up belong to the micro signs; any other such name is then unknown.
bool isUnitByte(char c) { return text::isLetter(c) || static_cast<unsigned char>(c) >= 0x80; }

std::string_view takeUnitName(std::string_view& text) {
    std::size_t size = 0;
    while (size != text.size() && isUnitByte(text[size])) ++size;
    const std::string_view name = text.substr(0, size);
    text.remove_prefix(size);
    return name;
}

// A sum of decimal numbers, exact while it fits 64 bits, and a double from then on. The exact sum is rounded only once,
// so that "1 min 0.1 s" is the double nearest to 60.1.
class DecimalSum {
public:
    // Adds number * size * 10^exponent. False if the result is out of range; the sum must not be used then.
    bool add(const DecimalText& number, std::uint64_t size, int exponent) {
        if (mIsExact && addExactly(number, size, exponent)) return true;
        mValue = value();
        mIsExact = false;
        double added = 0;
        if (!text::toReal(number, exponent, added)) return false;
        mValue += added * static_cast<double>(size);
        return std::isfinite(mValue);
    }

    double value() const {
        if (!mIsExact) return mValue;
        if (mExponent == 0) return static_cast<double>(mDigits);
        // Read from text, which rounds once; a cast followed by a division would round twice.
        char digits[24];
        const char* const end = std::to_chars(digits, digits + sizeof digits, mDigits).ptr;
        double value = 0;
        text::toReal({{digits, static_cast<std::size_t>(end - digits)}, {}}, mExponent, value);
        return value;
    }

private:
    // False, with the value unchanged, beyond 64 bits.
    static bool multiply(std::uint64_t& value, std::uint64_t factor) {
        if (factor != 0 && value > kEnd / factor) return false;
        value *= factor;
        return true;
    }

    // Multiplies by 10^places. False, with the value undefined, beyond 64 bits.
    static bool shift(std::uint64_t& value, int places) {
        for (; places > 0; --places)
            if (!multiply(value, 10)) return false;
        return true;
    }

    // False, with the sum unchanged, if the new sum does not fit.
    bool addExactly(const DecimalText& number, std::uint64_t size, int exponent) {
        std::uint64_t value = 0, added = 0;
        // Zeros at the end of the fraction would only use up digits.
        const std::string_view fraction = number.fraction.substr(0, number.fraction.find_last_not_of('0') + 1);
        if (fraction.size() > 18 || !text::toInteger(number.whole, value)) return false;
        const int places = static_cast<int>(fraction.size());
        if (!text::toInteger(fraction, added) || !shift(value, places) || value > kEnd - added) return false;
        value += added;
        exponent -= places;
        if (!multiply(value, size)) return false;
        // Both summands are brought to the smaller exponent.
        const int least = exponent < mExponent ? exponent : mExponent;
        std::uint64_t sum = mDigits;
        if (!shift(value, exponent - least) || !shift(sum, mExponent - least) || value > kEnd - sum) return false;
        mDigits = sum + value;
        mExponent = least;
        return true;
    }

    bool mIsExact = true;
    std::uint64_t mDigits = 0;  // times 10^mExponent
    int mExponent = 0;
    double mValue = 0;
};

// "2:03:09.5". The last number is seconds, however many there are. A point is allowed there only.
bool readClock(std::string_view text, DecimalSum& sum) {
    constexpr std::uint64_t kSizes[] = {3600, 60, 1};
    std::size_t colons = 0;
    for (const char c : text) colons += c == ':' ? 1 : 0;
    if (colons > 2) return false;
    for (std::size_t left = colons + 1; left-- != 0;) {  // left: how many numbers follow this one
        DecimalText number;
        if (!text::takeDecimal(text, number) || number.whole.empty()) return false;
        if (left != 0) {
            if (text.empty() || text.front() != ':' || number.hasPoint) return false;
            text.remove_prefix(1);
        }
        std::uint64_t whole = 0;
        // Only the first number may be 60 or more: "90:00" are 90 minutes.
        if (left != colons && (!text::toInteger(number.whole, whole) || whole >= 60)) return false;
        if (!sum.add(number, kSizes[2 - left], 0)) return false;
    }
    return text.empty();
}

// "90", which is seconds, or "2 h 03 min".
bool readUnits(std::string_view text, DecimalSum& sum) {
    const TimeUnit* last = nullptr;
    for (bool isFirst = true; isFirst || !text.empty(); isFirst = false) {
        DecimalText number;
        if (!text::takeDecimal(text, number)) return false;
        skipSpaces(text);
        if (isFirst && text.empty()) return sum.add(number, 1, 0);
        const TimeUnit* const unit = findTimeUnit(takeUnitName(text));
        // Units must become smaller, and none may occur twice. The table is in that order, so comparing the places in
        // it is enough.
        if (unit == nullptr || (last != nullptr && unit <= last)) return false;
        if (!sum.add(number, unit->size, unit->exponent)) return false;
        last = unit;
        skipSpaces(text);
        // Only the last number may have a fraction.
        if (!text.empty() && number.hasPoint) return false;
    }
    return true;
}

// ---- Quantities.

// The power of 1000 that a suffix means, which is a prefix, the unit or both. False for any other suffix.
bool readPrefix(std::string_view suffix, std::string_view unit, int& prefix) {
    prefix = 0;
    // Before the prefixes: a letter that could be a prefix or the unit is the unit.
    if (suffix.empty() || suffix == unit) return true;
    const auto isPrefix = [&](std::string_view name) {
        return startsWith(suffix, name) && (suffix.size() == name.size() || suffix.substr(name.size()) == unit);
    };
    for (prefix = text::kLeastPrefix; prefix <= text::kMostPrefix; ++prefix)
        // The text of prefix 0 is empty and would match anything.
        if (prefix != 0 && isPrefix(text::kPrefixes[prefix - text::kLeastPrefix])) return true;
    // Spellings that are not SI but common: the capital K, and u or the Greek letter for the micro sign.
    prefix = 1;
    if (isPrefix("K")) return true;
    prefix = -2;
    return isPrefix("u") || isPrefix("\xCE\xBC");
}

}  // namespace

bool xoMathUtils::ParseBytes(std::string_view text, std::uint64_t& bytes, xoByteUnit unit) {
    text = text::trimmed(text);
    DecimalText number;
    if (!text::takeDecimal(text, number)) return false;
    skipSpaces(text);
    if (isBytes(text)) return scale(number, 10, 0, bytes);

    constexpr std::string_view kPrefixes = "kmgtpe";
    // isBytes has accepted an empty text, so there is a first character.
    const std::size_t prefix = kPrefixes.find(text::toLower(text.front()));
    if (prefix == std::string_view::npos) return false;
    text.remove_prefix(1);
    unsigned base = unit == ByteUnitDecimal ? 1000 : 1024;
    if (!text.empty() && text::toLower(text.front()) == 'i') {
        base = 1024;
        text.remove_prefix(1);
    }
    return isBytes(text) && scale(number, base, static_cast<int>(prefix) + 1, bytes);
}

bool xoMathUtils::ParseCount(std::string_view text, std::int64_t& value, char separator) {
    text = text::trimmed(text);
    const bool isNegative = takeMinus(text);
    const std::size_t firstGroup = separator != '\0' ? text.find(separator) : std::string_view::npos;
    if (text.empty() || firstGroup == 0 || (firstGroup != std::string_view::npos && firstGroup > 3)) return false;
    const std::uint64_t limit = (std::uint64_t{1} << 63) - (isNegative ? 0 : 1);  // of the magnitude
    std::uint64_t magnitude = 0;
    for (std::size_t i = 0; i != text.size(); ++i) {
        if (firstGroup != std::string_view::npos && i >= firstGroup && (i - firstGroup) % 4 == 0) {
            // Behind the first separator every group has exactly three digits, so each fourth place is a separator.
            if (text[i] != separator || text.size() - i < 4) return false;
            continue;
        }
        if (!text::isDigit(text[i])) return false;
        const auto digit = static_cast<unsigned>(text[i] - '0');
        if (magnitude > (limit - digit) / 10) return false;
        magnitude = magnitude * 10 + digit;
    }
    value = static_cast<std::int64_t>(isNegative ? 0 - magnitude : magnitude);
    return true;
}

bool xoMathUtils::ParseDuration(std::string_view text, double& seconds) {
    text = text::trimmed(text);
    const bool isNegative = takeMinus(text);
    DecimalSum sum;
    const bool isClock = text.find(':') != std::string_view::npos;
    if (!(isClock ? readClock(text, sum) : readUnits(text, sum))) return false;
    seconds = isNegative ? -sum.value() : sum.value();
    return true;
}

bool xoMathUtils::ParseSi(std::string_view text, double& value, std::string_view unit) {
    text = text::trimmed(text);
    const bool isNegative = takeMinus(text);
    DecimalText number;
    if (!text::takeDecimal(text, number)) return false;
    skipSpaces(text);
    int prefix = 0;
    double read = 0;
    if (!readPrefix(text, text::trimmed(unit), prefix) || !text::toReal(number, 3 * prefix, read)) return false;
    value = isNegative ? -read : read;
    return true;
}

bool xoMathUtils::ParseReal(std::string_view text, double& value) {
    text = text::trimmed(text);
    const bool isNegative = takeMinus(text);
    if (!isNegative && startsWith(text, "+")) text.remove_prefix(1);
    double read = 0;
    if (text::equalIgnoringCase(text, "inf") || text::equalIgnoringCase(text, "infinity")) {
        read = std::numeric_limits<double>::infinity();
    } else if (text::equalIgnoringCase(text, "nan")) {
        read = std::numeric_limits<double>::quiet_NaN();
    } else {
        // std::from_chars would take a second minus and its own spellings of infinity and NaN.
        if (text.empty() || !(text::isDigit(text.front()) || text.front() == '.')) return false;
        const char* const end = text.data() + text.size();
        const auto result = std::from_chars(text.data(), end, read);
        if (result.ec != std::errc() || result.ptr != end) return false;
    }
    value = isNegative ? -read : read;
    return true;
}

}  // namespace xo
