// Loads the library, uses and terminates it, and unloads it, several times; 7 when it is really gone each time.
#include "platform/windows.h"

namespace {

#if defined(_MSC_VER)
constexpr char kInitialize[] = "?initializeXoSystem@xo@@YAXW4InitType@1@_N@Z";
constexpr char kTerminate[] = "?terminateXoSystem@xo@@YAXXZ";
constexpr char kMakePool[] = "??0ConcurrentPool@xo@@QEAA@I@Z";
constexpr char kDestroyPool[] = "??1ConcurrentPool@xo@@QEAA@XZ";
#else
constexpr char kInitialize[] = "_ZN2xo18initializeXoSystemENS_8InitTypeEb";
constexpr char kTerminate[] = "_ZN2xo17terminateXoSystemEv";
constexpr char kMakePool[] = "_ZN2xo14ConcurrentPoolC1Ej";
constexpr char kDestroyPool[] = "_ZN2xo14ConcurrentPoolD1Ev";
#endif

template <class... Arguments>
void call(HMODULE library, const char* name, Arguments... arguments) {
    const FARPROC found = ::GetProcAddress(library, name);
    reinterpret_cast<void (*)(Arguments...)>(reinterpret_cast<void (*)()>(found))(arguments...);
}

}  // namespace

int main() {
    alignas(16) static char pool[1024];
    for (int round = 0; round < 3; ++round) {
        const HMODULE library = ::LoadLibraryW(L"" XO_LIBRARY_FILE);
        call(library, kInitialize, /*type=*/2, /*queryMainDisk=*/false);
        call(library, kMakePool, &pool, /*workerCount=*/3u);
        call(library, kDestroyPool, &pool);
        call(library, kTerminate);
        ::FreeLibrary(library);
        if (::GetModuleHandleW(L"" XO_LIBRARY_FILE)) return 1;
    }
    return 7;
}
