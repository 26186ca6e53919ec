// Converts pictures by a helper program that may fail in any way, and prints the result of each. The helper is this
// program itself, called with the name of a picture.
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>

#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoProcess.h"
#include "xoSystem/xoThread.h"

namespace {

int convert(const std::string& picture) {
    if (picture == "endless") xo::xoThread::sleep(60);
    if (picture == "broken") *static_cast<volatile int*>(nullptr) = 1;
    if (picture == "odd") return 3;
    std::ofstream(picture + ".png") << "converted";
    return 0;
}

std::string helper() {
    std::string folder;
    return xo::xoDirUtils::GetFolderOfCurrentProcessUtf8(folder) ? folder + "/example_process.exe" : std::string();
}

void convertInChild(const std::string& picture) {
    constexpr unsigned kPatienceMs = 1500;
    std::string error;
    const int code = xo::xoProcess::ExecUtf8(helper(), {picture}, /*workingDirectory=*/{}, /*makeAbsolute=*/true,
                                             picture == "endless" ? kPatienceMs : 30000, &error);
    std::cout << picture << ": " << (code == 0 ? "done" : error) << " (" << code << ")\n";
}

// With an object, the program goes on while the child works.
bool convertMeanwhile(const std::string& picture) {
    xo::xoProcess child;
    if (!child.startProcess(helper(), {picture}, /*makeAbsolute=*/true, xo::ProcessPriorityLow)) return false;
    const std::uint32_t pid = child.getPid();
    if (!child.waitForFinished(30000)) child.killProcess();
    std::cout << picture << ": " << (pid != 0 && child.exitCode() == 0 ? "done" : "failed") << " meanwhile\n";
    return child.getState() == xo::xoProcess::StateFinished && !child.hasCrashed();
}

}  // namespace

int main(int count, char** arguments) {
    if (count == 2) return convert(arguments[1]);

    xo::initializeXoSystem(xo::InitTypeFull);
    for (const char* const picture : {"sun set", "odd", "broken", "endless"}) convertInChild(picture);
    const bool good = convertMeanwhile("moon") && xo::xoDirUtils::FileExistsUtf8("sun set.png");

    std::vector<std::string> words;
    if (!xo::xoProcess::SplitCommandLine("convert.exe \"sun set\" -size 800", words)) return 1;
    std::cout << words.size() << " words, the second: " << words[1] << '\n';
    xo::terminateXoSystem();
    return good ? 0 : 1;
}
