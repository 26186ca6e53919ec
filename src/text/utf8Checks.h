// Whether bytes are UTF-8. ASCII text is checked 64 bytes at a time.
#ifndef XO_TEXT_UTF8CHECKS_H
#define XO_TEXT_UTF8CHECKS_H

#include <cstddef>
#include <string_view>

namespace xo::text {

// The verdict is utfcpp's: every sequence complete, shortest and a valid code point.
bool isUtf8(std::string_view text);

// The number of bytes at the start that are such sequences: the size of the text, or the position of the first broken
// sequence.
std::size_t utf8Prefix(std::string_view text);

}  // namespace xo::text

#endif
