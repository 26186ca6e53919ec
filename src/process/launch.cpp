// Starts a child: finds its program, prepares what CreateProcessW takes, and passes on only the listed handles.
#include "process/launch.h"

#include <utility>

#include "platform/slimLock.h"
#include "platform/wideText.h"
#include "process/attributeList.h"
#include "process/commandLine.h"
#include "process/environmentBlock.h"
#include "process/programFile.h"
#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoLog.h"

namespace xo::process {
namespace {

// The absolute path if makeAbsolute is set, with ".exe" appended when there is no file without it. Without makeAbsolute
// the path is passed to Windows unchanged.
std::string findProgram(const Launch& wanted) {
    if (!wanted.makeAbsolute || wanted.program.empty()) return wanted.program;
    const std::string path = xoDirUtils::GetAbsolutePathUtf8(wanted.program);
    return isFile(path) ? path : xoDirUtils::GetAbsolutePathUtf8(wanted.program + ".exe");
}

// The interpreter would start even if its batch file does not exist, and would search PATH for a relative path. So the
// file is checked here, and its path made absolute.
DWORD prepareBatchFile(std::string& program) {
    if (!isBatchFile(platform::toWide(program))) return ERROR_SUCCESS;
    if (!isFile(program)) return ERROR_FILE_NOT_FOUND;
    program = xoDirUtils::GetAbsolutePathUtf8(program);
    return ERROR_SUCCESS;
}

// An empty FileHandle is INVALID_HANDLE_VALUE, but a child without a standard handle expects null.
HANDLE orNull(const platform::FileHandle& handle) { return handle ? handle.get() : nullptr; }

STARTUPINFOEXW startupInformation(const StandardHandles& handles) {
    STARTUPINFOEXW startup{};
    STARTUPINFOW& basic = startup.StartupInfo;
    basic.cb = sizeof basic;
    basic.dwX = basic.dwY = basic.dwXSize = basic.dwYSize = static_cast<DWORD>(CW_USEDEFAULT);
    basic.dwFlags = STARTF_USESTDHANDLES;  // null means that the child has no such handle
    basic.hStdInput = orNull(handles.input);
    basic.hStdOutput = orNull(handles.output);
    basic.hStdError = orNull(handles.isMerged ? handles.output : handles.error);
    return startup;
}

// The arguments of CreateProcessW, in the form that it requires.
struct Prepared {
    Command command;
    std::wstring environment;  // empty: that of this process
    std::wstring directory;    // empty: that of this process
    DWORD priority = 0;
};

// Converts and checks what was given. Returns ERROR_SUCCESS, or why the start is refused before Windows is asked.
DWORD prepare(const Launch& wanted, Prepared& prepared) {
    if (!isPlainText(wanted.program)) return ERROR_INVALID_PARAMETER;  // before toWide replaces broken sequences
    std::string program = findProgram(wanted);
    if (const DWORD error = prepareBatchFile(program)) return error;
    prepared.command = makeCommand(program, wanted.arguments, wanted.environment);
    if (prepared.command.error) return prepared.command.error;

    if (!wanted.environment.empty()) {
        prepared.environment = makeEnvironmentBlock(wanted.environment);
        if (prepared.environment.empty()) return ERROR_INVALID_PARAMETER;
    }
    if (!isPlainText(wanted.workingDirectory)) return ERROR_DIRECTORY;
    // No "\\?\" prefix: CreateProcessW refuses it here.
    prepared.directory = platform::toWide(wanted.workingDirectory);
    prepared.priority = priorityClass(wanted.priority);
    return ERROR_SUCCESS;
}

// Held while handles for a child are inheritable: inheritance is a property of the handle, not of one call. Children of
// xoProcess get only the handles in their list in any case. A child that other code of this process starts meanwhile
// with all inheritable handles may still get them.
platform::SlimLock inheritanceLock;

// Returns ERROR_SUCCESS, or the error code of CreateProcessW.
DWORD createProcess(Prepared& prepared, DWORD flags, STARTUPINFOEXW& startup, BOOL inherits,
                    PROCESS_INFORMATION& created) {
    const BOOL isCreated = ::CreateProcessW(
        prepared.command.application.c_str(), prepared.command.line.data(), /*lpProcessAttributes=*/nullptr,
        /*lpThreadAttributes=*/nullptr, inherits, flags,
        prepared.environment.empty() ? nullptr : prepared.environment.data(),
        prepared.directory.empty() ? nullptr : prepared.directory.c_str(), &startup.StartupInfo, &created);
    return isCreated ? ERROR_SUCCESS : ::GetLastError();
}

// Lets the child inherit its standard handles and nothing else. Closes the child's ends here, whether or not it starts:
// as long as this process has the writing end of an output pipe, the reading end never sees its end.
// https://learn.microsoft.com/windows/win32/api/processthreadsapi/nf-processthreadsapi-updateprocthreadattribute
DWORD createWithHandles(Prepared& prepared, DWORD flags, StandardHandles& handles, PROCESS_INFORMATION& created) {
    STARTUPINFOEXW startup = startupInformation(handles);
    AttributeList attributes;
    for (const platform::FileHandle* handle : {&handles.input, &handles.output, &handles.error})
        if (*handle) attributes.add(handle->get());
    if (attributes.isEmpty()) return createProcess(prepared, flags, startup, /*inherits=*/FALSE, created);

    const platform::SlimLocker locker(inheritanceLock);
    const bool isListed = attributes.make() && attributes.makeInheritable();
    DWORD error = isListed ? ERROR_SUCCESS : ::GetLastError();
    if (isListed) {
        startup.lpAttributeList = attributes.get();
        startup.StartupInfo.cb = sizeof startup;
        error = createProcess(prepared, flags | EXTENDED_STARTUPINFO_PRESENT, startup, /*inherits=*/TRUE, created);
    }
    for (platform::FileHandle* handle : {&handles.input, &handles.output, &handles.error}) handle->reset();
    return error;
}

// Puts a suspended child into a job of its own, in which all its children will be too, as the job does not allow
// breakaway. None when that fails, with the reason in GetLastError.
platform::KernelHandle makeJob(HANDLE process, xoProcess::ProcessTree tree) {
    platform::KernelHandle job(::CreateJobObjectW(/*lpJobAttributes=*/nullptr, /*lpName=*/nullptr));
    if (!job) return job;
    // Windows ends the processes of a tied tree when the last handle of the job is closed, even by a crash of this
    // process.
    if (tree == xoProcess::ProcessTreeTied) {
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        if (!::SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits)) return {};
    }
    if (!::AssignProcessToJobObject(job.get(), process)) return {};
    return job;
}

Child failed(DWORD error) {
    Child child;
    child.error = error;
    return child;
}

Child create(Prepared& prepared, const Launch& wanted, StandardHandles handles) {
    const bool isLoose = wanted.tree != xoProcess::ProcessTreeOwned && wanted.tree != xoProcess::ProcessTreeTied;
    // A child with a job starts suspended, so that it cannot start children before it is in the job. A child with a
    // console handle of this process must share that console; CREATE_NO_WINDOW would give it a console of its own.
    const DWORD flags = prepared.priority | CREATE_UNICODE_ENVIRONMENT | (handles.hasConsole ? 0 : CREATE_NO_WINDOW) |
                        (isLoose ? 0 : CREATE_SUSPENDED);
    PROCESS_INFORMATION created{};
    if (const DWORD error = createWithHandles(prepared, flags, handles, created)) {
        xoLogObject(xoLogDebug) << "CreateProcessW return an error " << error;
        return failed(error);
    }
    const platform::KernelHandle mainThread(created.hThread);
    Child child;
    child.process.reset(created.hProcess);
    child.processId = created.dwProcessId;
    child.mainThreadId = created.dwThreadId;
    child.handles = std::move(handles);
    if (isLoose) return child;
    child.job = makeJob(child.process.get(), wanted.tree);
    if (child.job && ::ResumeThread(mainThread.get()) != static_cast<DWORD>(-1)) return child;
    const DWORD error = ::GetLastError();
    // The child is suspended, and nothing else would ever resume or end it.
    ::TerminateProcess(child.process.get(), static_cast<UINT>(-1));
    xoLogObject(xoLogDebug) << "Process not started, error " << error << " : " << wanted.program;
    return failed(error);
}

}  // namespace

Child launch(const Launch& wanted) {
    Prepared prepared;
    StandardHandles handles;
    DWORD error = prepare(wanted, prepared);
    if (error == ERROR_SUCCESS) error = openStandardHandles(wanted.redirection, handles);
    if (error == ERROR_SUCCESS) return create(prepared, wanted, std::move(handles));
    xoLogObject(xoLogDebug) << "Process not started, error " << error << " : " << wanted.program;
    return failed(error);
}

}  // namespace xo::process
