// The start of a child process.
#ifndef XO_PROCESS_LAUNCH_H
#define XO_PROCESS_LAUNCH_H

#include <string>
#include <vector>

#include "platform/handle.h"
#include "process/redirection.h"
#include "xoSystem/xoProcess.h"

namespace xo::process {

// What to start, in UTF-8. It refers to the caller's objects, which must exist until launch() returns.
struct Launch {
    const std::string& program;
    const std::vector<std::string>& arguments;
    const std::vector<std::string>& environment;  // empty: that of this process
    const std::string& workingDirectory;          // empty: that of this process
    bool makeAbsolute;                            // as startProcess() documents it
    ProcessPriority priority;
    const Redirection& redirection;
    xoProcess::ProcessTree tree;
};

// A started child. Whoever gets it owns its handles and the pipes.
struct Child {
    platform::KernelHandle process;  // none when the start failed; the identifiers are 0 then
    DWORD processId = 0;
    DWORD mainThreadId = 0;
    platform::KernelHandle job;   // of a tree that is not loose
    StandardHandles handles;      // only this process's ends; the child's are closed
    DWORD error = ERROR_SUCCESS;  // why the start failed
};

// Starts a child. A failure is logged by a DEBUG line.
Child launch(const Launch& wanted);

// The priority as a flag of CreateProcessW. Unknown numbers count as ProcessPriorityInherit.
DWORD priorityClass(ProcessPriority priority);

}  // namespace xo::process

#endif
