#include "fault/guardedCall.h"

#include <malloc.h>
#include <xmmintrin.h>

#include "fault/faultFilter.h"
#include "fault/overflowRescue.h"

// libstdc++ calls its own macro so; the frames below want the compiler's word.
#undef __try

namespace xo::fault {
namespace {

// For the filter of a stack overflow, where the system asks filters then.
constexpr ULONG kReservedStack = 64 * 1024;

// Read back, so that the compiler does not take the result of a call for granted. One for each of the two functions, so
// that no linker folds them into one.
volatile bool isReportedDone = true;
volatile bool isQuietDone = true;

// What a frame calls in its __try. The rescue knows these two on the stack by their addresses, and makes them return
// false. They are not inlined: a fault in the very function of a __try would pass by it.
__declspec(noinline) bool runReported(Function function, void* argument) {
    function(argument);
    return isReportedDone;
}

__declspec(noinline) bool runQuiet(Function function, void* argument) {
    function(argument);
    return isQuietDone;
}

const OverflowRescue rescue(&runReported, &runQuiet);

void reserveStackOnce() {
    thread_local bool isReserved = false;
    if (isReserved) return;
    isReserved = true;
    ULONG size = kReservedStack;
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

long filterQuietly(DWORD code, std::uint32_t* faultCode) {
    if (faultCode) *faultCode = code;
    return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

bool callGuarded(Function function, void* argument) {
    reserveStackOnce();
    DWORD code = EXCEPTION_STACK_OVERFLOW;  // holds when the rescue made the call return false
    __try {
        if (runReported(function, argument)) return true;
    } __except (filterFault(GetExceptionInformation())) {
        code = GetExceptionCode();
    }
    recover(code);
    return false;
}

bool callQuietly(Function function, void* argument, std::uint32_t* faultCode) {
    DWORD code = EXCEPTION_STACK_OVERFLOW;
    __try {
        if (runQuiet(function, argument)) return true;
        filterQuietly(code, faultCode);
    } __except (filterQuietly(GetExceptionCode(), faultCode)) {
        code = GetExceptionCode();
    }
    recover(code);
    return false;
}

}  // namespace xo::fault
