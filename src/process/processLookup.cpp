// Finds the identifiers of this process and of the parents of processes.
#include "platform/handle.h"
#include "xoSystem/xoProcess.h"

#include <tlhelp32.h>

namespace xo {
namespace {

// Creating a snapshot fails with INVALID_HANDLE_VALUE, as opening a file does.
using SnapshotHandle = platform::FileHandle;

// The identifier of the parent that Windows recorded when the process started. It may belong to another process by now.
// 0 when there is no such process. https://learn.microsoft.com/windows/win32/api/tlhelp32/ns-tlhelp32-processentry32w
DWORD recordedParent(DWORD processId) {
    const SnapshotHandle snapshot(::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (!snapshot) return 0;
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL found = ::Process32FirstW(snapshot.get(), &entry); found;
         found = ::Process32NextW(snapshot.get(), &entry)) {
        if (entry.th32ProcessID == processId) return entry.th32ParentProcessID;
    }
    return 0;
}

// None when the process has ended, or may not be opened.
platform::KernelHandle openProcess(DWORD processId) {
    return platform::KernelHandle(
        ::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, /*bInheritHandle=*/FALSE, processId));
}

// False when the time cannot be read.
bool readStart(const platform::KernelHandle& process, FILETIME& start) {
    FILETIME exit;
    FILETIME kernel;
    FILETIME user;
    return process && ::GetProcessTimes(process.get(), &start, &exit, &kernel, &user);
}

// When the parent has ended, its identifier may belong to another process, which started after the child. The clock is
// coarse, so a parent may have the same start time as its child. A process that may not be opened, such as a service,
// or whose time cannot be read, counts as the parent.
bool mayBeParent(DWORD parentId, DWORD childId) {
    const platform::KernelHandle parent = openProcess(parentId);
    if (!parent) return ::GetLastError() == ERROR_ACCESS_DENIED;
    FILETIME parentStart;
    FILETIME childStart;
    if (!readStart(parent, parentStart) || !readStart(openProcess(childId), childStart)) return true;
    return ::CompareFileTime(&parentStart, &childStart) <= 0;
}

}  // namespace

std::uint32_t xoProcess::GetCurrentProcessId() { return ::GetCurrentProcessId(); }

std::uint32_t xoProcess::GetParentProcessId() { return GetParentProcessId(::GetCurrentProcessId()); }

std::uint32_t xoProcess::GetParentProcessId(std::uint32_t pid) {
    const DWORD parent = recordedParent(pid);
    return parent != 0 && mayBeParent(parent, pid) ? parent : 0;
}

}  // namespace xo
