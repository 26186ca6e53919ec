#include "countryWorker.h"

#include "records.h"
#include "xoSystem/xoLog.h"

namespace catalogue {

void CountryJob::write(const std::string& folder) {
    const std::string path = folder + "/" + mCountry.code + ".bin";
    mGood = writeRecords(path, mCountry, mBytes);
    if (!mGood) xo::xoLogObject(xo::xoLogCritical) << "the records cannot be written: " << path;
}

void CountryWorker::stop() {
    beginWake();
    addJob(&mUntilStop);
    addJob(&mUntilStop);  // never executed: with it the queue is not empty when the first one returns
    endWake();
    xo::xoWorkThread::stop();
}

void CountryWorker::awaitJobs(std::size_t count, xo::xoProgressNotifier* progress) {
    xo::xoProgressScope work(progress, count, "records", xo::ProgressUnitItems);
    for (std::size_t i = 0; i < count; ++i) {
        mDone.acquire(1);
        work.advance();
    }
}

void CountryWorker::executeJob(xo::xoJob* job) {
    if (job == &mUntilStop) {
        while (!mustStop()) msleep(1);
        return;
    }
    static_cast<CountryJob*>(job)->write(mFolder);
    mDone.release();
}

}  // namespace catalogue
