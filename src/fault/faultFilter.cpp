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

// Floating-point faults that the faulting code asked for must not strike in its report.
class MaskedFloatingPoint {
public:
    MaskedFloatingPoint() : mBefore(::_mm_getcsr()) {
        constexpr unsigned kAllMasked = 0x1F80;
        ::_mm_setcsr(kAllMasked);
    }
    ~MaskedFloatingPoint() { ::_mm_setcsr(mBefore); }
    MaskedFloatingPoint(const MaskedFloatingPoint&) = delete;
    MaskedFloatingPoint& operator=(const MaskedFloatingPoint&) = delete;

private:
    unsigned mBefore;
};

// Where a stack overflow was reached by recursion, the innermost frames say it all.
constexpr int kMostFrames = 1000;
constexpr int kMostFramesOfOverflow = 64;

void writeReport(void* argument) {
    const auto& fault = *static_cast<const EXCEPTION_POINTERS*>(argument);
    const DWORD code = fault.ExceptionRecord->ExceptionCode;
    try {
        std::string text = describeFault(code);
        if (!isReporting())
            appendStackTrace(text, *fault.ContextRecord,
                             code == EXCEPTION_STACK_OVERFLOW ? kMostFramesOfOverflow : kMostFrames);
        emitReport(text);
    } catch (...) {  // out of memory, even for a line
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
