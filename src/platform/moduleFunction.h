// Looks up functions in loaded modules that not every version of Windows has.
#ifndef XO_PLATFORM_MODULEFUNCTION_H
#define XO_PLATFORM_MODULEFUNCTION_H

#include "platform/windows.h"

namespace xo::platform {

// The exported function of that name; null when the module, or its handle, is missing. By way of a pointer to another
// function: a cast from the type of FARPROC itself is a warning with GCC.
template <class Function>
Function* findFunction(HMODULE module, const char* name) noexcept {
    if (!module) return nullptr;
    return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(::GetProcAddress(module, name)));
}

}  // namespace xo::platform

#endif
