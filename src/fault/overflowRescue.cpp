// Unwinds a thread that has overflowed its stack to its innermost guard, on Wine.
#include "fault/overflowRescue.h"

#include <cstdint>

#include "fault/faultFilter.h"
#include "fault/stackForReport.h"
#include "platform/windows.h"

namespace xo::fault {
namespace {

// The functions of the guards, set before the first overflow can be handled.
std::uintptr_t reportingFunction = 0;
std::uintptr_t silentFunction = 0;

// True on Windows; Wine is recognised by a function that only its ntdll.dll exports.
bool callsFiltersOnOverflow() {
    const HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
    return ntdll == nullptr || ::GetProcAddress(ntdll, "wine_get_version") == nullptr;
}

// The entry of the unwind tables for the function that contains the address; null for a leaf function, which has none.
// https://learn.microsoft.com/cpp/build/exception-handling-x64
RUNTIME_FUNCTION* functionAt(DWORD64 address, DWORD64& imageBase) {
    return ::RtlLookupFunctionEntry(address, &imageBase, nullptr);
}

// Changes the context to that of the caller of its function.
void unwindOnce(CONTEXT& context, RUNTIME_FUNCTION* function, DWORD64 imageBase) {
    if (!function) {  // a leaf function leaves the stack pointer at its return address
        context.Rip = *reinterpret_cast<const DWORD64*>(context.Rsp);
        context.Rsp += sizeof(DWORD64);
        return;
    }
    void* handlerData = nullptr;
    DWORD64 frame = 0;
    ::RtlVirtualUnwind(UNW_FLAG_NHANDLER, imageBase, context.Rip, function, &context, &handlerData, &frame, nullptr);
}

struct Rescue {
    const EXCEPTION_POINTERS* fault;
    bool isDone;
};

// Unwinds the context of the fault to the return from runReporting or runSilently, whichever is the innermost. The
// result is false when neither is found; isReported is whether it is runReporting.
bool unwindToGuard(CONTEXT& context, bool& isReported) {
    while (context.Rip != 0) {
        DWORD64 imageBase = 0;
        RUNTIME_FUNCTION* const function = functionAt(context.Rip, imageBase);
        const std::uintptr_t start = function ? imageBase + function->BeginAddress : 0;
        const DWORD64 stackBefore = context.Rsp;
        unwindOnce(context, function, imageBase);
        if (context.Rsp <= stackBefore) return false;  // the stack is corrupt
        if (start != 0 && (start == reportingFunction || start == silentFunction)) {
            isReported = start == reportingFunction;
            return true;
        }
    }
    return false;
}

// Changes the context of the fault to that behind the call of the guarded function. Nothing is changed without a guard.
void rescueThread(void* argument) {
    Rescue& rescue = *static_cast<Rescue*>(argument);
    CONTEXT target = *rescue.fault->ContextRecord;
    bool isReported = false;
    if (!unwindToGuard(target, isReported)) return;
    if (isReported) reportFault(*rescue.fault);
    platform::releaseCallsBetween(rescue.fault->ContextRecord->Rsp, target.Rsp);
    target.Rax = 0;  // the result of that function: false
    *rescue.fault->ContextRecord = target;
    rescue.isDone = true;
}

LONG CALLBACK handleOverflow(EXCEPTION_POINTERS* fault) {
    if (fault->ExceptionRecord->ExceptionCode != EXCEPTION_STACK_OVERFLOW) return EXCEPTION_CONTINUE_SEARCH;
    if (hasStackForReport()) return EXCEPTION_CONTINUE_SEARCH;  // raised by software, and filters can run
    Rescue rescue{fault, /*isDone=*/false};
    callWithEnoughStack(&rescueThread, &rescue);
    return rescue.isDone ? EXCEPTION_CONTINUE_EXECUTION : EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

OverflowRescue::OverflowRescue(GuardedFunction reporting, GuardedFunction silent)
    : mHandler(callsFiltersOnOverflow() ? nullptr : ::AddVectoredExceptionHandler(/*First=*/FALSE, &handleOverflow)) {
    reportingFunction = reinterpret_cast<std::uintptr_t>(reporting);
    silentFunction = reinterpret_cast<std::uintptr_t>(silent);
}

OverflowRescue::~OverflowRescue() {
    if (mHandler) ::RemoveVectoredExceptionHandler(mHandler);
}

}  // namespace xo::fault
