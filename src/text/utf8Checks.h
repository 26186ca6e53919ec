// Whether bytes are UTF-8. ASCII text is checked 64 bytes at a time.
#ifndef XO_TEXT_UTF8CHECKS_H
#define XO_TEXT_UTF8CHECKS_H

#include <cstddef>
#include <string_view>

namespace xo::text {

// The verdict is utfcpp's: every sequence complete, shortest and a valid code point.
bool isUtf8(std::string_view text);

// How many bytes from the start are such sequences: all of them, or those before the first that is not.
std::size_t utf8Prefix(std::string_view text);

}  // namespace xo::text

#endif
