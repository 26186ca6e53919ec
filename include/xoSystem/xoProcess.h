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
// or, for what a program prints:
//
//     const auto result = xo::xoProcess::RunUtf8(xo::xoProcess::FindProgramUtf8("git"), {"status", "--short"});
//     if (result.isSuccess()) show(xo::xoProcess::OutputToUtf8(result.output));
//
// A child gets a console without a window and none of this process's handles, not even inheritable ones. Its standard
// input and outputs are what setInput(), setOutput() and setErrorOutput() say, by default no handles. It receives each
// argument unchanged, whatever characters it contains.
//
// Two kinds of program are run through the command interpreter:
//
// A batch file (.bat, .cmd) is run by cmd.exe in the system folder. The interpreter reads the arguments as program
// text, so an argument with a quote, a percent sign or a line break, which could become a command, makes the start
// fail. So does a path that is longer than 259 UTF-16 units, or that contains the name of an environment variable of
// the child between two percent signs.
//
// The interpreter itself is any program called cmd.exe. What follows "/c" or "/k", as an argument of its own or joined
// to others ("/d/c", "/cdir"), is a command in the interpreter's language and is passed on unchanged; "/s" is put in
// front of the switches, so that the interpreter never takes the whole command for the name of a file. The caller is
// responsible for what the command does.
//
// An object belongs to one thread at a time; the static functions may be called from any thread. Nothing throws except
// std::bad_alloc and what a line handler or a device of the host throws. A failed start returns false and writes a
// DEBUG line: "CreateProcessW return an error " and the code when Windows refuses it, "Process not started, error "
// with code and program when this class does.
//
// The destructor does not end the child, unless setProcessTree() says so. Objects are neither copied nor moved.
#ifndef XOSYSTEM_XOPROCESS_H
#define XOSYSTEM_XOPROCESS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "xoSystem/xoExport.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

class xoIoDevice;
class xoNamedPipe;

namespace process {
struct InputChoice;
struct OutputChoice;
}  // namespace process

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

    static constexpr unsigned kNoLimit = 0xFFFFFFFF;                   // no time-out
    static constexpr std::uint64_t kDefaultMaxOutputBytes = 64 << 20;  // of an output that is kept as a text

    // What a child has as its standard input. A value that can be copied.
    class XOSYSTEM_API Input {
    public:
        static Input None();     // no handle
        static Input Null();     // the null device: reading ends at once
        static Input Inherit();  // a copy of the standard input of this process, if it has one
        static Input Pipe();     // what this process writes to getInputPipe(), until it closes that

        // The file, which other processes may read meanwhile.
        static Input FileUtf8(const std::string& path);

        // These bytes, or all that the device returns. A child that does not read all of it is no failure. The device
        // is not owned and must exist until the child has finished.
        static Input Text(std::string bytes);
        static Input Device(xoIoDevice* device);

    private:
        friend class xoProcess;
        explicit Input(process::InputChoice choice);
        std::shared_ptr<const process::InputChoice> mChoice;
    };

    // Gets each line without its end.
    using LineHandler = std::function<void(const std::string& line)>;

    // What a child has as its standard output or error output. A value that can be copied.
    class XOSYSTEM_API Output {
    public:
        static Output None();     // no handle
        static Output Null();     // the null device: what is written vanishes
        static Output Inherit();  // a copy of the same handle of this process, if it has one
        static Output Pipe();     // what this process reads from getOutputPipe() or getErrorPipe()
        static Output Merged();   // of the error output: the same as the output, in the order in which it is written

        // The file, made or emptied, which other processes may read meanwhile; or, with append, made or kept, and
        // written at its end, also beside other writers.
        static Output FileUtf8(const std::string& path, bool append = false);

        // The first maxBytes bytes as a text, see getOutputText(). What follows is read and dropped.
        static Output Text(std::uint64_t maxBytes = kDefaultMaxOutputBytes);

        // Each line, as soon as it is complete. A line ends with "\n" or "\r\n"; the last one may have no end. A longer
        // line than 1 MiB comes in pieces. The bytes are not converted.
        static Output Lines(LineHandler handler);

        // The bytes as they come, with writeBytes() of at most 64 KiB. After a failed write the rest is dropped. The
        // device is not owned and must exist until the child has finished.
        static Output Device(xoIoDevice* device);

    private:
        friend class xoProcess;
        explicit Output(process::OutputChoice choice);
        std::shared_ptr<const process::OutputChoice> mChoice;
    };

    // What is done with the processes that the child starts, and they start in turn.
    enum ProcessTree : int {
        ProcessTreeLoose = 0,  // nothing
        ProcessTreeOwned = 1,  // killProcess() ends them too
        ProcessTreeTied = 2    // they and the child also end with this object, its next start, and this process
    };

    xoProcess();
    virtual ~xoProcess();
    xoProcess(const xoProcess&) = delete;
    xoProcess& operator=(const xoProcess&) = delete;

    // ---- before the start ----

    // The working directory of the next child; empty stands for that of this process. Windows accepts at most 258
    // UTF-16 units. A directory that does not exist, or a path that is not UTF-8 or has a NUL inside, makes the start
    // fail.
    void setWorkingDirectoryUtf8(const std::string& directory);
    const std::string& getWorkingDirectoryUtf8() const;

    // The whole environment of the next child, each entry NAME=value; without entries it gets that of this process. Of
    // entries with the same name (case does not matter) the last one counts. Most programs need SystemRoot and PATH.
    // Entries such as "=C:=C:\folder", the working folder of a drive, are allowed. An entry that is not UTF-8, or has a
    // NUL inside, no name or no "=", makes the start fail.
    void setEnvironmentUtf8(const std::vector<std::string>& environment);
    const std::vector<std::string>& getEnvironmentUtf8() const;

    // The standard handles of the next children, by default None. A console handle that is inherited makes the child
    // share the console of this process. A file that cannot be opened makes the start fail, with a DEBUG line, and so
    // does a path that is not UTF-8 or has a NUL inside; also an empty handler, a null device, Merged as the output, or
    // one file for both outputs without append.
    //
    // Text, lines and devices are moved by the calls that look at the child: by waitForFinished() for as long as it
    // waits, and without waiting by getState(), exitCode(), hasCrashed(), hasFailedToStart() and resetState(). Handlers
    // and devices are called there, in the thread of that call. Between two looks the child is held up once 64 KiB wait
    // for it; a program with windows calls waitForFinished(0) from a timer. There is no order of sizes in which the two
    // processes wait for each other. The thread that looks must not end before the child while there is input to move.
    //
    // All that the child has written is moved before it counts as finished, and then the pipes are closed, even while a
    // process that the child has started still has them; what such a process writes later fails on its side.
    //
    // A handler may call killProcess() and nothing else of its object. What it throws comes out of the call that looks;
    // its line counts as delivered, the child runs on, and the next look goes on behind that line.
    void setInput(Input input);
    void setOutput(Output output);
    void setErrorOutput(Output output);

    // What happens to the processes that the next children start; at first Loose.
    void setProcessTree(ProcessTree tree);

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
    // that a batch file runs, unless setProcessTree() has made them the object's: they are ended too, also when the
    // child itself has ended before.
    void killProcess();

    // Asks the child to close: posts WM_CLOSE to its top-level windows, and to its main thread, which receives it only
    // if it has a message queue. The child may ignore it. Does nothing without a child.
    void terminateProcess();

    // Closes the handle of the child, which runs on unless it is tied, and clears all that was set and moved.
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

    // ---- what the child has written ----

    // Of outputs that are a Text, from the last start on, complete once the child has finished; otherwise empty. The
    // references hold until the next start or clearProcess().
    const std::string& getOutputText() const;
    const std::string& getErrorText() const;

    // Whether bytes were dropped: a Text was full or there was no memory for more of it, a device took none, or Windows
    // failed to read them.
    bool wasOutputCut() const;

    // The ends of the choice Pipe, from the start until the next start or clearProcess(); null otherwise. They serve
    // one direction, with limits and cancellation; the other one raises the error flag, with a CRITICAL line. They do
    // not know their peer. Closing the input pipe ends the child's input.
    //
    // The input pipe sends its buffer when it is closed, also by the destructor of this object, within the limit of
    // setTimeLimits() for writing. Without a limit that waits for a child that does not read. A tied child is ended
    // before.
    xoNamedPipe* getInputPipe();
    xoNamedPipe* getOutputPipe();
    xoNamedPipe* getErrorPipe();

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

    // How RunUtf8() runs a program.
    struct RunOptions {
        std::string workingDirectory;                           // empty: that of this process
        std::string input;                                      // empty: the null device
        std::vector<std::string> environment;                   // as setEnvironmentUtf8() has it
        bool makeAbsolute = true;                               // as startProcess() has it
        unsigned timeoutMs = kNoLimit;                          // milliseconds
        bool mergeError = false;                                // whether the error output goes where the output goes
        std::uint64_t maxOutputBytes = kDefaultMaxOutputBytes;  // of each output
        ProcessTree tree = ProcessTreeOwned;                    // as setProcessTree() has it
    };

    // What came of it.
    struct RunResult {
        // How it ended.
        enum Outcome : int { NotStarted = 0, Finished = 1, TimedOut = 2, Crashed = 3 };

        Outcome outcome = NotStarted;  // how it ended
        int exitCode = 0;              // of a child that was started and has ended
        std::string output;            // as bytes: OutputToUtf8() makes a text of them
        std::string errorOutput;       // the same of the error output; empty when it was merged
        bool outputCut = false;        // as wasOutputCut() has it
        std::string message;           // empty on success, otherwise as the error of ExecUtf8()

        // Whether it ended by itself, with exit code 0.
        bool isSuccess() const { return outcome == Finished && exitCode == 0; }
    };

    // Runs a program to its end, without a pause, and returns what it wrote. After a time-out the child is ended, with
    // all that it has started unless the tree is loose; what it wrote until then is there. The message names the path
    // of a program that does not exist.
    static RunResult RunUtf8(const std::string& program, const std::vector<std::string>& arguments = {});
    static RunResult RunUtf8(const std::string& program, const std::vector<std::string>& arguments,
                             const RunOptions& options);

    // The absolute path of a program that is named without a folder, from the folders of PATH in their order; never
    // from the working directory, nor from entries that are relative. A name without one of the extensions of PATHEXT
    // gets each of them in turn. Empty when there is none.
    static std::string FindProgramUtf8(const std::string& name);

    // The output of a console program as UTF-8: valid UTF-8 as it is, anything else from the OEM code page, in which
    // such programs write by default. UTF-8 with other characters than ASCII whose last one is incomplete, as in an
    // output that was cut, is UTF-8 too, with U+FFFD in place of that one.
    static std::string OutputToUtf8(const std::string& bytes);

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
XOSYSTEM_API xoEnumList<xoProcess::ProcessTree> xoEnumEntries(xoProcess::ProcessTree);
XOSYSTEM_API xoEnumList<xoProcess::RunResult::Outcome> xoEnumEntries(xoProcess::RunResult::Outcome);

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
