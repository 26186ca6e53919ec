// Loads the library, has a fault reported and unloads it: 0 when nothing of it is left and faults are the host's again.
#include "platform/windows.h"

#include <cstdio>

#undef __try

namespace {

using Guard = void (*)(void (*)());

void fault() { *static_cast<volatile int*>(nullptr) = 1; }

bool runGuarded(Guard guard) {
    try {
        guard(&fault);
    } catch (...) {
        return true;
    }
    return false;
}

}  // namespace

int main() {
    for (int round = 0; round < 3; ++round) {
        const HMODULE library = ::LoadLibraryW(L"xoSystem.dll");
        if (!library) return 2;
        const auto guard = reinterpret_cast<Guard>(
            reinterpret_cast<void*>(::GetProcAddress(library, "_ZN2xo9exception4impl15ExecGuardedCodeEPFvvE")));
        if (!guard || !runGuarded(guard)) return 3;
        if (!::GetModuleHandleW(L"dbghelp.dll")) return 4;
        ::FreeLibrary(library);
        if (::GetModuleHandleW(L"xoSystem.dll") || ::GetModuleHandleW(L"dbghelp.dll")) return 5;
    }
    return 0;
}
