// Calls functions so that a fault in them ends the call: by exception filters, and on Wine by OverflowRescue.
#include "fault/guardedCall.h"

#include <malloc.h>
#include <xmmintrin.h>

#include <algorithm>

#include "fault/faultFilter.h"
#include "fault/overflowRescue.h"

namespace xo::fault {
namespace {

// The results of the two functions below: volatile, because OverflowRescue can make the functions return false, which
// the compiler must not rule out; and one for each function, so that the linker does not fold the two functions.
// https://learn.microsoft.com/cpp/build/reference/opt-optimizations
volatile bool isReportingDone = true;
volatile bool isSilentDone = true;

// The faultCode is set by the filters.
struct Call {
    Function function;
    void* argument;
    DWORD faultCode;
};

// OverflowRescue finds these two functions on the stack by their addresses and makes them return false.
bool runReporting(void* argument) {
    const Call& call = *static_cast<Call*>(argument);
    call.function(call.argument);
    return isReportingDone;
}

bool runSilently(void* argument) {
    const Call& call = *static_cast<Call*>(argument);
    call.function(call.argument);
    return isSilentDone;
}

// Registered when the library is loaded, before any guarded call.
const OverflowRescue rescue(&runReporting, &runSilently);

// At a stack overflow Windows runs the exception filters on the part of the stack that is reserved here. It is at most
// a sixteenth of the stack, so that a small stack stays usable.
// https://learn.microsoft.com/windows/win32/api/processthreadsapi/nf-processthreadsapi-setthreadstackguarantee
void reserveStackOnce() {
    thread_local bool isReserved = false;
    if (isReserved) return;
    isReserved = true;
    constexpr ULONG_PTR kMostReserved = 0x10000, kPart = 16;
    ULONG_PTR low = 0, high = 0;
    ::GetCurrentThreadStackLimits(&low, &high);
    auto size = static_cast<ULONG>((std::min)(kMostReserved, (high - low) / kPart));
    ::SetThreadStackGuarantee(&size);  // fails for a very small stack, which then has no reserve
}

// Prepares the thread to continue: restores the guard page of an overflowed stack, without which the next overflow ends
// the process, and clears the floating-point flags, because a later instruction would raise a pending x87 exception.
// https://learn.microsoft.com/cpp/c-runtime-library/reference/resetstkoflw
void recover(DWORD code) {
    if (code == EXCEPTION_STACK_OVERFLOW) ::_resetstkoflw();
    constexpr unsigned kExceptionFlags = 0x3F;
    ::_mm_setcsr(::_mm_getcsr() & ~kExceptionFlags);
#if defined(__GNUC__)
    __asm__ volatile("fnclex");  // only these compilers use the x87 unit, for long double
#endif
}

// The filters run at the fault, on the stack of the faulting thread, before anything is unwound.
long filterReporting(const EXCEPTION_POINTERS& fault, void* argument) {
    static_cast<Call*>(argument)->faultCode = fault.ExceptionRecord->ExceptionCode;
    return filterFault(&fault);
}

long filterSilently(const EXCEPTION_POINTERS& fault, void* argument) {
    static_cast<Call*>(argument)->faultCode = fault.ExceptionRecord->ExceptionCode;
    return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

bool callReporting(Function function, void* argument) {
    reserveStackOnce();
    Call call{function, argument, EXCEPTION_STACK_OVERFLOW};  // the code if OverflowRescue ends the call
    if (platform::callFiltered(&runReporting, &call, &filterReporting, &call)) return true;
    recover(call.faultCode);
    return false;
}

bool callSilently(Function function, void* argument, std::uint32_t* faultCode) {
    Call call{function, argument, EXCEPTION_STACK_OVERFLOW};
    if (platform::callFiltered(&runSilently, &call, &filterSilently, &call)) return true;
    if (faultCode) *faultCode = call.faultCode;
    recover(call.faultCode);
    return false;
}

}  // namespace xo::fault
