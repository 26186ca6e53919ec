// Crashes as its argument says, with the file "log" of the working directory as its log.
#include <cstdlib>
#include <string_view>

#include "platform/windows.h"
#include "xoSystem/xoException.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoLog.h"

namespace {

void executeNothing() {
#if defined(_MSC_VER)
    __ud2();
#else
    __builtin_trap();
#endif
}

DWORD WINAPI divideByZero(void*) {
    volatile int zero = 0;
    volatile int dividend = 100;
    dividend = dividend / zero;
    return 0;
}

// A thread that no runtime knows of.
void divideOnAnotherThread() {
    ::WaitForSingleObject(::CreateThread(nullptr, 0, &divideByZero, nullptr, 0, nullptr), INFINITE);
}

// A filter of the host's, which is older than the library's, recovers from the fault by letting the thread end.
LONG WINAPI endThread(EXCEPTION_POINTERS* pointers) {
    pointers->ContextRecord->Rip = reinterpret_cast<DWORD64>(&::ExitThread);
    pointers->ContextRecord->Rcx = 0;
    pointers->ContextRecord->Rsp &= ~DWORD64{15};
    pointers->ContextRecord->Rsp -= 8;
    return EXCEPTION_CONTINUE_EXECUTION;
}

}  // namespace

int main(int, char** arguments) {
    const std::string_view crash = arguments[1];
    if (crash == "recovered") ::SetUnhandledExceptionFilter(&endThread);
    xo::initializeXoSystem(xo::InitTypeFull);
    xo::xoLog::edit().installFileHandlerUtf8("log");

    if (crash == "violation") *static_cast<volatile int*>(nullptr) = 1;
    if (crash == "division") divideByZero(nullptr);
    if (crash == "divisionOnThread" || crash == "recovered") divideOnAnotherThread();
    if (crash == "illegal") executeNothing();
    if (crash == "guardedAbort") xo::exception::impl::ExecGuardedCode(&std::abort);
    xo::terminateXoSystem();
    if (crash == "recovered") return ::SetUnhandledExceptionFilter(nullptr) == &endThread ? 7 : 8;
    return 1;
}
