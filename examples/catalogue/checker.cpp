// recordChecker count [--overrun | --pipe name]: the helper program of the catalogue. It reads all record files of its
// working folder back, or with --pipe the records that the catalogue sends over the pipe of that name, prints what it
// has read, and compares the number of regions. Exit code 0 when all is well. With --overrun it does not end.
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <thread>

#include "records.h"
#include "xoSystem/xoSystem.h"

namespace {

constexpr unsigned kPatienceMs = 30000;

// What was read; the catalogue shows it.
bool report(std::size_t countries, std::size_t regions, std::size_t expectedRegions) {
    std::cout << countries << " countries, " << regions << " regions" << std::endl;
    return regions == expectedRegions;
}

bool checkFiles(std::size_t expectedRegions) {
    std::vector<std::string> files;
    const std::vector<std::string> recordFiles = {"bin"};
    xo::xoDirUtils::GlobFileAndFolderUtf8(xo::xoDirUtils::GetCurrentWorkingDirUtf8(), &files, nullptr, &recordFiles, 0);
    std::size_t regions = 0;
    for (const std::string& file : files) {
        catalogue::Country country;
        if (!catalogue::readRecords(file, country)) return false;
        regions += country.regions.size();
    }
    return report(files.size(), regions, expectedRegions);
}

// The number of records, then the records.
bool checkPipe(const std::string& name, std::size_t expectedRegions) {
    xo::xoNamedPipe pipe;
    pipe.setTimeLimits(kPatienceMs, kPatienceMs);
    if (!pipe.connectUtf8(name, kPatienceMs)) return false;
    xo::xoDataStream stream(&pipe, xo::xoDataStream::EndiannessBig);
    unsigned count = 0;
    std::size_t regions = 0;
    stream >> count;
    for (unsigned i = 0; i < count; ++i) {
        catalogue::Country country;
        if (!catalogue::readRecord(stream, country)) return false;
        regions += country.regions.size();
    }
    return stream.isOk() && report(count, regions, expectedRegions);
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 2) return 2;
    xo::initializeXoSystem(xo::InitTypeBasic, false);
    const std::size_t regions = std::strtoull(arguments[1], nullptr, 10);
    const bool overPipe = count > 3 && std::strcmp(arguments[2], "--pipe") == 0;
    const bool good = overPipe ? checkPipe(arguments[3], regions) : checkFiles(regions);
    if (count > 2 && std::strcmp(arguments[2], "--overrun") == 0) std::this_thread::sleep_for(std::chrono::hours(1));
    xo::terminateXoSystem();
    return good ? 0 : 1;
}
