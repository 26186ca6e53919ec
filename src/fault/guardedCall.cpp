#include "fault/guardedCall.h"

#include <malloc.h>
#include <xmmintrin.h>

#include <algorithm>

#include "fault/faultFilter.h"
#include "fault/overflowRescue.h"

namespace xo::fault {
namespace {

// Read back, so that the compiler does not take the result of a call for granted. One for each of the two functions, so
// that no linker folds them into one.
volatile bool isReportingDone = true;
volatile bool isSilentDone = true;

struct Call {
    Function function;
    void* argument;
    DWORD faultCode;
};

// The rescue knows these two on the stack by their addresses, and makes them return false.
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

const OverflowRescue rescue(&runReporting, &runSilently);

// Where Windows asks the filters of an overflowed stack, they run on what is reserved for that. A small stack gives a
// small part of itself.
// https://learn.microsoft.com/windows/win32/api/processthreadsapi/nf-processthreadsapi-setthreadstackguarantee
void reserveStackOnce() {
    thread_local bool isReserved = false;
    if (isReserved) return;
    isReserved = true;
    constexpr ULONG_PTR kMostReserved = 64 * 1024, kPart = 16;
    ULONG_PTR low = 0, high = 0;
    ::GetCurrentThreadStackLimits(&low, &high);
    auto size = static_cast<ULONG>((std::min)(kMostReserved, (high - low) / kPart));
    ::SetThreadStackGuarantee(&size);  // refused for a tiny stack, which then has to do without
}

// The thread goes on: what the fault left behind must not strike again.
void recover(DWORD code) {
    if (code == EXCEPTION_STACK_OVERFLOW) ::_resetstkoflw();
    constexpr unsigned kExceptionFlags = 0x3F;
    ::_mm_setcsr(::_mm_getcsr() & ~kExceptionFlags);
#if defined(__GNUC__)
    __asm__ volatile("fnclex");  // the x87 unit has its long doubles only with these compilers
#endif
}

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
    Call call{function, argument, EXCEPTION_STACK_OVERFLOW};  // the code holds when the rescue makes the call fail
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
