// Looks up functions in loaded modules that not every version of Windows has.
#ifndef XO_PLATFORM_MODULEFUNCTION_H
#define XO_PLATFORM_MODULEFUNCTION_H

#include "platform/windows.h"

namespace xo::platform {

// The exported function of that name; null when the handle is null or the module has no such function. The caller
// states the type, which is not checked. The pointer is valid while the module stays loaded. The cast goes through
// another function type, because GCC warns about a direct cast of FARPROC.
template <class Function>
Function* findFunction(HMODULE module, const char* name) noexcept {
    if (!module) return nullptr;
    return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(::GetProcAddress(module, name)));
}

}  // namespace xo::platform

#endif
