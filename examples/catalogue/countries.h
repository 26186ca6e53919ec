// The table of regions, counted by country on a thread of its own.
#ifndef CATALOGUE_COUNTRIES_H
#define CATALOGUE_COUNTRIES_H

#include <atomic>
#include <map>
#include <string>
#include <vector>

#include "xoSystem/xoSemaphore.h"
#include "xoSystem/xoWorkThread.h"

namespace catalogue {

// The codes of the regions of each country: "DE" has "DE-BB", "DE-BE" and so on. False when the table cannot be read.
using Regions = std::map<std::string, std::vector<std::string>>;
bool readRegions(const std::string& path, Regions& regions);

// What is done with one country.
class CountryJob final : public xo::xoJob {
public:
    CountryJob(const std::string& country, const std::vector<std::string>& regions)
        : mCountry(country), mRegions(regions) {}

    const std::string& country() const { return mCountry; }
    const std::vector<std::string>& regions() const { return mRegions; }

private:
    const std::string& mCountry;
    const std::vector<std::string>& mRegions;
};

// Executes the jobs in the order in which they were queued, one at a time.
class CountryWorker final : public xo::xoWorkThread {
public:
    ~CountryWorker() override { stop(); }

    // May be called at any time: jobs keep the thread from falling asleep before it has seen the request.
    void stop() override;

    // Waits until so many jobs are done.
    void awaitJobs(unsigned int count) { mDone.acquire(count); }

    std::size_t regionCount() const { return mRegionCount; }

private:
    void executeJob(xo::xoJob* job) override;

    xo::xoJob mUntilStop;
    xo::xoSemaphore mDone{0};
    std::atomic<std::size_t> mRegionCount{0};
};

}  // namespace catalogue

#endif
