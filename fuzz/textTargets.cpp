// Character sets, version texts and the natural order. Inputs of two texts have a byte 1E between them.
#include <algorithm>
#include <iostream>

#include "fuzz.h"
#include "support/capturedOutput.h"
#include "utf8Model.h"
#include "xoSystem/xoStringUtils.h"

namespace xo::fuzz {
namespace {

// ---- Character sets.

bool decodeAll(std::string_view text, std::u32string& codes) {
    for (std::size_t length = 0; !text.empty(); text.remove_prefix(length)) {
        const char32_t code = decode(text, length);
        if (code > 0x10FFFF) return false;
        codes += code;
    }
    return true;
}

std::wstring toUtf16(const std::u32string& codes) {
    std::wstring wide;
    for (const char32_t code : codes) {
        if (code < 0x10000) {
            wide += static_cast<wchar_t>(code);
        } else {
            wide += static_cast<wchar_t>(0xD7C0 + (code >> 10));
            wide += static_cast<wchar_t>(0xDC00 + (code & 0x3FF));
        }
    }
    return wide;
}

constexpr int kNative = 0, kUtf8 = 1, kAscii = 2;

void checkUtf8(const std::string& text) {
    std::u32string codes;
    const bool isValid = decodeAll(text, codes);
    require(xoStringUtils::IsUtf8String(text) == isValid, "IsUtf8String");
    require(xoStringUtils::CountUtf8Char(text) == (isValid ? codes.size() : 0), "CountUtf8Char");

    const std::string beforeNul = text.c_str();
    const std::wstring wide = xoStringUtils::convertToUnicode(text, kUtf8);
    codes.clear();
    if (decodeAll(beforeNul, codes)) {
        require(wide == toUtf16(codes), "convertToUnicode of UTF-8");
        const bool fits = beforeNul.size() <= 2 * wide.size();
        require(xoStringUtils::convertTo8Bits(wide, kUtf8) == (fits ? beforeNul : ""), "convertTo8Bits to UTF-8");
    } else {
        require(wide.size() <= text.size() && wide.find(L'\xFFFD') != std::wstring::npos, "broken UTF-8 to wide text");
    }
    const std::string utf8 = xoStringUtils::UnknownEncodingToUtf8(text, '?');
    require(xoStringUtils::IsUtf8String(utf8) && (!isValid || utf8 == text), "UnknownEncodingToUtf8");
}

void checkNarrow(const std::string& text, int charSet) {
    const std::string beforeNul = text.c_str();
    const std::wstring wide = xoStringUtils::convertToUnicode(text, charSet);
    require(wide.size() == beforeNul.size(), "one wide character a byte");
    for (std::size_t i = 0; i < wide.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x80 || charSet == kAscii) require(wide[i] == byte, "the byte ", unsigned{byte});
    }
    require(xoStringUtils::convertTo8Bits(wide, charSet) == beforeNul, "there and back");
}

// The text as UTF-16 code units, which may be broken.
void checkWide(const std::string& text) {
    std::wstring wide;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2)
        wide += static_cast<wchar_t>((text[i] & 0xFF) << 8 | (text[i + 1] & 0xFF));
    const std::wstring beforeNul = wide.c_str();
    const std::string utf8 = xoStringUtils::convertTo8Bits(wide, kUtf8);
    require(utf8.size() <= 2 * wide.size() && xoStringUtils::IsUtf8String(utf8), "wide text to UTF-8");
    if (!utf8.empty()) {
        std::u32string codes;
        require(decodeAll(utf8, codes) && toUtf16(codes).size() == beforeNul.size(), "wide text to UTF-8");
    }
    const bool isNarrow = std::all_of(beforeNul.begin(), beforeNul.end(), [](wchar_t c) { return c < 0x100; });
    const std::string ascii = xoStringUtils::convertTo8Bits(wide, kAscii);
    require(ascii == (isNarrow ? std::string(beforeNul.begin(), beforeNul.end()) : ""), "wide text to ASCII");
    xoStringUtils::convertTo8Bits(wide, kNative);
}

void checkCharSets(const std::string& text) {
    const tests::CapturedOutput messages;
    checkUtf8(text);
    checkNarrow(text, kNative);
    checkNarrow(text, kAscii);
    checkWide(text);
}

std::string generateCharSets(Random& random) {
    static const std::vector<std::string_view> pieces = {
        "a",
        "bcd",
        "\xC3\xA9",
        "\xE4\xB8\xAD",
        "\xF0\x9F\x98\x80",
        "\xED\x9F\xBF",
        "\xED\xA0\x80",
        "\xEF\xBF\xBF",
        "\xF4\x8F\xBF\xBF",
        "\xF4\x90\x80\x80",
        "\xC0\x80",
        "\xE0\x9F\xBF",
        "\xF0\x8F\xBF\xBF",
        "\x80",
        "\xBF",
        "\xFF",
        "\xC3",
        "\xE4\xB8",
        "\xF0\x9F",
        "0123456789abcdef",
        "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef",
        "\xD8\x3D\xDE"};
    return random.join(pieces, 12);
}

// ---- Version texts.

// Whether the text is numbers of 32 bits between dots; an empty place is 0.
bool readVersion(const std::string& text, std::vector<std::uint64_t>& numbers) {
    std::istringstream in(text);
    for (std::string piece; std::getline(in, piece, '.');) {
        xoStringUtils::trim(piece);
        if (piece.find('\0') != std::string::npos) return false;
        char* end = nullptr;
        const long long value = std::strtoll(piece.c_str(), &end, 0);
        if (*end != '\0' || value < 0 || value > 0xFFFFFFFF) return false;
        numbers.push_back(static_cast<std::uint64_t>(value));
    }
    return true;
}

int compareVersions(const std::string& a, const std::string& b, std::size_t most) {
    std::vector<std::uint64_t> first, second;
    if (!readVersion(a, first) || !readVersion(b, second)) return xoStringUtils::SoftwareVersionInvalid;
    second.resize((std::min)(second.size(), most));
    first.resize(second.size());
    if (second.empty()) return xoStringUtils::SoftwareVersionInvalid;
    return first == second  ? xoStringUtils::SoftwareVersionEqual
           : first < second ? xoStringUtils::SoftwareVersionOlder
                            : xoStringUtils::SoftwareVersionNewer;
}

void checkVersions(const std::string& input) {
    Bytes bytes(input);
    const std::string a = bytes.until('\x1E');
    const std::string b = bytes.rest();
    for (const std::size_t most : {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{3}, SIZE_MAX}) {
        const int result = xoStringUtils::compareSoftwareVersion(a, b, most);
        const int expected = compareVersions(a, b, most);
        require(result == expected, '"', a, "\" with \"", b, "\" is ", result, ", not ", expected);
    }
}

std::string generateVersions(Random& random) {
    static const std::vector<std::string_view> pieces = {
        "0", "1", "2", "10", "010", "0x1F", "08", "4294967295", "4294967296",         "-1", "+3", ".",
        ".", ".", ".", ".",  " ",   "\t",   "a",  "0x",         "9223372036854775808"};
    return random.join(pieces, 8) + '\x1E' + random.join(pieces, 8);
}

// ---- Natural order.

constexpr std::size_t kMostDigits = 16;  // longer numbers have their own order under Wine
constexpr int kDoubt = 2;

// Of lower-case letters and digits without zeros in front: digits before letters, runs of digits by their value.
int compareSimple(std::string_view a, std::string_view b) {
    constexpr char kDigits[] = "0123456789";
    while (!a.empty() && !b.empty()) {
        const std::size_t runOfA = (std::min)(a.find_first_not_of(kDigits), a.size());
        const std::size_t runOfB = (std::min)(b.find_first_not_of(kDigits), b.size());
        if ((std::max)(runOfA, runOfB) > kMostDigits) return kDoubt;
        if (runOfA != runOfB && runOfA != 0 && runOfB != 0) return runOfA < runOfB ? -1 : 1;
        if (a[0] != b[0]) return a[0] < b[0] ? -1 : 1;
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    return static_cast<int>(!a.empty()) - static_cast<int>(!b.empty());
}

bool isSimple(const std::string& text) {
    char before = 'a';
    for (const char c : text) {
        const bool isDigit = c >= '0' && c <= '9';
        if (!isDigit && (c < 'a' || c > 'z')) return false;
        if (c == '0' && (before < '0' || before > '9')) return false;
        before = c;
    }
    return true;
}

void checkNaturalOrder(const std::string& input) {
    Bytes bytes(input);
    const std::string a = bytes.until('\x1E');
    const std::string b = bytes.rest();
    for (const bool caseInsensitive : {false, true}) {
        const int result = xoStringUtils::CompareUTF8Natural(a, b, caseInsensitive);
        require(result >= -1 && result <= 1, "the result ", result);
        require(xoStringUtils::CompareUTF8Natural(b, a, caseInsensitive) == -result, "the other way round");
        require(xoStringUtils::CompareUTF8Natural(a, a, caseInsensitive) == 0, "a text differs from itself");
        const int expected = isSimple(a) && isSimple(b) ? compareSimple(a, b) : kDoubt;
        require(expected == kDoubt || result == expected, a, " with ", b, " is ", result);
    }
    require(!xoStringUtils::UTF8NaturalSortFunction(a, b) || !xoStringUtils::UTF8NaturalSortFunction(b, a), "order");
}

std::string generateNaturalOrder(Random& random) {
    static const std::vector<std::string_view> pieces = {
        "file", "a", "b", "1", "2", "9", "10", "99", "100", "12345678901234567890", "0"};
    static const std::vector<std::string_view> wild = {"file", "A",        "1",         "007",          " ",    "-",
                                                       "'",    "\xC3\xA9", "e\xCC\x81", "\xE4\xB8\xAD", "\xFF", "."};
    const auto& from = random.oneIn(2) ? pieces : wild;
    const std::string common = random.join(from, 2);
    return common + random.join(from, 3) + '\x1E' + common + random.join(from, 3);
}

}  // namespace

const Target kCharSets = {"charSets", 100000, &generateCharSets, &checkCharSets};
const Target kVersions = {"versions", 200000, &generateVersions, &checkVersions};
const Target kNaturalOrder = {"naturalOrder", 100000, &generateNaturalOrder, &checkNaturalOrder};

}  // namespace xo::fuzz
