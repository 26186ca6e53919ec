// Writes lines from several threads into a rotating log file: logWriter path process threads lines board
// On the board each thread counts the lines that it has written.
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "soak/soakBoard.h"
// CommandLineToArgvW
#include <shellapi.h>

#include "xoSystem/xoSystem.h"

int main() {
    int count = 0;
    wchar_t** const arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (count != 6) return 2;
    const long process = std::wcstol(arguments[2], nullptr, 10);
    const long threadCount = std::wcstol(arguments[3], nullptr, 10);
    const long lineCount = std::wcstol(arguments[4], nullptr, 10);
    const xo::tests::SoakBoard board(arguments[5]);

    xo::initializeXoSystem(xo::InitTypeFull);
    xo::xoLog::edit().installFileHandlerExUtf8(std::filesystem::path(arguments[1]).u8string(), 0, 20000, 100);
    std::vector<std::thread> threads;
    for (long t = 0; t < threadCount; ++t)
        threads.emplace_back([&, t] {
            for (long i = 0; i < lineCount; ++i) {
                xo::xoLogObject(xo::xoLogInfo, "worker")
                    << "process " << process << " thread " << t << " line " << i << " " << std::string(200, 'x');
                ++board.cell(static_cast<std::size_t>(process * threadCount + t)).done;
            }
        });
    for (std::thread& thread : threads) thread.join();
    xo::terminateXoSystem();
    ::LocalFree(arguments);
    return 0;
}
