// The codes with which C++ runtimes raise C++ exceptions as exceptions of Windows.
#ifndef XO_PLATFORM_EXCEPTIONCODES_H
#define XO_PLATFORM_EXCEPTIONCODES_H

#include <cstdint>

namespace xo::platform {

constexpr std::uint32_t kMicrosoftException = 0xE06D7363;  // of Microsoft's compilers: "msc"
constexpr std::uint32_t kItaniumException = 0x20474343;    // of GCC's runtime, with clang too: "GCC"

}  // namespace xo::platform

#endif
