// Decimal digits of numbers: rounding to digits, writing them with a decimal point, and reading them exactly.
#ifndef XO_TEXT_DECIMAL_H
#define XO_TEXT_DECIMAL_H

#include <cstdint>
#include <string_view>

namespace xo::text {

// A positive number in scientific notation: the first digit is worth 10^exponent, each further digit a tenth of the one
// before.
struct Digits {
    static constexpr int kMost = 330;  // more than the integer part of any double has

    char text[kMost];  // count digits without a point, and no NUL; the rest is not initialised
    int count;         // at least 1
    int exponent;
};

// Rounds a positive finite value to that many digits (1 to Digits::kMost), exactly and a tie to the even digit.
void roundToDigits(double value, int count, Digits& digits);

// The fewest digits that are read back as the positive finite value.
template <class Real>
void shortestDigits(Real value, Digits& digits);

// Writes 0.0012, 12.3 or 1200, and returns the end. If there are fewer digits than places in front of the point, zeros
// fill the rest. kPlainCapacity bytes are enough for any double.
constexpr int kPlainCapacity = 1024;
char* printPlain(char* out, const Digits& digits);

// Writes 1.2e-05, and returns the end.
char* printScientific(char* out, const Digits& digits);

// A number of digits with at most one point, at the start of the text: its digits before and behind the point.
struct DecimalText {
    std::string_view whole, fraction;
    bool hasPoint = false;
};

// Removes the number from the start of the text. Returns false, and leaves the text unchanged, if there is none.
bool takeDecimal(std::string_view& text, DecimalText& number);

// The double nearest to the number times 10^exponent. False when that is infinite, or 0 although a digit is not 0.
bool toReal(const DecimalText& number, int exponent, double& value);

// The value of the digits as an integer, 0 for an empty text. The caller has checked that there are only digits. False
// for a value beyond 64 bits.
bool toInteger(std::string_view digits, std::uint64_t& value);

}  // namespace xo::text

#endif
