// Numbers as texts: what is shown is what the standard library rounds to, carries to the next prefix, and is read back
// as the same value; fractions against all denominators. An input is the eight bytes of a number, the highest first,
// and a byte for digits and bounds.
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "fuzz.h"
#include "xoSystem/xoMathUtils.h"
#include "xoSystem/xoStringUtils.h"

namespace xo::fuzz {
namespace {

bool isSame(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// "999.5 kHz": 999; what is in front of the point.
std::uint64_t wholeOf(const std::string& text) { return std::strtoull(text.c_str(), nullptr, 10); }

// Never a whole base in front of a unit that has a next one.
void checkBytes(std::uint64_t value, int digits) {
    for (const auto unit : {xoMathUtils::ByteUnitBinary, xoMathUtils::ByteUnitDecimal, xoMathUtils::ByteUnitWindows}) {
        const std::string text = xoMathUtils::BytesToText(value, unit, digits);
        const unsigned base = unit == xoMathUtils::ByteUnitDecimal ? 1000 : 1024;
        require(text.find('E') != std::string::npos || wholeOf(text) < base, "shown as ", text);
        std::uint64_t read = 0;
        const double tolerance = static_cast<double>(value) * std::pow(10.0, 1 - digits);
        if (!xoMathUtils::ParseBytes(text, read, unit)) {
            require(static_cast<double>(value) + tolerance >= 18446744073709551616.0, text, " is not read back");
            continue;
        }
        const std::uint64_t off = read < value ? value - read : read - value;
        require(static_cast<double>(off) <= tolerance, value, " as ", text);
    }
}

void checkCount(std::int64_t value) {
    std::int64_t read = 0;
    const std::string text = xoMathUtils::CountToText(value);
    require(xoMathUtils::ParseCount(text, read) && read == value, value, " as ", text);
}

void checkReal(double value, int digits) {
    double read = 0;
    const std::string shortest = xoMathUtils::RealToText(value);
    require(xoMathUtils::ParseReal(shortest, read) && isSame(read, value), "read back as ", read, " from ", shortest);
    const auto narrow = static_cast<float>(value);
    if (std::isfinite(narrow))
        require(xoMathUtils::ParseReal(xoMathUtils::RealToText(narrow), read) && static_cast<float>(read) == narrow,
                "the float ", narrow);

    // Not by printf, which rounds ties up before Windows 10 2004:
    // https://learn.microsoft.com/cpp/c-runtime-library/reference/printf-printf-l-wprintf-wprintf-l
    char text[512];
    *std::to_chars(text, std::end(text), value, std::chars_format::scientific, digits - 1).ptr = '\0';
    const double rounded = std::strtod(text, nullptr);
    const bool isRead = xoMathUtils::ParseReal(xoMathUtils::SignificantToText(value, digits), read);
    require(isRead == std::isfinite(rounded) && (!isRead || read == rounded), "rounded to ", read, ", not ", rounded);

    *std::to_chars(text, std::end(text), value, std::chars_format::general, digits).ptr = '\0';
    require(xoStringUtils::fromFloat(value, digits) == text, xoStringUtils::fromFloat(value, digits), ", not ", text);
}

void checkAmount(double value, int digits) {
    double read = 0;
    const std::string si = xoMathUtils::SiToText(value, "Hz", digits);
    require(xoMathUtils::ParseSi(si, read, "Hz") && xoMathUtils::SiToText(read, "Hz", digits) == si, "shown as ", si);
    require(si.find('Q') != std::string::npos || wholeOf(si) < 1000, "shown as ", si);

    const std::string duration = xoMathUtils::DurationToText(value);
    require(duration.find("60") == std::string::npos || duration.find(" min") == std::string::npos || value > 3600,
            "shown as ", duration);
    for (const std::string& text :
         {xoMathUtils::DurationToText(-value), xoMathUtils::DurationToClock(value, digits % 10)}) {
        require(xoMathUtils::ParseDuration(text, read), text, " is not read back");
        require(text == xoMathUtils::DurationToText(read) || text == xoMathUtils::DurationToClock(read, digits % 10),
                text, " is read as ", read);
    }
}

void checkFraction(double value, int bound) {
    std::int64_t numerator = 0, denominator = 0;
    const bool isFound = xoStringUtils::computeFractionnalRepresentation(value, numerator, denominator, bound);
    require(isFound && denominator >= 1 && denominator <= bound, value, " over ", denominator);
    const double missed = std::fabs(value - static_cast<double>(numerator) / static_cast<double>(denominator));
    for (int other = 1; other <= bound; ++other)
        require(missed <= std::fabs(value - std::round(value * other) / other) + 1e-15, value, " over ", denominator);
}

void checkNumbers(const std::string& input) {
    Bytes bytes(input);
    std::uint64_t bits = 0;
    for (int i = 0; i != 8; ++i) bits = bits << 8 | bytes.byte();
    const unsigned choice = bytes.byte();
    const int digits = 1 + static_cast<int>(choice % 17);
    checkBytes(bits, digits);
    checkCount(static_cast<std::int64_t>(bits));
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    if (std::isfinite(value)) checkReal(value, digits);
    const auto whole = static_cast<double>(bits >> 11);
    checkAmount(std::ldexp(whole, static_cast<int>(choice % 141) - 130), digits);
    checkFraction(std::ldexp(3 * whole, -53), 1 + static_cast<int>(choice % 200));
}

// Any bits, numbers around powers, or reals around those where decimal digits turn over.
std::uint64_t generateBits(Random& random) {
    if (random.oneIn(3)) return random.next();
    if (random.oneIn(2)) {
        const std::uint64_t base = random.oneIn(2) ? 1024 : 1000;
        std::uint64_t power = 1;
        for (std::size_t i = random.below(7); i != 0; --i) power *= base;
        const std::uint64_t parts[] = {power, 20, 200, 2000, 20000, 2000000};
        const std::uint64_t off = power / parts[random.below(6)] + random.below(60);
        return random.oneIn(2) ? power + off : power - off;
    }
    const double power = std::pow(10.0, static_cast<int>(random.below(28)) - 11);
    double value = static_cast<double>(random.below(random.oneIn(2) ? 4000 : 4000000000)) * power;
    if (random.oneIn(3)) value += 0.5 * power;
    if (random.oneIn(2)) value = std::nextafter(value, 0.0);
    if (random.oneIn(4)) value = std::nextafter(power, 0.0);
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

std::string generateNumbers(Random& random) {
    const std::uint64_t bits = generateBits(random);
    std::string input;
    for (int shift = 56; shift >= 0; shift -= 8) input += static_cast<char>(bits >> shift);
    return input + static_cast<char>(random.next());
}

}  // namespace

const Target kNumbers = {"numbers", 100000, &generateNumbers, &checkNumbers};

}  // namespace xo::fuzz
