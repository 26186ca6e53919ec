// Random identifiers.
#ifndef XO_PLATFORM_UUID_H
#define XO_PLATFORM_UUID_H

#include <string>

namespace xo::platform {

// A random UUID (RFC 4122, version 4) as 8-4-4-4-12 lower-case hexadecimal digits.
std::string createUuid();

}  // namespace xo::platform

#endif
