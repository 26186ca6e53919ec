// Loads the library, uses and terminates it, and unloads it, several times; 7 when it is really gone each time.
#include "platform/windows.h"

namespace {

template <class... Arguments>
void call(HMODULE library, const char* name, Arguments... arguments) {
    const FARPROC found = ::GetProcAddress(library, name);
    reinterpret_cast<void (*)(Arguments...)>(reinterpret_cast<void (*)()>(found))(arguments...);
}

}  // namespace

int main() {
    alignas(16) static char pool[1024];
    for (int round = 0; round < 3; ++round) {
        const HMODULE library = ::LoadLibraryW(L"xoSystem.dll");
        call(library, "_ZN2xo18initializeXoSystemENS_8InitTypeEb", /*type=*/2, /*queryMainDisk=*/false);
        call(library, "_ZN2xo14ConcurrentPoolC1Ej", &pool, /*workerCount=*/3u);
        call(library, "_ZN2xo14ConcurrentPoolD1Ev", &pool);
        call(library, "_ZN2xo17terminateXoSystemEv");
        ::FreeLibrary(library);
        if (::GetModuleHandleW(L"xoSystem.dll")) return 1;
    }
    return 7;
}
