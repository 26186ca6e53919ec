// Reports faults outside any guard, by signal handlers and by an exception filter of the process. The handlers alone
// are not enough: Microsoft's C runtime calls them only from the frames of main and _beginthreadex, so not in a thread
// made by CreateThread, and it has no signal for an integer division by zero. The filter reports what no handler has
// reported. https://learn.microsoft.com/en-us/cpp/c-runtime-library/reference/signal
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

// The signal for a fault; 0 for an exception without one.
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

// A fault is identified by the address of its instruction. When a handler returns, the instruction runs and faults
// again, and that must not be reported a second time.
constexpr std::uintptr_t kNowhere = UINTPTR_MAX;
thread_local std::uintptr_t fault = kNowhere;          // for which reportUnhandled is running on this thread
thread_local std::uintptr_t reportedFault = kNowhere;  // the last one that was reported on this thread

std::uintptr_t addressOf(const EXCEPTION_POINTERS& pointers) {
    return reinterpret_cast<std::uintptr_t>(pointers.ExceptionRecord->ExceptionAddress);
}

// The handler. Microsoft's runtime passes the fault by __pxcptinfoptrs, which is null when the program itself has
// raised the signal. GCC's runtime calls the handler from its own exception filter, which reportUnhandled has called.
void reportSignal(int signal) {
    const auto* const pointers = static_cast<const EXCEPTION_POINTERS*>(*__pxcptinfoptrs());
    reportedFault = pointers ? addressOf(*pointers) : fault;
    emitReport("Catch signal ", signalName(signal));
}

// The filter that was set before this one, which is called first. Null when there was none.
std::atomic<LPTOP_LEVEL_EXCEPTION_FILTER> filterBefore{nullptr};
bool isFilterInChain = false;

// Called by Windows for an exception that no frame of its thread handles; the process ends after it, unless the answer
// is EXCEPTION_CONTINUE_EXECUTION.
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

// If the host has set another filter meanwhile, it stays. It may call this filter, which therefore stays in the chain
// and only passes exceptions on.
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
