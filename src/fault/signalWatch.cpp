// A C runtime calls signal handlers for faults that nothing handles, but not for all: Microsoft's calls them from the
// frames of main and _beginthreadex, so that a thread made by CreateThread has none, and knows no signal for an integer
// division by zero. So a filter of the process reports what no handler has reported.
// https://learn.microsoft.com/en-us/cpp/c-runtime-library/reference/signal
// https://learn.microsoft.com/en-us/windows/win32/api/errhandlingapi/nf-errhandlingapi-setunhandledexceptionfilter
#include "fault/signalWatch.h"

#include <atomic>
#include <csignal>
#include <cstdint>
#include <string_view>

#include "fault/report.h"
#include "platform/windows.h"
#include "xoSystem/xoException.h"

namespace xo {
namespace fault {
namespace {

constexpr int kWatched[] = {SIGFPE, SIGILL, SIGSEGV};
std::atomic<bool> isInstalled{false};

std::string_view signalName(int signal) {
    switch (signal) {
        case SIGILL: return "SIGILL";
        case SIGFPE: return "SIGFPE";
        case SIGSEGV: return "SIGSEGV";
        default: return {};
    }
}

// The signal that a fault stands for; 0 for an exception of another kind.
int signalOf(DWORD exceptionCode) {
    switch (exceptionCode) {
        case EXCEPTION_ACCESS_VIOLATION: return SIGSEGV;
        case EXCEPTION_ILLEGAL_INSTRUCTION:
        case EXCEPTION_PRIV_INSTRUCTION: return SIGILL;
        case EXCEPTION_FLT_DENORMAL_OPERAND:
        case EXCEPTION_FLT_DIVIDE_BY_ZERO:
        case EXCEPTION_FLT_INEXACT_RESULT:
        case EXCEPTION_FLT_INVALID_OPERATION:
        case EXCEPTION_FLT_OVERFLOW:
        case EXCEPTION_FLT_STACK_CHECK:
        case EXCEPTION_FLT_UNDERFLOW:
        case EXCEPTION_INT_DIVIDE_BY_ZERO:
        case EXCEPTION_INT_OVERFLOW: return SIGFPE;
        default: return 0;
    }
}

// Once a handler has returned, the instruction runs and faults again: it is recognised by its address.
constexpr std::uintptr_t kNowhere = UINTPTR_MAX;
thread_local std::uintptr_t fault = kNowhere;          // that the filter below is called for
thread_local std::uintptr_t reportedFault = kNowhere;  // the last one of this thread

std::uintptr_t addressOf(const EXCEPTION_POINTERS& pointers) {
    return reinterpret_cast<std::uintptr_t>(pointers.ExceptionRecord->ExceptionAddress);
}

// Microsoft's runtime tells the handler of the fault; it tells of none when the program raises the signal itself.
// GCC's calls the handler from a filter, which reportUnhandled calls.
void reportSignal(int signal) {
    const auto* const pointers = static_cast<const EXCEPTION_POINTERS*>(*__pxcptinfoptrs());
    reportedFault = pointers ? addressOf(*pointers) : fault;
    emitReport("Catch signal ", signalName(signal));
}

std::atomic<LPTOP_LEVEL_EXCEPTION_FILTER> filterBefore{nullptr};
bool isFilterInChain = false;

LONG WINAPI reportUnhandled(EXCEPTION_POINTERS* pointers) {
    const LPTOP_LEVEL_EXCEPTION_FILTER before = filterBefore;
    const int signal = signalOf(pointers->ExceptionRecord->ExceptionCode);
    fault = addressOf(*pointers);
    const LONG answer = before ? before(pointers) : EXCEPTION_CONTINUE_SEARCH;
    if (answer != EXCEPTION_CONTINUE_EXECUTION && signal != 0 && isInstalled && reportedFault != fault) {
        reportedFault = fault;
        emitReport("Catch signal ", signalName(signal));
    }
    fault = kNowhere;
    return answer;
}

void installFilter() {
    if (isFilterInChain) return;
    isFilterInChain = true;
    filterBefore = ::SetUnhandledExceptionFilter(&reportUnhandled);
}

// A filter that the host has set meanwhile stays, and this one stays behind it: it passes on what it is called for.
void removeFilter() {
    const LPTOP_LEVEL_EXCEPTION_FILTER current = ::SetUnhandledExceptionFilter(filterBefore);
    if (current == &reportUnhandled) {
        isFilterInChain = false;
    } else {
        ::SetUnhandledExceptionFilter(current);
    }
}

}  // namespace

void installSignalWatch() {
    isInstalled = true;
    watchSignalsOfThread();
    installFilter();
}

void watchSignalsOfThread() {
    if (!isInstalled) return;
    for (const int signal : kWatched) std::signal(signal, &reportSignal);
}

void removeSignalWatch() {
    for (const int signal : kWatched) std::signal(signal, SIG_DFL);
    removeFilter();
    isInstalled = false;
}

}  // namespace fault

bool exception::IsSigWatcherRegistered() { return fault::isInstalled; }

}  // namespace xo
