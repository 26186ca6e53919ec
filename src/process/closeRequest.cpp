// Asks a process to close by WM_CLOSE: https://learn.microsoft.com/windows/win32/winmsg/wm-close
#include "process/closeRequest.h"

#include "platform/handle.h"

namespace xo::process {
namespace {

BOOL CALLBACK closeIfOwned(HWND window, LPARAM processId) {
    DWORD owner = 0;
    ::GetWindowThreadProcessId(window, &owner);
    if (owner == static_cast<DWORD>(processId)) ::PostMessageW(window, WM_CLOSE, 0, 0);
    return TRUE;  // continues: the process may own more windows
}

}  // namespace

void requestClose(DWORD processId, DWORD mainThreadId) {
    // The messages are posted, not sent, so that a child that hangs cannot block the caller.
    ::EnumWindows(&closeIfOwned, static_cast<LPARAM>(processId));

    // A process may outlive its main thread, whose identifier may then belong to a thread of another process. Windows
    // does not reuse it while the handle is open.
    const platform::KernelHandle mainThread(
        ::OpenThread(THREAD_QUERY_LIMITED_INFORMATION, /*bInheritHandle=*/FALSE, mainThreadId));
    if (mainThread && ::GetProcessIdOfThread(mainThread.get()) == processId)
        ::PostThreadMessageW(mainThreadId, WM_CLOSE, 0, 0);
}

}  // namespace xo::process
