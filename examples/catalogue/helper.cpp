#include "helper.h"

#include <vector>

#include "records.h"
#include "xoSystem/xoDataStream.h"
#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoNamedPipe.h"
#include "xoSystem/xoProcess.h"
#include "xoSystem/xoProgressConsole.h"
#include "xoSystem/xoSystemUtils.h"

namespace catalogue {
namespace {

constexpr unsigned kPatienceMs = 30000;

void show(const std::string& text) { xo::xoProgressConsole::WriteLine("helper:   " + text); }

bool complain(const std::string& what) {
    xo::xoLogObject(xo::xoLogCritical) << "the helper, " << what;
    return false;
}

// A helper whose lines are shown as they come, and which ends with this object whatever happens.
void setUp(xo::xoProcess& helper) {
    helper.setProcessTree(xo::xoProcess::ProcessTreeTied);
    helper.setOutput(xo::xoProcess::Output::Lines([](const std::string& line) { show("says " + line); }));
    helper.setErrorOutput(xo::xoProcess::Output::Merged());
}

bool readsFiles(const std::string& program, const std::string& regions, const std::string& folder,
                xo::xoProgressNotifier* progress) {
    xo::xoProcess helper;
    setUp(helper);
    helper.setWorkingDirectoryUtf8(folder);
    const bool ended = helper.startProcess(program, {regions}) && helper.waitForFinished(kPatienceMs, progress);
    const bool good = ended && helper.exitCode() == 0;
    show(good ? "read the files back" : "did not read the files back");
    return good || complain("reading files: code " + std::to_string(helper.exitCode()));
}

// The number of records, then the records.
bool sendRecords(xo::xoNamedPipe& pipe, const std::string& folder) {
    std::vector<std::string> files;
    const std::vector<std::string> extensions = {"bin"};
    xo::xoDirUtils::GlobFileAndFolderUtf8(folder, &files, nullptr, &extensions, 0);
    xo::xoDataStream stream(&pipe, xo::xoDataStream::EndiannessBig);
    stream << static_cast<unsigned>(files.size());
    for (const std::string& file : files) {
        Country country;
        if (!readRecords(file, country) || !writeRecord(stream, country)) return false;
    }
    return pipe.close();
}

// The name of the pipe is told to the helper alone, so that no other program can take it first.
bool readsPipe(const std::string& program, const std::string& regions, const std::string& folder,
               xo::xoProgressNotifier* progress) {
    const std::string name = "catalogue-" + xo::xoSystemUtils::CreateUuid();
    xo::xoNamedPipeServer server;
    xo::xoNamedPipe pipe;
    pipe.setTimeLimits(kPatienceMs, kPatienceMs);
    xo::xoProcess helper;
    setUp(helper);
    const bool sent = server.listenUtf8(name) && helper.startProcess(program, {regions, "--pipe", name}) &&
                      server.waitForConnection(pipe, kPatienceMs) && sendRecords(pipe, folder);
    const bool good = sent && helper.waitForFinished(kPatienceMs, progress) && helper.exitCode() == 0;
    show(good ? "read the records over a pipe" : "did not read the records over a pipe");
    return good || complain("reading over a pipe: code " + std::to_string(helper.exitCode()));
}

bool overruns(const std::string& program, const std::string& regions, const std::string& folder) {
    xo::xoProcess::RunOptions options;
    options.workingDirectory = folder;
    options.timeoutMs = 500;
    const auto result = xo::xoProcess::RunUtf8(program, {regions, "--overrun"}, options);
    show("made to overrun: " + result.message);
    return result.outcome == xo::xoProcess::RunResult::TimedOut || complain("made to overrun: " + result.message);
}

}  // namespace

bool checkRecords(const std::string& programFolder, const std::string& recordFolder, std::size_t expectedRegions,
                  xo::xoProgressNotifier* progress) {
    xo::xoProgressScope work(progress, 3, "records are read back");
    const std::string program = programFolder + "/recordChecker";  // ".exe" is found
    const std::string regions = std::to_string(expectedRegions);
    const bool read = readsFiles(program, regions, recordFolder, progress);
    if (read) work.advance();
    const bool received = readsPipe(program, regions, recordFolder, progress);
    if (received) work.advance();
    const bool late = overruns(program, regions, recordFolder);
    if (late) work.advance();
    return read && received && late;
}

}  // namespace catalogue
