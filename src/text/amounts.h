// Definitions that the functions for texts of amounts and the parsers share.
#ifndef XO_TEXT_AMOUNTS_H
#define XO_TEXT_AMOUNTS_H

#include <string_view>

namespace xo::text {

// The prefixes of the powers of 1000, from 10^-30 on.
constexpr int kLeastPrefix = -10;
constexpr int kMostPrefix = 10;
constexpr std::string_view kPrefixes[] = {"q", "r", "y", "z", "a", "f", "p", "n", "\xC2\xB5", "m", "",
                                          "k", "M", "G", "T", "P", "E", "Z", "Y", "R",        "Q"};

// Writes the positive finite value with so many significant digits, divided by 1000^prefix, and returns the end. The
// prefix is the smallest with which the rounded number stays below 1000, but within the bounds.
char* printWithPrefix(char* out, double value, int digits, int leastPrefix, int mostPrefix, int& prefix);

}  // namespace xo::text

#endif
