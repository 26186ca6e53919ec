// Starts a child: finds its program, prepares what CreateProcessW takes, and passes on only the listed handles.
#include "process/launch.h"

#include <utility>

#include "platform/slimLock.h"
#include "platform/wideText.h"
#include "process/attributeList.h"
#include "process/commandLine.h"
#include "process/environmentBlock.h"
#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoLog.h"

namespace xo::process {
namespace {

bool isFile(const std::string& path) { return xoDirUtils::FileExistsUtf8(path) && !xoDirUtils::DirExistsUtf8(path); }

// The absolute path if that is wanted, with ".exe" when there is no file without it.
std::string findProgram(const Launch& wanted) {
    if (!wanted.makeAbsolute || wanted.program.empty()) return wanted.program;
    const std::string path = xoDirUtils::GetAbsolutePathUtf8(wanted.program);
    return isFile(path) ? path : xoDirUtils::GetAbsolutePathUtf8(wanted.program + ".exe");
}

// The interpreter starts even if its batch file does not exist, and searches for a relative one.
DWORD prepareBatchFile(std::string& program) {
    if (!isBatchFile(platform::toWide(program))) return ERROR_SUCCESS;
    if (!isFile(program)) return ERROR_FILE_NOT_FOUND;
    program = xoDirUtils::GetAbsolutePathUtf8(program);
    return ERROR_SUCCESS;
}

HANDLE orNull(const platform::FileHandle& handle) { return handle ? handle.get() : nullptr; }

STARTUPINFOEXW startupInformation(const StandardHandles& handles) {
    STARTUPINFOEXW startup{};
    STARTUPINFOW& basic = startup.StartupInfo;
    basic.cb = sizeof basic;
    basic.dwX = basic.dwY = basic.dwXSize = basic.dwYSize = static_cast<DWORD>(CW_USEDEFAULT);
    basic.dwFlags = STARTF_USESTDHANDLES;  // null stands for none
    basic.hStdInput = orNull(handles.input);
    basic.hStdOutput = orNull(handles.output);
    basic.hStdError = orNull(handles.isMerged ? handles.output : handles.error);
    return startup;
}

// All that CreateProcessW gets, as it takes it.
struct Prepared {
    Command command;
    std::wstring environment;  // empty: that of this process
    std::wstring directory;    // empty: that of this process
    DWORD priority = 0;
};

// ERROR_SUCCESS, or why the start is refused.
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
    // No "\\?\" prefix: CreateProcessW refuses it here.
    prepared.directory = platform::toWide(wanted.workingDirectory);
    if (prepared.directory.find(L'\0') != std::wstring::npos) return ERROR_DIRECTORY;
    prepared.priority = priorityClass(wanted.priority);
    return ERROR_SUCCESS;
}

// From making them inheritable to closing them. Another thread of this process that starts a child with all inheritable
// handles, by other means than this class, may still pass them on; children of this class get what is listed for them.
platform::SlimLock inheritanceLock;

// ERROR_SUCCESS, or why there is no child.
DWORD createProcess(Prepared& prepared, DWORD flags, STARTUPINFOEXW& startup, BOOL inherits,
                    PROCESS_INFORMATION& created) {
    const BOOL isCreated = ::CreateProcessW(
        prepared.command.application.c_str(), prepared.command.line.data(), /*lpProcessAttributes=*/nullptr,
        /*lpThreadAttributes=*/nullptr, inherits, flags,
        prepared.environment.empty() ? nullptr : prepared.environment.data(),
        prepared.directory.empty() ? nullptr : prepared.directory.c_str(), &startup.StartupInfo, &created);
    return isCreated ? ERROR_SUCCESS : ::GetLastError();
}

// The child inherits the standard handles that it has, and nothing else.
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

// Puts a child that does not run yet into a job of its own, which its own children cannot leave. None when Windows
// refuses that.
platform::KernelHandle makeJob(HANDLE process, xoProcess::ProcessTree tree) {
    platform::KernelHandle job(::CreateJobObjectW(/*lpJobAttributes=*/nullptr, /*lpName=*/nullptr));
    if (!job) return job;
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
    // A child with a job starts suspended, so that it cannot start children of its own before it is in the job. A child
    // that gets a console handle of this process needs the console too.
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
    // It is still suspended, and nothing would resume it.
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
