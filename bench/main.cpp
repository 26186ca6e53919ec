// xoBench file.csv [family]: measures this library against what a user would take instead, and against physical limits.
// Writes the rows to the file, and to file.md as a table for a README.
#include <cwchar>
#include <filesystem>

#include "aims.h"
#include "families.h"

int wmain(int count, wchar_t** arguments) {
    if (count == 3 && std::wcscmp(arguments[1], L"--write") == 0)
        return bench::writeOutput(std::wcstoull(arguments[2], nullptr, 10));
    if (count < 2) {
        std::fputs("usage: xoBench file.csv [family]\n", stderr);
        return 2;
    }
    bench::Suite suite(count > 2 ? std::filesystem::path(arguments[2]).u8string() : std::string(),
                       {std::begin(bench::kAims), std::end(bench::kAims)});
    std::printf("%-8s %-38s %-34s %11s %11s %7s\n", "family", "case", "other", "ours ns", "theirs ns", "ratio");
    bench::measureAmounts(suite);
    bench::measureCsv(suite);
    bench::measureFiles(suite);
    bench::measureIni(suite);
    bench::measureLog(suite);
    bench::measureMemory(suite);
    bench::measurePipe(suite);
    bench::measureProcess(suite);
    bench::measureProgress(suite);
    bench::measureStream(suite);
    bench::measureTables(suite);
    bench::measureText(suite);
    bench::measureThreads(suite);
    bench::measureUtil(suite);
    bench::measureVariant(suite);
    if (suite.rows().empty()) {
        std::fputs("no such family\n", stderr);
        return 2;
    }
    const std::filesystem::path file(arguments[1]);
    if (suite.writeCsv(file) && suite.writeMarkdown(std::filesystem::path(file).replace_extension(L".md"))) return 0;
    std::fputs("the table could not be written\n", stderr);
    return 1;
}
