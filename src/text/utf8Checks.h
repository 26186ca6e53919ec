// Whether bytes are UTF-8, at the speed of reading them where they are ASCII.
#ifndef XO_TEXT_UTF8CHECKS_H
#define XO_TEXT_UTF8CHECKS_H

#include <string_view>

namespace xo::text {

// The verdict is utfcpp's: every sequence complete, shortest and a valid code point.
bool isUtf8(std::string_view text);

}  // namespace xo::text

#endif
