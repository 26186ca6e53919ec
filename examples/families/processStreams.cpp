// Runs a program and uses what it prints: all of it at the end, line by line while it works, and in a conversation. The
// program is this one itself, called with a task.
#include <iostream>
#include <string>

#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoNamedPipe.h"
#include "xoSystem/xoProcess.h"

namespace {

using xo::xoProcess;

// The other side: reads words, and prints each with its length.
int measureWords() {
    for (std::string word; std::cin >> word;) std::cout << word << ' ' << word.size() << std::endl;
    std::cerr << "no more words\n";
    return 0;
}

std::string program() {
    std::string folder;
    return xo::xoDirUtils::GetFolderOfCurrentProcessUtf8(folder) ? folder + "/example_processStreams.exe" : folder;
}

bool runOnce() {
    xoProcess::RunOptions options;
    options.input = "oak beech";
    options.timeoutMs = 30000;
    const xoProcess::RunResult result = xoProcess::RunUtf8(program(), {"measure"}, options);
    if (!result.isSuccess()) return std::cout << result.message << '\n', false;
    std::cout << "printed " << result.output.size() << " bytes, and " << result.errorOutput.size() << " as errors\n";
    return true;
}

// The handler is called while waitForFinished() waits. The child and all that it starts end with the object.
bool showLines() {
    xoProcess child;
    child.setProcessTree(xoProcess::ProcessTreeTied);
    child.setInput(xoProcess::Input::Text("maple\npine\n"));
    child.setOutput(xoProcess::Output::Lines([](const std::string& line) { std::cout << "line: " << line << '\n'; }));
    child.setErrorOutput(xoProcess::Output::FileUtf8("errors.txt"));
    return child.startProcess(program(), {"measure"}) && child.waitForFinished(30000) && child.exitCode() == 0;
}

bool converse() {
    xoProcess child;
    child.setProcessTree(xoProcess::ProcessTreeTied);
    child.setInput(xoProcess::Input::Pipe());
    child.setOutput(xoProcess::Output::Pipe());
    if (!child.startProcess(program(), {"measure"})) return false;
    xo::xoNamedPipe& questions = *child.getInputPipe();
    xo::xoNamedPipe& answers = *child.getOutputPipe();
    answers.setTimeLimits(/*readMs=*/30000, /*writeMs=*/0);
    for (const char* const word : {"larch ", "elm "}) {
        questions << word;
        if (!questions.flush()) return false;
        char answer[100];
        const std::uint64_t size = answers.readSome(answer, sizeof answer);
        std::cout << "asked " << word << "- " << std::string(answer, answer + size).substr(0, size - 2) << '\n';
    }
    return questions.close() && child.waitForFinished(30000);  // closing the pipe ends the child's input
}

}  // namespace

int main(int count, char** arguments) {
    if (count == 2 && std::string(arguments[1]) == "measure") return measureWords();

    xo::initializeXoSystem(xo::InitTypeFull);
    const bool good = runOnce() && showLines() && converse();
    const std::string missing = xoProcess::FindProgramUtf8("no-such-program");
    std::cout << "no-such-program is " << (missing.empty() ? "in no folder of PATH" : missing) << '\n';
    xo::terminateXoSystem();
    return good ? 0 : 1;
}
