// Random identifiers.
#ifndef XO_PLATFORM_UUID_H
#define XO_PLATFORM_UUID_H

#include <string>

namespace xo::platform {

// A random UUID (RFC 9562, version 4) as 8-4-4-4-12 lower-case hexadecimal digits. Any thread may call it. Without the
// system's random generator it is still unique, but can be guessed.
std::string createUuid();

}  // namespace xo::platform

#endif
