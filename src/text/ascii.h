// Tests and conversions of ASCII characters. A byte from 0x80 up is neither white space nor a letter, and is not
// converted. The functions of <cctype> are not used, because they depend on the C locale and are undefined for most
// negative values of char.
#ifndef XO_TEXT_ASCII_H
#define XO_TEXT_ASCII_H

#include <string_view>

namespace xo::text {

// Space, \t, \n, \v, \f or \r.
constexpr bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Of a digit in a base up to 16; 16 for every other character.
constexpr unsigned digitValue(char c) {
    if (isDigit(c)) return static_cast<unsigned>(c - '0');
    const char lower = static_cast<char>(c | 0x20);  // the bit by which the cases of a letter differ
    return lower >= 'a' && lower <= 'f' ? static_cast<unsigned>(lower - 'a' + 10) : 16;
}

constexpr bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

constexpr char toLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

constexpr char toUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c; }

constexpr std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
    return text;
}

constexpr bool equalIgnoringCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i != a.size(); ++i) {
        if (toLower(a[i]) != toLower(b[i])) return false;
    }
    return true;
}

}  // namespace xo::text

#endif
