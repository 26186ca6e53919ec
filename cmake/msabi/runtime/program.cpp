// The entry point of a program; with XO_WIDE defined, of one that has wmain.
#include "runtime.h"

#include <eh.h>

extern "C" {
int __cdecl _configure_narrow_argv(int);
int __cdecl _configure_wide_argv(int);
int __cdecl _initialize_narrow_environment();
int __cdecl _initialize_wide_environment();
int* __cdecl __p___argc();
char*** __cdecl __p___argv();
wchar_t*** __cdecl __p___wargv();
int __cdecl _seh_filter_exe(unsigned long, EXCEPTION_POINTERS*);
void __cdecl _register_thread_local_exe_atexit_callback(PIMAGE_TLS_CALLBACK);
void __cdecl _set_app_type(int);

// std::terminate is reached by this filter: unwinding finds no handler for the exception.
static LONG WINAPI terminateAtException(EXCEPTION_POINTERS* pointers) {
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    if (record.ExceptionCode == 0xE06D7363 && record.NumberParameters == 4) terminate();
    return EXCEPTION_CONTINUE_SEARCH;
}

#if defined(XO_WIDE)
int __cdecl wmain(int, wchar_t**);
static int callMain() {
    _configure_wide_argv(1);
    _initialize_wide_environment();
    return wmain(*__p___argc(), *__p___wargv());
}
#    define ENTRY wmainCRTStartup
#else
int __cdecl main(int, char**);
static int callMain() { return main(*__p___argc(), *__p___argv()); }
#    define ENTRY mainCRTStartup
#endif

static int start() {
    if (!runInitializers(/*isDll=*/false)) return 255;
    if (threadStart) threadStart(nullptr, DLL_THREAD_ATTACH, nullptr);
    if (threadEnd) _register_thread_local_exe_atexit_callback(threadEnd);
    return callMain();
}

// The C runtime's own filter turns a processor fault into a signal.
int ENTRY() {
    _set_app_type(1);
#if !defined(XO_WIDE)
    _configure_narrow_argv(1);
    _initialize_narrow_environment();
#endif
    SetUnhandledExceptionFilter(terminateAtException);
    __try {
        exit(start());
    } __except (_seh_filter_exe(GetExceptionCode(), GetExceptionInformation())) {
        _exit(static_cast<int>(GetExceptionCode()));
    }
}
}
