// xoProcess: one child process, from its start to its end.
//
//     std::string error;
//     const int code = xo::xoProcess::ExecUtf8(folder + "/verify.exe", {recordFile}, folder, true, 30000, &error);
//     if (code != 0) xo::xoLogObject(xo::xoLogCritical) << "verify.exe: " << error << ", code " << code;
//
// or, with more say in what happens meanwhile:
//
//     xo::xoProcess child;
//     child.setEnvironmentUtf8({"LANG=en", "SystemRoot=C:\\Windows"});
//     if (!child.startProcess("verify", {recordFile})) return false;
//     if (!child.waitForFinished(30000)) child.killProcess();
//
// A child gets a console without a window, no standard handles and none of this process's handles, inheritable ones
// included. It receives each argument as it was given, whatever characters that holds.
//
// Two kinds of program are run through the command interpreter, the cmd.exe of the system folder:
// - A batch file (.bat, .cmd). The interpreter reads its arguments as program text, so those that could become a
//   command, with " or % or a line break inside, are refused: the start fails.
// - The interpreter itself (any cmd.exe): what follows "/c" or "/k" is a command in its own language, passed on as it
//   stands. Who puts foreign text in there answers for it.
//
// An object belongs to one thread at a time; the static functions may be called from any thread. Nothing throws, short
// of memory running out. A failed start gives false and writes a DEBUG line; see startProcess for what makes it fail.
//
// The destructor lets go of the child, which runs on. Objects are neither copied nor moved.
#ifndef XOSYSTEM_XOPROCESS_H
#define XOSYSTEM_XOPROCESS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "xoSystem/xoExport.h"

namespace xo {

// The scheduling class of a child; numbers beyond these count as Inherit.
enum ProcessPriority : int {
    ProcessPriorityLow = 0,  // runs when the machine is idle
    ProcessPriorityNormal = 1,
    ProcessPriorityHigh = 2,
    ProcessPriorityInherit = 3  // that of the calling process
};

// "Low", "Normal", "High", "Inherit", or "Unknown".
XOSYSTEM_API std::string ProcessPriorityToString(ProcessPriority priority);
inline std::string ProcessPriorityToString(int priority) {
    return ProcessPriorityToString(static_cast<ProcessPriority>(priority));
}

class XOSYSTEM_API xoProcess {
public:
    // Of the child, as it was last seen.
    enum State : std::uint32_t {
        StateNone = 0,  // never started, or reset
        StateRunning = 1,
        StateFinished = 2  // ended, or not started for a failure
    };

    static constexpr unsigned kNoLimit = 0xFFFFFFFF;  // a time-out that never comes

    xoProcess();
    virtual ~xoProcess();
    xoProcess(const xoProcess&) = delete;
    xoProcess& operator=(const xoProcess&) = delete;

    // ---- before the start ----

    // Where the next child starts; empty stands for this process's working directory. Windows takes at most 258
    // characters here. A folder that does not exist makes the start fail.
    void setWorkingDirectoryUtf8(const std::string& directory);
    const std::string& getWorkingDirectoryUtf8() const;

    // The whole environment of the next child, each entry NAME=value; none at all stands for this process's
    // environment. Of entries with one name (case does not matter) the last one counts. Most programs need SystemRoot
    // and PATH. Entries such as "=C:=C:\folder" are kept; one without a name and "=" makes the start fail.
    void setEnvironmentUtf8(const std::vector<std::string>& environment);
    const std::vector<std::string>& getEnvironmentUtf8() const;

    // ---- start and end ----

    // Starts the program, if no child of this object is running, and returns 10 ms later. With makeAbsolute a relative
    // path is meant from this process's working directory, and where no such file exists ".exe" is appended. Without
    // it, Windows gets the path as it is, its extension included. PATH is never searched.
    //
    // False when a child is running, which then is left alone, and when the start fails: the program is missing or no
    // program; the program or an argument is not UTF-8 or has a NUL inside; the command line, with its quotes, is
    // beyond 32766 UTF-16 units (8191 for the command interpreter); the working directory or environment is refused.
    bool startProcess(const std::string& program, const std::vector<std::string>& arguments = {},
                      bool makeAbsolute = true, ProcessPriority priority = ProcessPriorityInherit);
    bool startProcess(const std::string& program, const std::vector<std::string>& arguments, bool makeAbsolute,
                      int priority) {
        return startProcess(program, arguments, makeAbsolute, static_cast<ProcessPriority>(priority));
    }

    // Waits until the child has ended, and no longer than that. False when it still runs after the time-out; it is left
    // running. True at once when there is no child. 0 only looks.
    bool waitForFinished(unsigned timeoutMs = kNoLimit);

    // Ends the child by force, with exit code 65535. It may take a moment to be gone: waitForFinished tells.
    void killProcess();

    // Asks the child to close: all its top-level windows, and its main thread if that has a message queue. What the
    // child makes of it is its own affair; one with neither goes on.
    void terminateProcess();

    // Lets go of the child, which runs on, and forgets all that was set.
    void clearProcess();

    // Back to StateNone, with exit code 0; what was set for the next start stays. False, and nothing changes, while a
    // child is running.
    bool resetState();

    // ---- what is known of the child; each looks anew whether it has ended ----

    State getState() const;  // StateFinished once it has ended
    int exitCode() const;    // 0 until it has ended

    // Whether it ended with the status of an exception that nobody handled: one of error severity (0xC0000005 and its
    // like), a breakpoint, single step, guard page or misalignment, or a C++ exception of any compiler. Not Ctrl+C, not
    // killProcess, and not abort, which ends with an ordinary code.
    bool hasCrashed() const;

    // True unless the last start succeeded: also for an object that was never started.
    bool hasFailedToStart() const;

    // ---- the child at work ----

    // The process identifier, or 0 without a child. It stays the child's own until its end has been noticed.
    std::uint32_t getPid() const;

    // Bytes of memory that the child has committed; of this process while there is no child.
    std::uint64_t getCurrentRamInUse() const;

    // Limits the physical memory of the child for good. False without a child, or when Windows refuses.
    bool setWorkingSetMaxSize(std::size_t maxBytes);

    // ---- without an object ----

    // Runs a program to its end and returns its exit code. Failures: -1 the start failed; -2 the time-out passed, the
    // child was ended with exit code 65535; -3 the child crashed. *error, if not null, gets "Fail to start process",
    // "timeout", "process has crashed", or for any other code than 0 "process return an error": that text tells a
    // child's own -1 from a failure. It is left alone when the result is 0.
    static int ExecUtf8(const std::string& program, const std::vector<std::string>& arguments = {},
                        const std::string& workingDirectory = {}, bool makeAbsolute = true,
                        unsigned timeoutMs = kNoLimit, std::string* error = nullptr);

    // Starts a program as startProcess does with makeAbsolute, and forgets it. It outlives this process. *pid, if not
    // null, gets its identifier, or 0 on failure; the program may have ended by then and the number be another's.
    static bool StartDetachedUtf8(const std::string& program, const std::vector<std::string>& arguments = {},
                                  const std::string& workingDirectory = {});
    static bool StartDetachedUtf8(const std::string& program, const std::vector<std::string>& arguments,
                                  const std::string& workingDirectory, std::uint32_t* pid);

    // Splits a command line, program first, as CommandLineToArgvW does: a leading blank gives an empty program, a quote
    // that is never closed runs to the end. Refused, with no arguments and a CRITICAL line, is what is empty, blank,
    // not UTF-8 or has a NUL inside.
    static bool SplitCommandLine(const std::string& commandLine, std::vector<std::string>& arguments);

    // The identifier of the calling process.
    static std::uint32_t GetCurrentProcessId();

    // The process that started this one, or the one with that identifier. 0 when there is no such process, or its
    // parent has ended, though another process may have got the parent's number.
    static std::uint32_t GetParentProcessId();
    static std::uint32_t GetParentProcessId(std::uint32_t pid);

private:
    struct Private;
    std::unique_ptr<Private> mPrivate;
};

}  // namespace xo

#endif
