// What Windows takes for the name of a file.
#ifndef XO_TEXT_FILENAMES_H
#define XO_TEXT_FILENAMES_H

#include <string_view>

namespace xo::text {

// Neither a control character nor one of <>:"/\|?*.
bool mayStandInFileName(char c);

// The name without the extensions and the spaces before them, which a device name has no use for.
std::string_view deviceStem(std::string_view name);

// Whether the name stands for a device whatever folder it is in: "NUL", "com1.txt".
bool isDeviceName(std::string_view name);

}  // namespace xo::text

#endif
