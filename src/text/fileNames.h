// Which names of files Windows accepts, and which it takes for devices.
#ifndef XO_TEXT_FILENAMES_H
#define XO_TEXT_FILENAMES_H

#include <string_view>

namespace xo::text {

// Whether the character is neither a control character nor one of <>:"/\|?*. Bytes from 0x80 up are allowed.
bool mayStandInFileName(char c);

// The name up to its first dot, without spaces at the end. Windows looks only at this part to recognise a device.
std::string_view deviceStem(std::string_view name);

// Whether the name is that of a device, which it means in any folder: "NUL", "com1.txt".
bool isDeviceName(std::string_view name);

}  // namespace xo::text

#endif
