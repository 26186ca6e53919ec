// The tables of functions that run before and after a module's own code, and the guards of local statics.
#include "runtime.h"

#include <limits.h>

extern "C" {
int _fltused = 1;             // referred to by every object that has floating point
int __mingw_initcharmax = 0;  // referred to by Debian's limits.h
int __isa_available = 0;      // what <bit> asks before it takes an instruction that not every processor has: none
PIMAGE_TLS_CALLBACK threadStart, threadEnd;

// GoogleTest's names of the C runtime's functions, and what its option /GS asks for: stack.s compares with the cookie.
#pragma comment(linker, "/alternatename:close=_close")
#pragma comment(linker, "/alternatename:creat=_creat")
#pragma comment(linker, "/alternatename:dup=_dup")
#pragma comment(linker, "/alternatename:dup2=_dup2")
#pragma comment(linker, "/alternatename:fdopen=_fdopen")
#pragma comment(linker, "/alternatename:read=_read")
#pragma comment(linker, "/alternatename:write=_write")
uintptr_t __security_cookie = 0x2B992DDFA232;

// The linker sorts sections by what follows the $, so the entries of all objects stand between these.
#pragma section(".CRT$XIA", long, read)
#pragma section(".CRT$XIZ", long, read)
#pragma section(".CRT$XCA", long, read)
#pragma section(".CRT$XCZ", long, read)
__declspec(allocate(".CRT$XIA")) CheckedFunction firstCheckedInitializer[] = {nullptr};
__declspec(allocate(".CRT$XIZ")) CheckedFunction lastCheckedInitializer[] = {nullptr};
__declspec(allocate(".CRT$XCA")) Function firstInitializer[] = {nullptr};
__declspec(allocate(".CRT$XCZ")) Function lastInitializer[] = {nullptr};
#pragma comment(linker, "/merge:.CRT=.rdata")

static ExitTable exits;
static bool keepsExits;

bool runInitializers(bool isDll) {
    keepsExits = isDll;
    if (isDll && _initialize_onexit_table(&exits) != 0) return false;
    if (_initterm_e(firstCheckedInitializer, lastCheckedInitializer) != 0) return false;
    _initterm(firstInitializer, lastInitializer);
    return true;
}

void runExitFunctions(bool isDll) {
    if (isDll) _execute_onexit_table(&exits);
}

int __cdecl atexit(Function function) {
    if (!keepsExits) return _crt_atexit(function);
    return _register_onexit_function(&exits, reinterpret_cast<CheckedFunction>(function));
}

CheckedFunction __cdecl _onexit(CheckedFunction function) {
    return atexit(reinterpret_cast<Function>(function)) == 0 ? function : nullptr;
}

// A local static's guard: 0 before its construction, -1 during it, afterwards the epoch in which it was made. The code
// that the compiler makes compares it with the thread's epoch and calls these functions where the guard is later.
static SRWLOCK lock = SRWLOCK_INIT;
static CONDITION_VARIABLE changed = CONDITION_VARIABLE_INIT;
static int lastEpoch = INT_MIN;
thread_local int _Init_thread_epoch = INT_MIN;

void __cdecl _Init_thread_header(int* guard) {
    AcquireSRWLockExclusive(&lock);
    while (*guard == -1) SleepConditionVariableSRW(&changed, &lock, INFINITE, 0);
    if (*guard == 0) {
        *guard = -1;
    } else {
        _Init_thread_epoch = lastEpoch;
    }
    ReleaseSRWLockExclusive(&lock);
}

static void setGuard(int* guard, int value) {
    AcquireSRWLockExclusive(&lock);
    if (value != 0) _Init_thread_epoch = value = ++lastEpoch;
    *guard = value;
    ReleaseSRWLockExclusive(&lock);
    WakeAllConditionVariable(&changed);
}
void __cdecl _Init_thread_footer(int* guard) { setGuard(guard, 1); }
void __cdecl _Init_thread_abort(int* guard) { setGuard(guard, 0); }
}
