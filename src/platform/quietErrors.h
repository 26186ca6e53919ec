// Calls that may ask for a drive without a medium.
#ifndef XO_PLATFORM_QUIETERRORS_H
#define XO_PLATFORM_QUIETERRORS_H

#include "platform/windows.h"

namespace xo::platform {

// While it exists, calls of this thread fail for a drive without a medium. Otherwise the system might show a message
// box in the host that asks the user for one. It belongs to the thread that makes it.
// https://learn.microsoft.com/windows/win32/api/errhandlingapi/nf-errhandlingapi-setthreaderrormode
class QuietErrors {
public:
    QuietErrors() { ::SetThreadErrorMode(mBefore | SEM_FAILCRITICALERRORS, /*lpOldMode=*/nullptr); }
    ~QuietErrors() { ::SetThreadErrorMode(mBefore, /*lpOldMode=*/nullptr); }
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;

private:
    const DWORD mBefore = ::GetThreadErrorMode();
};

}  // namespace xo::platform

#endif
