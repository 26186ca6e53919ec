// Writes the report of a fault, on enough stack and with floating-point exceptions masked.
#include "fault/faultFilter.h"

#include <xmmintrin.h>

#include <string>

#include "fault/faultText.h"
#include "fault/guardedCall.h"
#include "fault/report.h"
#include "fault/stackForReport.h"
#include "fault/stackTrace.h"

namespace xo::fault {
namespace {

// Masks the floating-point exceptions that the faulting code may have enabled: none may occur while its report is
// written.
class MaskedFloatingPoint {
public:
    MaskedFloatingPoint() : mBefore(::_mm_getcsr()) {
        constexpr unsigned kAllMasked = 0x1F80;  // the default of MXCSR: all exceptions masked, no flag set
        ::_mm_setcsr(kAllMasked);
    }
    ~MaskedFloatingPoint() { ::_mm_setcsr(mBefore); }
    MaskedFloatingPoint(const MaskedFloatingPoint&) = delete;
    MaskedFloatingPoint& operator=(const MaskedFloatingPoint&) = delete;

private:
    unsigned mBefore;
};

// The trace of a stack overflow is shorter, because most of its frames repeat those of a recursion.
constexpr int kMostFrames = 1000;
constexpr int kMostFramesOfOverflow = 64;

void writeReport(void* argument) {
    const auto& fault = *static_cast<const EXCEPTION_POINTERS*>(argument);
    const DWORD code = fault.ExceptionRecord->ExceptionCode;
    try {
        std::string text = describeFault(code);
        // A fault in sending a report is reported without a trace, which would take long and might fault again.
        if (!isReporting())
            appendStackTrace(text, *fault.ContextRecord,
                             code == EXCEPTION_STACK_OVERFLOW ? kMostFramesOfOverflow : kMostFrames);
        emitReport(text);
    } catch (...) {  // such as std::bad_alloc: there is no report
    }
}

}  // namespace

void reportFault(const EXCEPTION_POINTERS& fault) {
    const MaskedFloatingPoint masked;
    callWithEnoughStack(&writeReport, const_cast<EXCEPTION_POINTERS*>(&fault));
}

long filterFault(const EXCEPTION_POINTERS* fault) {
    reportFault(*fault);
    return isLanguageException(fault->ExceptionRecord->ExceptionCode) ? EXCEPTION_CONTINUE_SEARCH
                                                                      : EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace xo::fault
