// xoBench file.csv [family]: measures this library against what a user would take instead, and against physical limits.
#include <filesystem>

#include "families.h"

int wmain(int count, wchar_t** arguments) {
    if (count < 2) {
        std::fputs("usage: xoBench file.csv [family]\n", stderr);
        return 2;
    }
    bench::Suite suite(count > 2 ? std::filesystem::path(arguments[2]).u8string() : std::string());
    std::printf("%-8s %-38s %-34s %11s %11s %7s\n", "family", "case", "other", "ours ns", "other ns", "ratio");
    bench::measureCsv(suite);
    bench::measureFolders(suite);
    bench::measureIni(suite);
    bench::measureLog(suite);
    bench::measureProcess(suite);
    bench::measureStreams(suite);
    bench::measureText(suite);
    bench::measureThreads(suite);
    bench::measureUtil(suite);
    bench::measureVariant(suite);
    if (suite.rows().empty()) {
        std::fputs("no such family\n", stderr);
        return 2;
    }
    if (suite.writeCsv(arguments[1])) return 0;
    std::fputs("the table could not be written\n", stderr);
    return 1;
}
