#include "process/launch.h"

#include "platform/wideText.h"
#include "process/commandLine.h"
#include "process/environmentBlock.h"
#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoLog.h"

namespace xo::process {
namespace {

bool isFile(const std::string& path) { return xoDirUtils::FileExistsUtf8(path) && !xoDirUtils::DirExistsUtf8(path); }

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

STARTUPINFOW startupInformation() {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwX = startup.dwY = startup.dwXSize = startup.dwYSize = static_cast<DWORD>(CW_USEDEFAULT);
    startup.dwFlags = STARTF_USESTDHANDLES;  // the three handles are null
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

Child create(Prepared& prepared) {
    STARTUPINFOW startup = startupInformation();
    PROCESS_INFORMATION created{};
    const BOOL isCreated = ::CreateProcessW(
        prepared.command.application.c_str(), prepared.command.line.data(), /*lpProcessAttributes=*/nullptr,
        /*lpThreadAttributes=*/nullptr, /*bInheritHandles=*/FALSE,
        prepared.priority | CREATE_NO_WINDOW | CREATE_UNICODE_ENVIRONMENT,
        prepared.environment.empty() ? nullptr : prepared.environment.data(),
        prepared.directory.empty() ? nullptr : prepared.directory.c_str(), &startup, &created);
    if (!isCreated) {
        const DWORD error = ::GetLastError();
        xoLogObject(xoLogDebug) << "CreateProcessW return an error " << error;
        return {};
    }
    const platform::KernelHandle mainThread(created.hThread);
    return {platform::KernelHandle(created.hProcess), created.dwProcessId, created.dwThreadId};
}

}  // namespace

Child launch(const Launch& wanted) {
    Prepared prepared;
    const DWORD error = prepare(wanted, prepared);
    if (error == ERROR_SUCCESS) return create(prepared);
    xoLogObject(xoLogDebug) << "Process not started, error " << error << " : " << wanted.program;
    return {};
}

}  // namespace xo::process
