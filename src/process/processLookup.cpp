// Who runs here, and who started it.
#include "platform/handle.h"
#include "xoSystem/xoProcess.h"

#include <tlhelp32.h>

namespace xo {
namespace {

// A snapshot fails with -1, as a file does.
using SnapshotHandle = platform::FileHandle;

// The identifier that the system has on record, which says nothing about who has it now. 0 when there is none.
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

// The number of a process that has ended is given to another one, and that one is younger than the child. A process
// that may not be asked, a service for one, is believed.
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
