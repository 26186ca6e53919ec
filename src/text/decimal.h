// Decimal digits of numbers: rounding to them, laying them out around a point, and reading them exactly.
#ifndef XO_TEXT_DECIMAL_H
#define XO_TEXT_DECIMAL_H

#include <cstdint>
#include <string_view>

namespace xo::text {

// A positive number: its first digit stands for that many times 10^exponent, each other one for a tenth of that.
struct Digits {
    static constexpr int kMost = 330;  // in front of the point of any double, and some

    char text[kMost];  // only the first are written
    int count;
    int exponent;
};

// Rounds a positive finite value to that many digits (1 to Digits::kMost), exactly and a tie to the even digit.
void roundToDigits(double value, int count, Digits& digits);

// The fewest digits that are read back as the positive finite value.
template <class Real>
void shortestDigits(Real value, Digits& digits);

// Writes 0.0012, 12.3 or 1200, and returns the end. kPlainCapacity bytes fit any double; digits in front of the point
// that there are none of are zeros.
constexpr int kPlainCapacity = 1024;
char* printPlain(char* out, const Digits& digits);

// Writes 1.2e-05.
char* printScientific(char* out, const Digits& digits);

// A number of digits with at most one point, at the start of the text: its digits before and behind the point.
struct DecimalText {
    std::string_view whole, fraction;
    bool hasPoint = false;
};

// Takes it off the text. False, and the text as it was, when it starts with no such number.
bool takeDecimal(std::string_view& text, DecimalText& number);

// The double nearest to the number times 10^exponent. False when it is out of range: infinite, or 0 for digits that are
// not all 0.
bool toReal(const DecimalText& number, int exponent, double& value);

// The integer of a few digits; false beyond 64 bits.
bool toInteger(std::string_view digits, std::uint64_t& value);

}  // namespace xo::text

#endif
