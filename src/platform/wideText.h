// Conversions between UTF-8 and the texts of Windows, for the library itself. They convert texts of any length and
// content; the public functions of xoStringUtils have an output buffer of a fixed size.
#ifndef XO_PLATFORM_WIDETEXT_H
#define XO_PLATFORM_WIDETEXT_H

#include <string>
#include <string_view>

namespace xo::platform {

// UTF-8 to UTF-16. Each broken sequence becomes U+FFFD; NULs are kept. Empty for a text beyond 2 GB.
std::wstring toWide(std::string_view utf8);

// UTF-16 to UTF-8. Each lone surrogate becomes U+FFFD; NULs are kept. Empty for a text beyond 2 GB.
std::string toUtf8(std::wstring_view wide);

// Appends the result of toUtf8, without an allocation if the text has the capacity. Appends nothing for a text beyond 1
// GB.
void appendUtf8(std::string& text, std::wstring_view wide);

// UTF-8 to the ANSI code page of the process; characters that the page lacks become its default character. The result
// is cut, between two characters, to at most maxBytes.
std::string toNative(std::string_view utf8, std::size_t maxBytes = std::string::npos);

// The ANSI code page to UTF-8.
std::string fromNative(std::string_view native);

// Another code page to UTF-8. Invalid bytes become what the system puts in their place. Empty beyond 2 GB.
std::string fromCodePage(unsigned codePage, std::string_view text);

// A UTF-8 path in the form for W calls. A path that MAX_PATH would cut off is made absolute and gets the "\\?\" prefix.
// A path with a NUL inside names no file: it gives an empty text, which every W call refuses.
std::wstring toApiPath(std::string_view utf8Path);

// The same for a path that is wide already.
std::wstring toApiPath(std::wstring path);

// The absolute path with backslashes and the "\\?\" prefix, however short it is: what lies below may be long. Empty for
// a path that names nothing.
std::wstring toExtendedPath(const std::wstring& path);

// Removes the prefix that toExtendedPath adds, for display and for functions that refuse it. Other paths are returned
// unchanged.
std::wstring withoutExtendedPrefix(std::wstring path);

// Calls fill(buffer, size) until the text fits. For functions that return the length of the text if it fits, the size
// that they need if not, and 0 on failure: GetFullPathNameW, GetCurrentDirectoryW, GetTempPathW,
// GetEnvironmentVariableW. Empty when the call fails.
template <class Fill>
std::wstring readWide(Fill&& fill) {
    std::wstring text(128, L'\0');
    for (;;) {
        const auto length = fill(text.data(), static_cast<unsigned long>(text.size()));
        const bool fits = length < text.size();
        text.resize(length);  // either the text's length, or the size that the next round needs
        if (fits || text.empty()) return text;
    }
}

}  // namespace xo::platform

#endif
