// Sets the names of threads that debuggers and the system show.
#ifndef XO_PLATFORM_THREADDESCRIPTION_H
#define XO_PLATFORM_THREADDESCRIPTION_H

#include "platform/moduleFunction.h"

namespace xo::platform {

// Names a thread. Failures are ignored, because a name has no effect on the program; versions of Windows without the
// function have no names.
inline void describeThread(HANDLE thread, const wchar_t* name) noexcept {
    using SetThreadDescription = HRESULT WINAPI(HANDLE, PCWSTR);
    // Windows 10 has it; version 1607 in KernelBase.dll alone:
    // https://learn.microsoft.com/windows/win32/api/processthreadsapi/nf-processthreadsapi-setthreaddescription
    static SetThreadDescription* const setThreadDescription = [] {
        auto* const found =
            findFunction<SetThreadDescription>(::GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription");
        return found
                   ? found
                   : findFunction<SetThreadDescription>(::GetModuleHandleW(L"KernelBase.dll"), "SetThreadDescription");
    }();
    if (setThreadDescription) setThreadDescription(thread, name);
}

}  // namespace xo::platform

#endif
