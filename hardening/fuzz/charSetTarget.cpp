// Character sets: there and back, and broken text of both kinds, against a decoder of one code point at a time.
#include <algorithm>

#include "fuzz.h"
#include "support/capturedOutput.h"
#include "utf8Model.h"
#include "xoSystem/xoStringUtils.h"

namespace xo::fuzz {
namespace {

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

}  // namespace

const Target kCharSets = {"charSets", 100000, &generateCharSets, &checkCharSets};

}  // namespace xo::fuzz
