// The paths of the program and its libraries.
#ifndef XO_PLATFORM_MODULEPATH_H
#define XO_PLATFORM_MODULEPATH_H

#include <string>

#include "platform/windows.h"

namespace xo::platform {

// The full path of a loaded module, or of the program for null. Empty for an invalid handle.
std::wstring modulePath(HMODULE module);

}  // namespace xo::platform

#endif
