// Numbers from and to text as the whole library reads and prints them: the classic locale, whatever the user's is.
#ifndef XO_TEXT_NUMBERTEXT_H
#define XO_TEXT_NUMBERTEXT_H

#include <cmath>
#include <cstdint>
#include <string_view>

namespace xo::text {

// Both parsers read as the C runtime's strtoll (base 0) and strtod do in the "C" locale: leading white space and a sign
// are accepted, and a number out of range gives the nearest end of the range. They return whether the whole text was
// read. An empty text is read as 0; a text without any number, such as " " or "-", is not read. A NUL is a character
// like any other that does not belong to a number. After false the value is that of the part that was read, 0 without
// one.

// "12", "-0x1F" (hexadecimal), "010" (octal).
bool parseInteger(const char* text, const char* end, std::int64_t& value);

// Decimal only: "1.5", ".5", "1e3". No hexadecimal, infinity or NaN, as in msvcrt.
bool parseReal(const char* text, const char* end, double& value);

// The calling convention of Windows passes a string_view by a pointer to a copy in memory, which takes as long as to
// read a short number: https://learn.microsoft.com/cpp/build/x64-calling-convention
inline bool parseInteger(std::string_view text, std::int64_t& value) {
    return parseInteger(text.data(), text.data() + text.size(), value);
}
inline bool parseReal(std::string_view text, double& value) {
    return parseReal(text.data(), text.data() + text.size(), value);
}

// Writes the value as a stream with the given precision does by default ("%g"): 0.1, 1e+20, inf, nan. Returns the end.
// kRealCapacity bytes fit any value of up to 17 digits; each further digit needs one byte more. All of the buffer may
// be written to.
constexpr int kRealCapacity = 32;
char* printReal(char* out, double value, int precision = 6, int capacity = kRealCapacity);

// "nan", "inf" or "-inf"; empty for a finite value.
inline std::string_view notFiniteText(double value) {
    if (std::isfinite(value)) return {};
    return std::isnan(value) ? "nan" : value < 0 ? "-inf" : "inf";
}

// Writes that many digits of a positive finite value, rounded and without a point; exponent is the power of ten of the
// first one. Returns false where one multiplication does not suffice: for many digits, for values far from 1 and for
// values close to a tie.
bool roundShortly(double value, int count, char* digits, int& exponent);

}  // namespace xo::text

#endif
