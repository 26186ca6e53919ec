// Checking, counting and repairing UTF-8.
#include <algorithm>

#include "text/utf8Checks.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {

bool xoStringUtils::IsUtf8String(const std::string& text) { return text::isUtf8(text); }

std::size_t xoStringUtils::CountUtf8Char(const std::string& text) {
    if (!text::isUtf8(text)) return 0;
    // Each well-formed sequence has exactly one byte that is not a continuation byte.
    const auto isLead = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isLead));
}

std::string xoStringUtils::UnknownEncodingToUtf8(const std::string& text, char replacement) {
    if (text::isUtf8(text)) return text;
    // The native code page is the likely origin of a text that is not UTF-8. A failed conversion gives an empty text,
    // which is UTF-8.
    std::string converted = convertCharset(text, CharSetNative, CharSetUtf8);
    if (text::isUtf8(converted)) return converted;
    converted = text;
    std::replace_if(
        converted.begin(), converted.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; }, replacement);
    return converted;
}

}  // namespace xo
