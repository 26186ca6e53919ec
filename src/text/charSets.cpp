// The public conversions. The size of their output buffer follows from the input's length, so that some texts do not
// fit; platform/wideText.h has conversions without that limit.
#include <cstdlib>
#include <iostream>
#include <limits>

#include "platform/windows.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {
namespace {

constexpr char kWideningFailed[] = "xoStringUtils::convertCharset failed ";
constexpr char kNarrowingFailed[] = "xoStringUtils::toUT8 failed ";
constexpr char kAsciiFailed[] = "xoStringUtils::fromAscii failed ";

// Written to standard output, not to the log, because the log uses these conversions.
template <class Text>
Text failed(const char* message) {
    std::cout << message << '\n' << std::flush;
    return {};
}

// Removes the terminating NUL, which the count includes. Wine takes the NUL for a part of a broken last character, so
// that the last unit may be the replacement of that character.
template <class Text>
void cutAtNul(Text& text, int count) {
    const auto last = static_cast<std::size_t>(count) - 1;
    text.resize(text[last] == 0 ? last : last + 1);
}

// The Windows conversions take lengths as int.
bool fitsInt(std::size_t size) { return size <= static_cast<std::size_t>((std::numeric_limits<int>::max)()); }

template <UINT codePage>
std::wstring widen(const std::string& text) {
    // No byte of the code page becomes more than one UTF-16 unit.
    const std::size_t capacity = text.size() + 1;
    if (!fitsInt(capacity)) return failed<std::wstring>(kWideningFailed);
    std::wstring wide(capacity, L'\0');
    const int count = ::MultiByteToWideChar(codePage, 0, text.c_str(), -1, wide.data(), static_cast<int>(capacity));
    if (count == 0) return failed<std::wstring>(kWideningFailed);
    cutAtNul(wide, count);
    return wide;
}

template <UINT codePage>
std::string narrow(const std::wstring& text) {
    // Many characters take three bytes of UTF-8. A text with too many of them does not fit, and the conversion fails,
    // as the header says; programs may rely on that.
    const std::size_t capacity = 2 * text.size() + 1;
    if (!fitsInt(capacity)) return failed<std::string>(kNarrowingFailed);
    std::string narrowed(capacity, '\0');
    const int count = ::WideCharToMultiByte(codePage, 0, text.c_str(), -1, narrowed.data(), static_cast<int>(capacity),
                                            nullptr, nullptr);
    if (count == 0) return failed<std::string>(kNarrowingFailed);
    cutAtNul(narrowed, count);
    return narrowed;
}

std::wstring widenAscii(const std::string& text) {
    if (!fitsInt(text.size())) return failed<std::wstring>(kAsciiFailed);  // as in narrowAscii
    std::wstring wide(text.size() + 1, L'\0');
    const std::size_t count =
        text.empty() ? 0 : ::_mbstowcs_l(wide.data(), text.c_str(), text.size(), xoStringUtils::GetCLocale());
    if (count == 0 || count > text.size()) return failed<std::wstring>(kAsciiFailed);  // (size_t)-1 is an error
    wide.resize(count);
    return wide;
}

std::string narrowAscii(const std::wstring& text) {
    // For an empty buffer, or one beyond 2 GB, the C runtime calls its invalid-parameter handler, which by default ends
    // the process: https://learn.microsoft.com/cpp/c-runtime-library/parameter-validation
    if (text.empty() || !fitsInt(2 * text.size())) return failed<std::string>(kAsciiFailed);
    std::string narrowed(2 * text.size(), '\0');
    std::size_t count = 0;  // with the NUL, so 1 for a text that begins with one: that is no failure
    const errno_t error = ::_wcstombs_s_l(&count, narrowed.data(), narrowed.size(), text.c_str(), text.size(),
                                          xoStringUtils::GetCLocale());
    if (error != 0 || count == 0) return failed<std::string>(kAsciiFailed);
    narrowed.resize(count - 1);
    return narrowed;
}

using Widen = std::wstring (*)(const std::string&);
using Narrow = std::string (*)(const std::wstring&);
constexpr Widen kWiden[] = {widen<CP_ACP>, widen<CP_UTF8>, widenAscii};
constexpr Narrow kNarrow[] = {narrow<CP_ACP>, narrow<CP_UTF8>, narrowAscii};

// The number comes from the caller and is an index of the tables above.
bool isCharSet(int charSet) {
    return charSet >= xoStringUtils::CharSetNative && charSet <= xoStringUtils::CharSetAscii;
}

}  // namespace

std::wstring xoStringUtils::convertToUnicode(const std::string& text, xoCharSet from) {
    return isCharSet(from) ? kWiden[from](text) : failed<std::wstring>(kWideningFailed);
}

std::string xoStringUtils::convertTo8Bits(const std::wstring& text, xoCharSet to) {
    return isCharSet(to) ? kNarrow[to](text) : failed<std::string>(kNarrowingFailed);
}

std::string xoStringUtils::convertCharset(const std::string& text, xoCharSet from, xoCharSet to) {
    return convertTo8Bits(convertToUnicode(text, from), to);
}

}  // namespace xo
