// A child process: its start, its state, the wait for its end.
#include "xoSystem/xoProcess.h"

#include <algorithm>

#include "pipe/pipeAccess.h"
#include "platform/deadline.h"
#include "platform/exceptionCodes.h"
#include "process/closeRequest.h"
#include "process/processRecord.h"
#include "xoSystem/xoProgress.h"

#include <psapi.h>

namespace xo {
namespace {

// A child needs a moment to create its message queue and windows. Without this pause, a terminateProcess() directly
// after the start would find nothing to close.
constexpr DWORD kSettlingMs = 10;

constexpr DWORD kLongestWaitMs = 100;  // of one wait in waitForFinished()
constexpr DWORD kProgressMs = 50;      // the same with a notifier, which is asked for cancellation in between
constexpr UINT kKilledExitCode = 65535;
constexpr SIZE_T kSmallestWorkingSet = 1024;  // bytes; Windows requires a lower limit beside the upper one

// STATUS_CONTROL_C_EXIT has the form of an error, but is an ordinary end of console programs.
constexpr DWORD kControlCExit = 0xC000013A;

// The status of an error has its two top bits set, and bit 28 clear, which distinguishes it from a small negative exit
// code. Fail-fast (0xC0000409) is one of them. Statuses of lesser severity have the form of an HRESULT, a common exit
// code, so that only those that the processor raises count.
// https://learn.microsoft.com/openspecs/windows_protocols/ms-erref/87fba13e-bf06-450e-83b1-9241dc81e781
// https://learn.microsoft.com/cpp/c-runtime-library/reference/abort
bool isExceptionStatus(DWORD code) {
    switch (code) {
        case kControlCExit: return false;
        case platform::kItaniumException:
        case EXCEPTION_GUARD_PAGE:
        case EXCEPTION_DATATYPE_MISALIGNMENT:
        case EXCEPTION_BREAKPOINT:
        case EXCEPTION_SINGLE_STEP: return true;
        default: return (code & 0xD0000000) == 0xC0000000;
    }
}

}  // namespace

// GetExitCodeProcess returns 259 for a running child, but a child may end with that code too, and the code is set a
// little before the child has ended. So the handle decides.
// https://learn.microsoft.com/windows/win32/api/processthreadsapi/nf-processthreadsapi-getexitcodeprocess
//
// The end is checked before the pipes are read: all that the child has written is in them by then. If a handler throws
// in finish(), the state is unchanged and the next call continues.
bool xoProcess::Private::poll() {
    if (state != StateRunning || !process) return false;
    if (::WaitForSingleObject(process.get(), 0) != WAIT_OBJECT_0) return streams && streams->move();
    if (streams) streams->finish();
    DWORD code = 0;
    if (!::GetExitCodeProcess(process.get(), &code)) return false;
    closeHandle();
    exitCode = static_cast<int>(code);
    hasCrashed = isExceptionStatus(code);
    state = StateFinished;
    return false;
}

void xoProcess::Private::wait(DWORD timeoutMs) {
    if (!streams) {
        ::WaitForSingleObject(process.get(), timeoutMs);
        return;
    }
    // The child and at most three streams.
    HANDLE handles[4] = {process.get()};
    DWORD count = 1;
    streams->appendEvents(handles, count);
    ::WaitForMultipleObjects(count, handles, /*bWaitAll=*/FALSE, timeoutMs);
}

// The job also contains the processes that the child has started, and outlives the child.
void xoProcess::Private::kill() {
    if (job)
        ::TerminateJobObject(job.get(), kKilledExitCode);
    else if (process)
        ::TerminateProcess(process.get(), kKilledExitCode);
}

void xoProcess::Private::releaseLastStart() {
    job.reset();
    streams.reset();
    for (auto* const pipe : {&inputPipe, &outputPipe, &errorPipe}) pipe->reset();
}

void xoProcess::Private::reset(State newState) {
    state = newState;
    exitCode = 0;
    hasCrashed = false;
    hasStarted = false;
}

void xoProcess::Private::closeHandle() {
    process.reset();
    processId = 0;
    mainThreadId = 0;
}

xoProcess::xoProcess() : mPrivate(std::make_unique<Private>()) {}

xoProcess::~xoProcess() { mPrivate->releaseLastStart(); }

void xoProcess::setWorkingDirectoryUtf8(const std::string& directory) { mPrivate->workingDirectory = directory; }

const std::string& xoProcess::getWorkingDirectoryUtf8() const { return mPrivate->workingDirectory; }

void xoProcess::setEnvironmentUtf8(const std::vector<std::string>& environment) { mPrivate->environment = environment; }

const std::vector<std::string>& xoProcess::getEnvironmentUtf8() const { return mPrivate->environment; }

void xoProcess::setInput(Input input) { mPrivate->redirection.input = std::move(input.mChoice); }

void xoProcess::setOutput(Output output) { mPrivate->redirection.output = std::move(output.mChoice); }

void xoProcess::setErrorOutput(Output output) { mPrivate->redirection.errorOutput = std::move(output.mChoice); }

void xoProcess::setProcessTree(ProcessTree tree) { mPrivate->tree = tree; }

bool xoProcess::startProcess(const std::string& program, const std::vector<std::string>& arguments, bool makeAbsolute,
                             ProcessPriority priority) {
    if (!mPrivate->start(program, arguments, makeAbsolute, priority)) return false;
    ::Sleep(kSettlingMs);
    return true;
}

bool xoProcess::Private::start(const std::string& newProgram, const std::vector<std::string>& newArguments,
                               bool makeAbsolute, ProcessPriority priority) {
    if (isRunning()) return false;
    // A start that fails counts as finished, with exit code 0; what the last child wrote is discarded in any case.
    reset(StateFinished);
    program = newProgram;
    arguments = newArguments;
    releaseLastStart();

    process::Child child =
        process::launch({program, arguments, environment, workingDirectory, makeAbsolute, priority, redirection, tree});
    startError = child.error;
    if (!child.process) return false;
    hasStarted = true;
    state = StateRunning;
    process = std::move(child.process);
    processId = child.processId;
    mainThreadId = child.mainThreadId;
    job = std::move(child.job);
    try {
        connect(child.handles);
    } catch (...) {  // such as std::bad_alloc: the start has failed, so nothing of it may go on
        kill();
        closeHandle();
        releaseLastStart();
        reset(StateFinished);
        throw;
    }
    return true;
}

// ChildStreams takes the pipes that it moves; the rest are of the choice Pipe, and the host uses them itself.
void xoProcess::Private::connect(process::StandardHandles& handles) {
    if (!handles.ourInput && !handles.ourOutput && !handles.ourError) return;
    streams = std::make_unique<process::ChildStreams>(handles, redirection);
    using pipe::PipeAccess;
    const auto give = [](platform::FileHandle& handle, PipeAccess::Direction direction) {
        std::unique_ptr<xoNamedPipe> pipe;
        if (!handle) return pipe;
        pipe = std::make_unique<xoNamedPipe>();
        PipeAccess::attachOneWay(*pipe, std::move(handle), direction);
        return pipe;
    };
    inputPipe = give(handles.ourInput, PipeAccess::Direction::Write);
    outputPipe = give(handles.ourOutput, PipeAccess::Direction::Read);
    errorPipe = give(handles.ourError, PipeAccess::Direction::Read);
}

bool xoProcess::waitForFinished(unsigned timeoutMs) { return waitForFinished(timeoutMs, /*progress=*/nullptr); }

bool xoProcess::waitForFinished(unsigned timeoutMs, xoProgressNotifier* progress) {
    Private& self = *mPrivate;
    const DWORD longestWaitMs = progress ? kProgressMs : kLongestWaitMs;
    xoProgressScope work(progress, /*total=*/0);
    const platform::Deadline deadline(timeoutMs);
    for (;;) {
        // First, so that a child that has ended is noticed even with a limit of 0.
        const bool hasMore = self.poll();
        if (self.state != StateRunning) break;
        if (!self.process || !work.advance(0)) return false;
        const DWORD remainingMs = deadline.remainingMs();
        if (remainingMs == 0) return false;
        if (!hasMore) self.wait((std::min)(remainingMs, longestWaitMs));
    }
    work.finish();
    return true;
}

void xoProcess::killProcess() { mPrivate->kill(); }

void xoProcess::terminateProcess() {
    if (mPrivate->process && mPrivate->processId != 0)
        process::requestClose(mPrivate->processId, mPrivate->mainThreadId);
}

// A child that is still running continues, unless it is tied: closing its job ends it.
void xoProcess::clearProcess() {
    mPrivate->releaseLastStart();
    *mPrivate = Private();
}

bool xoProcess::resetState() {
    if (mPrivate->isRunning()) return false;
    mPrivate->reset(StateNone);
    return true;
}

xoProcess::State xoProcess::getState() const {
    mPrivate->poll();
    return mPrivate->state;
}

int xoProcess::exitCode() const {
    mPrivate->poll();
    return mPrivate->exitCode;
}

bool xoProcess::hasCrashed() const {
    mPrivate->poll();
    return mPrivate->hasCrashed;
}

bool xoProcess::hasFailedToStart() const {
    mPrivate->poll();
    return !mPrivate->hasStarted;
}

namespace {

const std::string& textOf(const process::OutputChannel* channel) {
    // A reference is returned, so the empty text must be a static object.
    static const std::string none;
    return channel ? channel->text() : none;
}

}  // namespace

const std::string& xoProcess::getOutputText() const {
    return textOf(mPrivate->streams ? mPrivate->streams->output() : nullptr);
}

const std::string& xoProcess::getErrorText() const {
    return textOf(mPrivate->streams ? mPrivate->streams->error() : nullptr);
}

bool xoProcess::wasOutputCut() const {
    if (!mPrivate->streams) return false;
    const auto wasCut = [](const process::OutputChannel* channel) { return channel && channel->wasCut(); };
    return wasCut(mPrivate->streams->output()) || wasCut(mPrivate->streams->error());
}

xoNamedPipe* xoProcess::getInputPipe() { return mPrivate->inputPipe.get(); }

xoNamedPipe* xoProcess::getOutputPipe() { return mPrivate->outputPipe.get(); }

xoNamedPipe* xoProcess::getErrorPipe() { return mPrivate->errorPipe.get(); }

std::uint32_t xoProcess::getPid() const { return mPrivate->process ? ::GetProcessId(mPrivate->process.get()) : 0; }

std::uint64_t xoProcess::getCurrentRamInUse() const {
    mPrivate->poll();
    const HANDLE process = mPrivate->process ? mPrivate->process.get() : ::GetCurrentProcess();
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof counters;
    // PagefileUsage is the memory that the process has committed, whether it is in RAM or not.
    return ::GetProcessMemoryInfo(process, &counters, sizeof counters) ? counters.PagefileUsage : 0;
}

bool xoProcess::setWorkingSetMaxSize(std::size_t maxBytes) {
    return mPrivate->process && ::SetProcessWorkingSetSizeEx(mPrivate->process.get(), kSmallestWorkingSet, maxBytes,
                                                             QUOTA_LIMITS_HARDWS_MAX_ENABLE);
}

int xoProcess::ExecUtf8(const std::string& program, const std::vector<std::string>& arguments,
                        const std::string& workingDirectory, bool makeAbsolute, unsigned timeoutMs,
                        std::string* error) {
    return ExecUtf8(program, arguments, workingDirectory, makeAbsolute, timeoutMs, error, /*progress=*/nullptr);
}

int xoProcess::ExecUtf8(const std::string& program, const std::vector<std::string>& arguments,
                        const std::string& workingDirectory, bool makeAbsolute, unsigned timeoutMs, std::string* error,
                        xoProgressNotifier* progress) {
    const auto isCanceled = [progress] { return progress && progress->isCanceled(); };
    const auto fail = [error](const char* text, int code) {
        if (error) *error = text;
        return code;
    };
    // The numbers and texts are documented in the header.
    if (isCanceled()) return fail("Canceled", -4);
    xoProcess child;
    child.setWorkingDirectoryUtf8(workingDirectory);
    if (!child.startProcess(program, arguments, makeAbsolute, ProcessPriorityInherit))
        return fail("Fail to start process", -1);
    if (!child.waitForFinished(timeoutMs, progress)) {
        child.killProcess();
        child.waitForFinished(Private::kKilledWaitMs);
        return isCanceled() ? fail("Canceled", -4) : fail("timeout", -2);
    }
    if (child.hasCrashed()) return fail("process has crashed", -3);
    const int code = child.exitCode();
    return code == 0 ? 0 : fail("process return an error", code);
}

bool xoProcess::StartDetachedUtf8(const std::string& program, const std::vector<std::string>& arguments,
                                  const std::string& workingDirectory) {
    return StartDetachedUtf8(program, arguments, workingDirectory, nullptr);
}

bool xoProcess::StartDetachedUtf8(const std::string& program, const std::vector<std::string>& arguments,
                                  const std::string& workingDirectory, std::uint32_t* pid) {
    const process::Child child = process::launch({program,
                                                  arguments,
                                                  {},
                                                  workingDirectory,
                                                  /*makeAbsolute=*/true,
                                                  ProcessPriorityInherit,
                                                  /*redirection=*/{},
                                                  ProcessTreeLoose});
    if (pid) *pid = child.processId;
    return static_cast<bool>(child.process);
}

}  // namespace xo
