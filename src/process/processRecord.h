// The private record of xoProcess, for the sources that it is spread over.
#ifndef XO_PROCESS_PROCESSRECORD_H
#define XO_PROCESS_PROCESSRECORD_H

#include "process/childStreams.h"
#include "process/launch.h"
#include "xoSystem/xoNamedPipe.h"

namespace xo {

struct xoProcess::Private {
    // What the host has set.
    std::vector<std::string> arguments;
    std::vector<std::string> environment;
    std::string workingDirectory;
    std::string program;
    process::Redirection redirection;
    ProcessTree tree = ProcessTreeLoose;

    // The child.
    State state = StateNone;
    platform::KernelHandle process;  // while running; none is null, because -1 is the pseudo handle of this process
    DWORD processId = 0;             // valid while process is held
    DWORD mainThreadId = 0;          // valid while process is held
    int exitCode = 0;                // valid once the child has ended
    bool hasCrashed = false;         // valid once the child has ended
    bool hasStarted = false;         // by the last attempt
    DWORD startError = ERROR_SUCCESS;

    // Of the last start, also once the child has ended.
    platform::KernelHandle job;                      // of a tree that is not loose
    std::unique_ptr<process::ChildStreams> streams;  // of a child with standard handles
    std::unique_ptr<xoNamedPipe> inputPipe, outputPipe, errorPipe;

    bool start(const std::string& newProgram, const std::vector<std::string>& newArguments, bool makeAbsolute,
               ProcessPriority priority);
    void connect(process::StandardHandles& handles);
    // Looks at the child. True when its streams may have more to move at once.
    bool poll();
    bool isRunning() {
        poll();
        return state == StateRunning;
    }
    // Waits for the child's end, or for something to move.
    void wait(DWORD timeoutMs);
    void kill();
    void reset(State newState);
    void closeHandle();
};

}  // namespace xo

#endif
