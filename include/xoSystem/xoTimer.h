// Timers: xo::xoTimer counts the system's milliseconds, xoHighResTimer the ticks of its performance counter.
//
//     xo::xoTimer sinceSave(/*snapNow=*/true);
//     ...
//     if (sinceSave.isElapsedSec(60)) save();
//
//     xoHighResTimer timer;
//     timer.start();
//     solve();
//     timer.stop();
//     xo::xoLogObject(xo::xoLogInfo) << "solved in " << timer.getElapsedTimeInMilliSec() << " ms";
//
// Both are values, to be used by one thread at a time. No function fails.
#ifndef XOSYSTEM_XOTIMER_H
#define XOSYSTEM_XOTIMER_H

#include <cstdint>
#include <memory>

#include "xoSystem/xoExport.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

// The time since a moment that was stored, the snap. It advances in steps of 10 to 16 milliseconds.
// https://learn.microsoft.com/windows/win32/api/sysinfoapi/nf-sysinfoapi-gettickcount64
class XOSYSTEM_API xoTimer {
public:
    // Stores the present moment if snapNow is true; otherwise there is no snap.
    explicit xoTimer(bool snapNow = false) {
        if (snapNow) snapTime();
    }

    // Stores the present moment.
    void snapTime();
    // Removes the snap.
    void clearTime() { mSnapMs = kNotSnapped; }
    // Whether there is a snap.
    bool isTimeSnapped() const { return mSnapMs != kNotSnapped; }

    // Milliseconds since the snap, INT64_MAX when there is none.
    std::int64_t getElapsedMs() const;
    // The same. If resnap is true, snapTime is called after that: the time between the two readings of the clock is not
    // counted.
    std::int64_t getElapsedMs(bool resnap);

    // Whether more than that time has passed since the snap; always true without a snap.
    bool isElapsedMs(std::int64_t ms) const;
    // Seconds whose milliseconds do not fit into 64 bits are limited to the greatest or least value.
    bool isElapsedSec(std::int64_t seconds) const;

private:
    static constexpr std::int64_t kNotSnapped = INT64_MIN;

    std::int64_t mSnapMs = kNotSnapped;  // milliseconds since the system's start
};

}  // namespace xo

// A stopwatch; a new one is stopped at 0. A copy continues from the state of the original, independently of it.
class XOSYSTEM_API xoHighResTimer {
public:
    xoHighResTimer();
    ~xoHighResTimer();
    // Copies the start and end marks, and whether the timer runs.
    xoHighResTimer(const xoHighResTimer& other);
    xoHighResTimer& operator=(const xoHighResTimer& other);

    // Sets the start mark to now, even if the timer runs. The end mark stays until the next stop or reading.
    void start();
    // Sets the end mark to now. Does nothing if the timer is stopped.
    void stop();
    bool isRunning() const;
    // Stops the timer and sets it to 0.
    void clearTimer();

    // The time from the start to the end mark. Reading a running timer first moves its end mark to now.
    double getElapsedTimeInMicroSec();
    double getElapsedTimeInMilliSec() { return getElapsedTimeInMicroSec() * 0.001; }
    double getElapsedTimeInSec() { return getElapsedTimeInMicroSec() * 1e-6; }

private:
    struct Private;
    std::unique_ptr<Private> mPrivate;
};

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
