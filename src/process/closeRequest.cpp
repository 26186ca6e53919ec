#include "process/closeRequest.h"

#include "platform/handle.h"

namespace xo::process {
namespace {

BOOL CALLBACK closeIfOwned(HWND window, LPARAM processId) {
    DWORD owner = 0;
    ::GetWindowThreadProcessId(window, &owner);
    if (owner == static_cast<DWORD>(processId)) ::PostMessageW(window, WM_CLOSE, 0, 0);
    return TRUE;  // the process may own more of them
}

}  // namespace

void requestClose(DWORD processId, DWORD mainThreadId) {
    ::EnumWindows(&closeIfOwned, static_cast<LPARAM>(processId));

    // A process may outlive its main thread, whose number then may be another's; an open handle keeps it from changing.
    const platform::KernelHandle mainThread(
        ::OpenThread(THREAD_QUERY_LIMITED_INFORMATION, /*bInheritHandle=*/FALSE, mainThreadId));
    if (mainThread && ::GetProcessIdOfThread(mainThread.get()) == processId)
        ::PostThreadMessageW(mainThreadId, WM_CLOSE, 0, 0);
}

}  // namespace xo::process
