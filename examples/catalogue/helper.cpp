#include "helper.h"

#include <vector>

#include "xoSystem/xoLog.h"
#include "xoSystem/xoProcess.h"
#include "xoSystem/xoProgressConsole.h"

namespace catalogue {
namespace {

constexpr int kTimedOut = -2;

// Runs the helper and shows what came of it.
bool endsWith(int expectedResult, const char* what, const std::string& program,
              const std::vector<std::string>& arguments, const std::string& folder, unsigned int timeoutMs,
              xo::xoProgressNotifier* progress) {
    std::string error = "no error";
    const int result =
        xo::xoProcess::ExecUtf8(program, arguments, folder, /*makeAbsolute=*/true, timeoutMs, &error, progress);
    xo::xoProgressConsole::WriteLine(std::string("helper:   ") + what + ": result " + std::to_string(result) + ", " +
                                     error);
    if (result == expectedResult) return true;
    xo::xoLogObject(xo::xoLogCritical) << program << ", " << what << ": result " << result << ", " << error;
    return false;
}

}  // namespace

bool checkRecords(const std::string& programFolder, const std::string& recordFolder, std::size_t expectedRegions,
                  xo::xoProgressNotifier* progress) {
    xo::xoProgressScope work(progress, 2, "records are read back");
    const std::string program = programFolder + "/recordChecker";  // ".exe" is found
    const std::string count = std::to_string(expectedRegions);
    const bool read = endsWith(0, "reads the records back", program, {count}, recordFolder, 30000, progress);
    if (read) work.advance();
    const bool late =
        endsWith(kTimedOut, "made to overrun", program, {count, "--overrun"}, recordFolder, 500, progress);
    if (late) work.advance();
    return read && late;
}

}  // namespace catalogue
