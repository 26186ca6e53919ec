// The private record of xoProcess, whose functions are in several sources. One thread at a time uses it.
#ifndef XO_PROCESS_PROCESSRECORD_H
#define XO_PROCESS_PROCESSRECORD_H

#include "process/childStreams.h"
#include "process/launch.h"
#include "xoSystem/xoNamedPipe.h"

namespace xo {

struct xoProcess::Private {
    // The longest wait for a killed child. It ends only when its pending input and output has completed, which a driver
    // may delay for long.
    static constexpr unsigned kKilledWaitMs = 5000;

    // What the host has set.
    std::vector<std::string> arguments;
    std::vector<std::string> environment;
    std::string workingDirectory;
    std::string program;
    process::Redirection redirection;
    ProcessTree tree = ProcessTreeLoose;

    // The child.
    State state = StateNone;
    platform::KernelHandle process;    // while running; -1 cannot mean "none": it is the pseudo handle of this process
    DWORD processId = 0;               // valid while process is held
    DWORD mainThreadId = 0;            // valid while process is held
    int exitCode = 0;                  // valid once the child has ended
    bool hasCrashed = false;           // valid once the child has ended
    bool hasStarted = false;           // whether the last start succeeded
    DWORD startError = ERROR_SUCCESS;  // why the last start failed

    // Belong to the last start, and are kept after the child has ended, until the next start.
    platform::KernelHandle job;                      // of a tree that is not loose; closing it ends a tied tree
    std::unique_ptr<process::ChildStreams> streams;  // of a child with standard handles
    std::unique_ptr<xoNamedPipe> inputPipe, outputPipe, errorPipe;  // of the choice Pipe, null otherwise

    // False when a child is running, or when the start fails, with the reason in startError.
    bool start(const std::string& newProgram, const std::vector<std::string>& newArguments, bool makeAbsolute,
               ProcessPriority priority);
    // Distributes this process's ends of the pipes: to `streams`, or to the pipes that the host uses itself.
    void connect(process::StandardHandles& handles);
    // Moves what the streams have, and notices the end of the child. True when more can be moved without waiting.
    // Throws what handlers and devices of the host throw; the next call continues behind that.
    bool poll();
    bool isRunning() {
        poll();
        return state == StateRunning;
    }
    // Waits for the end of the child, or until a stream has something to move. Called only while `process` is held.
    void wait(DWORD timeoutMs);
    // Ends the child, or its job with all processes in it. The end is noticed by a later poll().
    void kill();
    // Closes the job first: that ends a tied tree. Each pipe sends its buffer when it is closed, so a child that does
    // not read would hold up this process before its own end.
    void releaseLastStart();
    // Clears what is known of the last child, but keeps its handles and what it wrote.
    void reset(State newState);
    void closeHandle();
};

}  // namespace xo

#endif
