// Crashes as it is told, with a log file in the folder given: crasher crash folder
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/windows.h"
// CommandLineToArgvW
#include <shellapi.h>

#include "xoSystem/xoException.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoLog.h"

int main() {
    int count = 0;
    wchar_t** const arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (count != 3) return 2;
    const std::wstring crash = arguments[1];
    xo::initializeXoSystem(xo::InitTypeFull);
    xo::xoLog::edit().installFileHandlerUtf8((std::filesystem::path(arguments[2]) / L"log").u8string());

    volatile int dividend = 100;
    volatile int zero = 0;
    if (crash == L"violation") *static_cast<volatile int*>(nullptr) = 1;
    if (crash == L"division") dividend = dividend / zero;
    if (crash == L"illegal") __builtin_trap();
    if (crash == L"guardedAbort") xo::exception::impl::ExecGuardedCode(&std::abort);
    return 1;
}
