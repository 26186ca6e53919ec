// recordChecker count [--overrun]: the helper program of the catalogue. It reads all record files of its working folder
// back and compares the number of regions in them. Exit code 0 when all is well. With --overrun it does not end.
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "records.h"
#include "xoSystem/xoSystem.h"

namespace {

bool check(std::size_t expectedRegions) {
    std::vector<std::string> files;
    const std::vector<std::string> recordFiles = {"bin"};
    xo::xoDirUtils::GlobFileAndFolderUtf8(xo::xoDirUtils::GetCurrentWorkingDirUtf8(), &files, nullptr, &recordFiles, 0);
    std::size_t regions = 0;
    for (const std::string& file : files) {
        catalogue::Country country;
        if (!catalogue::readRecords(file, country)) return false;
        regions += country.regions.size();
    }
    return regions == expectedRegions;
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 2) return 2;
    xo::initializeXoSystem(xo::InitTypeBasic, false);
    const bool good = check(std::strtoull(arguments[1], nullptr, 10));
    if (count > 2 && std::strcmp(arguments[2], "--overrun") == 0) std::this_thread::sleep_for(std::chrono::hours(1));
    xo::terminateXoSystem();
    return good ? 0 : 1;
}
