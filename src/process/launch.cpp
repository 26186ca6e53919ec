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

// The interpreter starts whether its batch file exists or not, and searches for a relative one.
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
    startup.dwFlags = STARTF_USESTDHANDLES;  // all three stay null
    return startup;
}

// Returns the error. The working directory cannot have the "\\?\" prefix, which CreateProcessW refuses there.
DWORD create(Command& command, std::wstring environment, const std::wstring& directory, DWORD priority, Child& child) {
    STARTUPINFOW startup = startupInformation();
    PROCESS_INFORMATION created{};
    if (!::CreateProcessW(command.application.c_str(), command.line.data(), /*lpProcessAttributes=*/nullptr,
                          /*lpThreadAttributes=*/nullptr, /*bInheritHandles=*/FALSE,
                          priority | CREATE_NO_WINDOW | CREATE_UNICODE_ENVIRONMENT,
                          environment.empty() ? nullptr : environment.data(),
                          directory.empty() ? nullptr : directory.c_str(), &startup, &created))
        return ::GetLastError();
    const platform::KernelHandle mainThread(created.hThread);
    child.process.reset(created.hProcess);
    child.processId = created.dwProcessId;
    child.mainThreadId = created.dwThreadId;
    return ERROR_SUCCESS;
}

DWORD tryLaunch(const Launch& wanted, Child& child) {
    std::string program = findProgram(wanted);
    if (const DWORD error = prepareBatchFile(program)) return error;
    Command command = makeCommand(program, wanted.arguments);
    if (command.error) return command.error;

    std::wstring environment;
    if (!wanted.environment.empty()) {
        environment = makeEnvironmentBlock(wanted.environment);
        if (environment.empty()) return ERROR_INVALID_PARAMETER;
    }
    const std::wstring directory = platform::toWide(wanted.workingDirectory);
    if (directory.find(L'\0') != std::wstring::npos) return ERROR_DIRECTORY;
    return create(command, std::move(environment), directory, priorityClass(wanted.priority), child);
}

}  // namespace

Child launch(const Launch& wanted) {
    Child child;
    const DWORD error = tryLaunch(wanted, child);
    if (error) xoLogObject(xoLogDebug) << "CreateProcessW return an error " << error;
    return child;
}

}  // namespace xo::process
