// The start of a child process.
#ifndef XO_PROCESS_LAUNCH_H
#define XO_PROCESS_LAUNCH_H

#include <string>
#include <vector>

#include "platform/handle.h"
#include "process/redirection.h"
#include "xoSystem/xoProcess.h"

namespace xo::process {

// What to start; UTF-8, as xoProcess has it.
struct Launch {
    const std::string& program;
    const std::vector<std::string>& arguments;
    const std::vector<std::string>& environment;  // empty: that of this process
    const std::string& workingDirectory;          // empty: that of this process
    bool makeAbsolute;
    ProcessPriority priority;
    const Redirection& redirection;
    xoProcess::ProcessTree tree;
};

struct Child {
    platform::KernelHandle process;  // none when the start failed; the identifiers are 0 then
    DWORD processId = 0;
    DWORD mainThreadId = 0;
    platform::KernelHandle job;   // of a tree that is not loose
    StandardHandles handles;      // of which this process's ends are left
    DWORD error = ERROR_SUCCESS;  // why the start failed
};

// A failure is logged.
Child launch(const Launch& wanted);

// The priority as a flag of CreateProcessW.
DWORD priorityClass(ProcessPriority priority);

}  // namespace xo::process

#endif
