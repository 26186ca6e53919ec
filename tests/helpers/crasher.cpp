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

}  // namespace

int main(int, char** arguments) {
    const std::string_view crash = arguments[1];
    xo::initializeXoSystem(xo::InitTypeFull);
    xo::xoLog::edit().installFileHandlerUtf8("log");

    volatile int zero = 0;
    volatile int dividend = 100;
    if (crash == "violation") *static_cast<volatile int*>(nullptr) = 1;
    if (crash == "division") dividend = dividend / zero;
    if (crash == "illegal") executeNothing();
    if (crash == "guardedAbort") xo::exception::impl::ExecGuardedCode(&std::abort);
    return 1;
}
