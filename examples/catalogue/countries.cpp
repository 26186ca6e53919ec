#include "countries.h"

#include <filesystem>
#include <fstream>

#include "xoSystem/xoLog.h"
#include "xoSystem/xoStringUtils.h"

namespace catalogue {

bool readRegions(const std::string& path, Regions& regions) {
    std::ifstream table(std::filesystem::u8path(path), std::ios::binary);
    std::string line;
    if (!std::getline(table, line)) return false;  // the names of the columns
    while (std::getline(table, line)) {
        // 302811,"AD-02",02,"Canillo Parish",...: the second column is the region, and begins with its country.
        const std::vector<std::string> columns = xo::xoStringUtils::Split(line, ',', /*skipEmpty=*/false);
        if (columns.size() < 2 || columns[1].size() < 5) continue;
        const std::string region = columns[1].substr(1, columns[1].size() - 2);
        regions[region.substr(0, region.find('-'))].push_back(region);
    }
    return true;
}

void CountryWorker::stop() {
    beginWake();
    addJob(&mUntilStop);
    addJob(&mUntilStop);  // never executed: with it the queue is not empty when the first one returns
    endWake();
    xo::xoWorkThread::stop();
}

void CountryWorker::executeJob(xo::xoJob* job) {
    if (job == &mUntilStop) {
        while (!mustStop()) msleep(1);
        return;
    }
    const auto& countryJob = static_cast<const CountryJob&>(*job);
    mRegionCount += countryJob.regions().size();
    xo::xoLogObject(xo::xoLogDebug, "countries")
        << countryJob.country() << " has " << countryJob.regions().size() << " regions";
    mDone.release();
}

}  // namespace catalogue
