// Writes the record files of the countries on a thread of its own.
#ifndef CATALOGUE_COUNTRYWORKER_H
#define CATALOGUE_COUNTRYWORKER_H

#include <cstdint>
#include <string>

#include "countries.h"
#include "xoSystem/xoProgress.h"
#include "xoSystem/xoSemaphore.h"
#include "xoSystem/xoWorkThread.h"

namespace catalogue {

// What is done for one country. The results are read once the worker says that the job is done.
class CountryJob final : public xo::xoJob {
public:
    explicit CountryJob(const Country& country) : mCountry(country) {}

    const Country& country() const { return mCountry; }
    bool good() const { return mGood; }
    std::uint64_t bytes() const { return mBytes; }

    void write(const std::string& folder);

private:
    const Country& mCountry;
    std::uint64_t mBytes = 0;
    bool mGood = false;
};

// Executes the jobs in the order in which they were queued, one at a time.
class CountryWorker final : public xo::xoWorkThread {
public:
    explicit CountryWorker(std::string folder) : mFolder(std::move(folder)) {}
    ~CountryWorker() override { stop(); }

    // May be called at any time: jobs keep the thread from falling asleep before it has seen the request.
    void stop() override;

    // Waits until so many jobs are done, each of which is a step of the progress.
    void awaitJobs(std::size_t count, xo::xoProgressNotifier* progress);

private:
    void executeJob(xo::xoJob* job) override;

    const std::string mFolder;
    xo::xoJob mUntilStop;
    xo::xoSemaphore mDone{0};
};

}  // namespace catalogue

#endif
