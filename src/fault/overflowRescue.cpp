#include "fault/overflowRescue.h"

#include <cstdint>

#include "fault/faultFilter.h"
#include "fault/stackForReport.h"
#include "platform/windows.h"

namespace xo::fault {
namespace {

std::uintptr_t reportingFunction = 0;
std::uintptr_t silentFunction = 0;

bool asksFramesOnOverflow() {
    const HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
    return ntdll == nullptr || ::GetProcAddress(ntdll, "wine_get_version") == nullptr;
}

// The function, known to the system's tables, that contains the address; null for one that calls nobody.
RUNTIME_FUNCTION* functionAt(DWORD64 address, DWORD64& imageBase) {
    return ::RtlLookupFunctionEntry(address, &imageBase, nullptr);
}

void unwindOnce(CONTEXT& context, RUNTIME_FUNCTION* function, DWORD64 imageBase) {
    if (!function) {
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

// Turns the context of the fault into that of the return from the function that the innermost guard called.
bool unwindToGuard(CONTEXT& context, bool& isReported) {
    while (context.Rip != 0) {
        DWORD64 imageBase = 0;
        RUNTIME_FUNCTION* const function = functionAt(context.Rip, imageBase);
        const std::uintptr_t start = function ? imageBase + function->BeginAddress : 0;
        const DWORD64 stackBefore = context.Rsp;
        unwindOnce(context, function, imageBase);
        if (context.Rsp <= stackBefore) return false;  // no stack that anybody could walk
        if (start != 0 && (start == reportingFunction || start == silentFunction)) {
            isReported = start == reportingFunction;
            return true;
        }
    }
    return false;
}

void rescueThread(void* argument) {
    Rescue& rescue = *static_cast<Rescue*>(argument);
    CONTEXT target = *rescue.fault->ContextRecord;
    bool isReported = false;
    if (!unwindToGuard(target, isReported)) return;
    if (isReported) reportFault(*rescue.fault);
    platform::releaseCallsBetween(rescue.fault->ContextRecord->Rsp, target.Rsp);
    target.Rax = 0;  // "false"
    *rescue.fault->ContextRecord = target;
    rescue.isDone = true;
}

LONG CALLBACK handleOverflow(EXCEPTION_POINTERS* fault) {
    if (fault->ExceptionRecord->ExceptionCode != EXCEPTION_STACK_OVERFLOW) return EXCEPTION_CONTINUE_SEARCH;
    if (hasStackForReport()) return EXCEPTION_CONTINUE_SEARCH;  // somebody raised the code: frames are asked as ever
    Rescue rescue{fault, /*isDone=*/false};
    callWithEnoughStack(&rescueThread, &rescue);
    return rescue.isDone ? EXCEPTION_CONTINUE_EXECUTION : EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

OverflowRescue::OverflowRescue(GuardedFunction reporting, GuardedFunction silent)
    : mHandler(asksFramesOnOverflow() ? nullptr : ::AddVectoredExceptionHandler(/*First=*/FALSE, &handleOverflow)) {
    reportingFunction = reinterpret_cast<std::uintptr_t>(reporting);
    silentFunction = reinterpret_cast<std::uintptr_t>(silent);
}

OverflowRescue::~OverflowRescue() {
    if (mHandler) ::RemoveVectoredExceptionHandler(mHandler);
}

}  // namespace xo::fault
