// Runs programs to their end by one call.
#include <utility>

#include "process/processRecord.h"
#include "xoSystem/xoDirUtils.h"

namespace xo {
namespace {

using RunResult = xoProcess::RunResult;

// The message for a start that failed. It names the path only when the program was not found.
std::string startFailure(DWORD error, const std::string& program, bool makeAbsolute) {
    std::string text = "Fail to start process";
    if (program.empty() || (error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND)) return text;
    return text + " : " + (makeAbsolute ? xoDirUtils::GetAbsolutePathUtf8(program) : program);
}

// An empty input is the null device, not an empty text: that would need a pipe.
void setUp(xoProcess& child, const xoProcess::RunOptions& options) {
    using Input = xoProcess::Input;
    using Output = xoProcess::Output;
    child.setWorkingDirectoryUtf8(options.workingDirectory);
    child.setEnvironmentUtf8(options.environment);
    child.setInput(options.input.empty() ? Input::Null() : Input::Text(options.input));
    child.setOutput(Output::Text(options.maxOutputBytes));
    child.setErrorOutput(options.mergeError ? Output::Merged() : Output::Text(options.maxOutputBytes));
    child.setProcessTree(options.tree);
}

// Sets the outcome of a child that was started. A child that was killed after the limit is TimedOut, whatever its exit
// code is; the code is 0 if it has not ended yet.
void describeEnd(const xoProcess& child, bool wasInTime, RunResult& result) {
    result.exitCode = child.exitCode();
    if (!wasInTime) {
        result.outcome = RunResult::TimedOut;
        result.message = "timeout";
    } else if (child.hasCrashed()) {
        result.outcome = RunResult::Crashed;
        result.message = "process has crashed";
    } else {
        result.outcome = RunResult::Finished;
        if (result.exitCode != 0) result.message = "process return an error";
    }
}

}  // namespace

xoProcess::RunResult xoProcess::RunUtf8(const std::string& program, const std::vector<std::string>& arguments) {
    return RunUtf8(program, arguments, RunOptions());
}

xoProcess::RunResult xoProcess::RunUtf8(const std::string& program, const std::vector<std::string>& arguments,
                                        const RunOptions& options) {
    RunResult result;
    xoProcess child;
    setUp(child, options);
    // Not startProcess(): its pause is for programs that are closed by a window message.
    if (!child.mPrivate->start(program, arguments, options.makeAbsolute, ProcessPriorityInherit)) {
        result.message = startFailure(child.mPrivate->startError, program, options.makeAbsolute);
        return result;
    }
    const bool wasInTime = child.waitForFinished(options.timeoutMs);
    if (!wasInTime) {
        child.killProcess();
        child.waitForFinished(Private::kKilledWaitMs);
    }
    describeEnd(child, wasInTime, result);
    // Also after a time-out: what was written until then may explain it.
    result.outputCut = child.wasOutputCut();
    result.output = child.mPrivate->streams->takeOutputText();  // a child with an output text has streams
    result.errorOutput = child.mPrivate->streams->takeErrorText();
    return result;
}

}  // namespace xo
