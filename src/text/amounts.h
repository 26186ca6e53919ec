// What the functions that print amounts and those that parse them have in common.
#ifndef XO_TEXT_AMOUNTS_H
#define XO_TEXT_AMOUNTS_H

#include <string>
#include <string_view>

namespace xo::text {

// The SI prefixes of the powers of 1000, from 10^-30 on; that of 1000^n is kPrefixes[n - kLeastPrefix]. The micro sign
// is U+00B5. q, r, R and Q were adopted in 2022.
constexpr int kLeastPrefix = -10;
constexpr int kMostPrefix = 10;
constexpr std::string_view kPrefixes[] = {"q", "r", "y", "z", "a", "f", "p", "n", "\xC2\xB5", "m", "",
                                          "k", "M", "G", "T", "P", "E", "Z", "Y", "R",        "Q"};

// Writes the positive finite value with so many significant digits (1 to 17) divided by 1000^prefix, without the text
// of the prefix, and returns the end. The prefix is the smallest with which the rounded number stays below 1000, but
// within the bounds. All digits in front of the point are written. kPlainCapacity bytes are enough.
char* printWithPrefix(char* out, double value, int digits, int leastPrefix, int mostPrefix, int& prefix);

// "nan", "inf" or "-inf" and the unit; false for a finite value, without changing the text.
bool printNotFinite(double value, std::string_view unit, std::string& text);

}  // namespace xo::text

#endif
