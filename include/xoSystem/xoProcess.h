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
// A child gets a console without a window, no standard handles and none of this process's handles, not even inheritable
// ones. It receives each argument unchanged, whatever characters it contains.
//
// Two kinds of program are run through the command interpreter, cmd.exe in the system folder:
// - A batch file (.bat, .cmd). The interpreter reads the arguments as program text, so an argument with " or % or a
// line
//   break, which could become a command, makes the start fail. So does a path that is longer than 259 UTF-16 units, or
//   that contains the name of an environment variable of the child between two percent signs.
// - The interpreter itself (any cmd.exe). What follows "/c" or "/k", as an argument of its own or joined to others
//   ("/d/c", "/cdir"), is a command in the interpreter's language and is passed on unchanged. The caller is responsible
//   for what it puts in there.
//
// An object belongs to one thread at a time; the static functions may be called from any thread. Nothing throws except
// std::bad_alloc. A failed start returns false and writes a DEBUG line: "CreateProcessW return an error " and the code
// when Windows refuses it, "Process not started, error " with code and program when this class does.
//
// The destructor does not end the child. Objects are neither copied nor moved.
#ifndef XOSYSTEM_XOPROCESS_H
#define XOSYSTEM_XOPROCESS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "xoSystem/xoExport.h"

namespace xo {

template <class E>
class xoEnumList;
class xoProgressNotifier;

// The scheduling class of a child; any other number counts as Inherit.
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
    // What is known of the child.
    enum State : std::uint32_t {
        StateNone = 0,  // never started, or reset
        StateRunning = 1,
        StateFinished = 2  // ended, or failed to start
    };

    static constexpr unsigned kNoLimit = 0xFFFFFFFF;  // no time-out

    xoProcess();
    virtual ~xoProcess();
    xoProcess(const xoProcess&) = delete;
    xoProcess& operator=(const xoProcess&) = delete;

    // ---- before the start ----

    // The working directory of the next child; empty stands for that of this process. Windows accepts at most 258
    // UTF-16 units. A directory that does not exist, or a path with a NUL inside, makes the start fail.
    void setWorkingDirectoryUtf8(const std::string& directory);
    const std::string& getWorkingDirectoryUtf8() const;

    // The whole environment of the next child, each entry NAME=value; without entries it gets that of this process. Of
    // entries with the same name (case does not matter) the last one counts. Most programs need SystemRoot and PATH.
    // Entries such as "=C:=C:\folder", the working folder of a drive, are allowed. An entry that is not UTF-8, or has a
    // NUL inside, no name or no "=", makes the start fail.
    void setEnvironmentUtf8(const std::vector<std::string>& environment);
    const std::vector<std::string>& getEnvironmentUtf8() const;

    // ---- start and end ----

    // Starts the program, unless a child of this object is running, and returns 10 ms later. With makeAbsolute a
    // relative path starts at this process's working directory, and where there is no such file ".exe" is appended.
    // Without it, Windows gets the path as it is, extension included. PATH is never searched.
    //
    // False when a child is running, which is then left alone, and when the start fails: the program does not exist or
    // is no program; the program or an argument is not UTF-8 or has a NUL inside; the command line, with its quotes, is
    // longer than 32766 UTF-16 units (8191 for the command interpreter); the working directory or environment is
    // refused; a batch file has a path or argument that the interpreter would change.
    bool startProcess(const std::string& program, const std::vector<std::string>& arguments = {},
                      bool makeAbsolute = true, ProcessPriority priority = ProcessPriorityInherit);
    bool startProcess(const std::string& program, const std::vector<std::string>& arguments, bool makeAbsolute,
                      int priority) {
        return startProcess(program, arguments, makeAbsolute, static_cast<ProcessPriority>(priority));
    }

    // Waits at most timeoutMs milliseconds for the child to end. False when it still runs then; it is left running.
    // True at once when there is no child. 0 does not wait.
    bool waitForFinished(unsigned timeoutMs = kNoLimit);

    // The same as a work of unknown length on a notifier, which may be null. Its update() is called every 50 ms. False
    // also once it is canceled while the child runs, which is left running.
    bool waitForFinished(unsigned timeoutMs, xoProgressNotifier* progress);

    // Ends the child by force, with exit code 65535. Does nothing without a child. The child may still run for a
    // moment; waitForFinished() waits for its end. Processes that the child has started go on, such as the programs
    // that a batch file runs.
    void killProcess();

    // Asks the child to close: posts WM_CLOSE to its top-level windows, and to its main thread, which receives it only
    // if it has a message queue. The child may ignore it. Does nothing without a child.
    void terminateProcess();

    // Closes the handle of the child, which runs on, and clears all that was set.
    void clearProcess();

    // Sets StateNone and exit code 0; what was set for the next start stays. Returns false and changes nothing while a
    // child is running.
    bool resetState();

    // ---- what is known of the child; each first checks whether it has ended ----

    State getState() const;  // StateFinished once it has ended
    int exitCode() const;    // 0 until it has ended

    // Whether it ended with the status of an unhandled exception: one of error severity (0xC0000005 and the like), a
    // breakpoint, single step, guard page or misalignment, or a C++ exception of any compiler. That includes fail-fast
    // (0xC0000409), with which abort() and an uncaught C++ exception end a program of the universal C runtime; abort()
    // of msvcrt.dll ends it with 3, an ordinary code. Ctrl+C (0xC000013A) and killProcess() are no crashes.
    bool hasCrashed() const;

    // True unless the last start succeeded; also true for an object that was never started.
    bool hasFailedToStart() const;

    // ---- the child at work ----

    // The process identifier, or 0 without a child. Does not check whether the child has ended: Windows gives the
    // number to no other process until one of the functions above has noticed the end.
    std::uint32_t getPid() const;

    // Bytes of memory that the child has committed; those of this process when no child is running. 0 when Windows does
    // not tell.
    std::uint64_t getCurrentRamInUse() const;

    // Limits the physical memory of the child from now on. False without a child, or when Windows refuses.
    bool setWorkingSetMaxSize(std::size_t maxBytes);

    // ---- without an object ----

    // Runs a program to its end and returns its exit code. Failures: -1 the start failed; -2 the time-out passed and
    // the child was ended as by killProcess(); -3 the child crashed. *error, if not null, receives "Fail to start
    // process", "timeout", "process has crashed", or for any other code than 0 "process return an error", which
    // distinguishes a child's own -1 from a failure. It is left unchanged when the result is 0.
    //
    // A child that was ended may hold its files and run for a moment longer, while its pending input or output
    // completes: the call waits for it up to 5 s beyond the time-out. What the child has started is not ended; after a
    // time-out of a batch file, the program that it was running goes on.
    static int ExecUtf8(const std::string& program, const std::vector<std::string>& arguments = {},
                        const std::string& workingDirectory = {}, bool makeAbsolute = true,
                        unsigned timeoutMs = kNoLimit, std::string* error = nullptr);

    // The same with a notifier, which may be null and sees the wait as in waitForFinished(). When it is canceled, the
    // child is ended as on a time-out, or not started at all; the result is -4, the error "Canceled".
    static int ExecUtf8(const std::string& program, const std::vector<std::string>& arguments,
                        const std::string& workingDirectory, bool makeAbsolute, unsigned timeoutMs, std::string* error,
                        xoProgressNotifier* progress);

    // Starts a program as startProcess() does with makeAbsolute, and does not keep track of it. False when the start
    // fails, for the reasons given there. *pid, if not null, receives its identifier, or 0 on failure; the program may
    // have ended by then, and another process have its number.
    static bool StartDetachedUtf8(const std::string& program, const std::vector<std::string>& arguments = {},
                                  const std::string& workingDirectory = {});
    static bool StartDetachedUtf8(const std::string& program, const std::vector<std::string>& arguments,
                                  const std::string& workingDirectory, std::uint32_t* pid);

    // Splits a command line, program first, as CommandLineToArgvW does: a leading blank gives an empty program, and a
    // quote that is never closed extends to the end. A line that is empty, blank, not UTF-8 or has a NUL inside gives
    // false, no arguments and a CRITICAL line. The line may be one of the arguments that it replaces.
    static bool SplitCommandLine(const std::string& commandLine, std::vector<std::string>& arguments);

    // The identifier of the calling process.
    static std::uint32_t GetCurrentProcessId();

    // The identifier of the process that started this one, or the one with the identifier pid. 0 when there is no such
    // process, or when its parent has ended, even if another process has the parent's number now.
    static std::uint32_t GetParentProcessId();
    static std::uint32_t GetParentProcessId(std::uint32_t pid);

private:
    struct Private;
    std::unique_ptr<Private> mPrivate;
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<ProcessPriority> xoEnumEntries(ProcessPriority);
XOSYSTEM_API xoEnumList<xoProcess::State> xoEnumEntries(xoProcess::State);

}  // namespace xo

#endif
