// Loads the library, has a fault reported and unloads it, again and again: 7 when nothing is left each time, neither of
// DbgHelp after the report nor of the library in the end.
#include "platform/windows.h"

namespace {

using Guard = void (*)(void (*)());

#if defined(_MSC_VER)
constexpr char kGuard[] = "?ExecGuardedCode@impl@exception@xo@@YAXP6AXXZ@Z";
#else
constexpr char kGuard[] = "_ZN2xo9exception4impl15ExecGuardedCodeEPFvvE";
#endif

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
        const HMODULE library = ::LoadLibraryW(L"" XO_LIBRARY_FILE);
        if (!library) return 2;
        const auto guard = reinterpret_cast<Guard>(reinterpret_cast<void*>(::GetProcAddress(library, kGuard)));
        if (!guard || !runGuarded(guard)) return 3;
        if (::GetModuleHandleW(L"dbghelp.dll")) return 4;
        ::FreeLibrary(library);
        if (::GetModuleHandleW(L"" XO_LIBRARY_FILE)) return 5;
    }
    return 7;
}
