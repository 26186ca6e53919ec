// thread_local objects: the module's TLS directory, their constructors and their destructors. Linked only into modules
// that have such objects.
#include "runtime.h"

extern "C" {
ULONG _tls_index = 0;

// The initial values of all thread_local objects stand between these two, the system's callbacks between those.
#pragma section(".tls", long, read, write)
#pragma section(".tls$ZZZ", long, read, write)
#pragma section(".CRT$XLA", long, read)
#pragma section(".CRT$XLC", long, read)
#pragma section(".CRT$XLZ", long, read)
#pragma section(".CRT$XDA", long, read)
#pragma section(".CRT$XDZ", long, read)
#pragma section(".CRT$XIC", long, read)
__declspec(allocate(".tls")) char firstTlsByte = 0;
__declspec(allocate(".tls$ZZZ")) char lastTlsByte = 0;
__declspec(allocate(".CRT$XLA")) PIMAGE_TLS_CALLBACK firstCallback = nullptr;
__declspec(allocate(".CRT$XLZ")) PIMAGE_TLS_CALLBACK lastCallback = nullptr;
__declspec(allocate(".CRT$XDA")) Function firstConstructor = nullptr;
__declspec(allocate(".CRT$XDZ")) Function lastConstructor = nullptr;
extern const IMAGE_TLS_DIRECTORY64 _tls_used = {reinterpret_cast<ULONGLONG>(&firstTlsByte),
                                                reinterpret_cast<ULONGLONG>(&lastTlsByte),
                                                reinterpret_cast<ULONGLONG>(&_tls_index),
                                                reinterpret_cast<ULONGLONG>(&firstCallback + 1),
                                                0,
                                                {}};

thread_local bool __tls_guard = false;  // whether this thread's objects have been made

void NTAPI __dyn_tls_init(PVOID, DWORD reason, PVOID) {
    if (reason != DLL_THREAD_ATTACH || __tls_guard) return;
    __tls_guard = true;
    for (Function* make = &firstConstructor + 1; make != &lastConstructor; ++make) {
        if (*make) (*make)();
    }
}

// In a thread that is older than the module, at the first use of an object.
void __dyn_tls_on_demand_init() { __dyn_tls_init(nullptr, DLL_THREAD_ATTACH, nullptr); }

struct Exit {
    Exit* before;
    Function run;
};
static thread_local Exit* lastExit;

int __cdecl __tlregdtor(Function destructor) {
    auto* const made = static_cast<Exit*>(malloc(sizeof(Exit)));
    if (!made) return -1;
    *made = {lastExit, destructor};
    lastExit = made;
    return 0;
}

static void NTAPI runThreadExits(PVOID, DWORD reason, PVOID) {
    if (reason != DLL_THREAD_DETACH && reason != DLL_PROCESS_DETACH) return;
    while (Exit* const last = lastExit) {
        lastExit = last->before;
        last->run();
        free(last);
    }
}

__declspec(allocate(".CRT$XLC")) PIMAGE_TLS_CALLBACK tlsCallbacks[] = {__dyn_tls_init, runThreadExits};
static int tellCommonPart() {
    threadStart = __dyn_tls_init;
    threadEnd = runThreadExits;
    return 0;
}
__declspec(allocate(".CRT$XIC")) CheckedFunction tlsInitializer = tellCommonPart;
#pragma comment(linker, "/include:_tls_used")
#pragma comment(linker, "/include:tlsCallbacks")
#pragma comment(linker, "/include:tlsInitializer")
}
