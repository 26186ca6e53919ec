// Loads the library, has a fault reported by the system's DbgHelp and unloads it, again and again: 0 when nothing of it
// is left each time.
#include <cwchar>

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

bool isOfTheSystem(HMODULE module) {
    wchar_t folder[MAX_PATH], path[MAX_PATH];
    const UINT length = ::GetSystemDirectoryW(folder, MAX_PATH);
    return module && ::GetModuleFileNameW(module, path, MAX_PATH) && ::_wcsnicmp(path, folder, length) == 0;
}

}  // namespace

int main() {
    for (int round = 0; round < 3; ++round) {
        const HMODULE library = ::LoadLibraryW(L"xoSystem.dll");
        if (!library) return 2;
        const auto guard = reinterpret_cast<Guard>(reinterpret_cast<void*>(::GetProcAddress(library, kGuard)));
        if (!guard || !runGuarded(guard)) return 3;
        if (!isOfTheSystem(::GetModuleHandleW(L"dbghelp.dll"))) return 4;
        ::FreeLibrary(library);
        if (::GetModuleHandleW(L"xoSystem.dll") || ::GetModuleHandleW(L"dbghelp.dll")) return 5;
    }
    return 0;
}
