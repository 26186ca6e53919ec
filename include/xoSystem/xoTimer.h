// Timers: xo::xoTimer counts the system's milliseconds, xoHighResTimer the ticks of its finest counter.
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
// Both are plain values for one thread at a time, and nothing fails.
#ifndef XOSYSTEM_XOTIMER_H
#define XOSYSTEM_XOTIMER_H

#include <cstdint>
#include <memory>

#include "xoSystem/xoExport.h"

namespace xo {

// Time since a moment that was snapped. It moves in the steps of the system's tick count: 10 to 16 milliseconds.
class XOSYSTEM_API xoTimer {
public:
    // Has no snap unless asked for.
    explicit xoTimer(bool snapNow = false) {
        if (snapNow) snapTime();
    }

    // Takes the present moment for the snap, or forgets it.
    void snapTime();
    void clearTime() { mSnapMs = kNotSnapped; }
    // Whether there is a snap.
    bool isTimeSnapped() const { return mSnapMs != kNotSnapped; }

    // Milliseconds since the snap, INT64_MAX when there is none.
    std::int64_t getElapsedMs() const;
    // The same, then snaps anew if asked for, by a second look at the clock: the time between the two is lost.
    std::int64_t getElapsedMs(bool resnap);

    // Whether more than that time has passed. Without a snap more than any time has.
    bool isElapsedMs(std::int64_t ms) const;
    // Seconds too many to count in milliseconds are as many as can be.
    bool isElapsedSec(std::int64_t seconds) const;

private:
    static constexpr std::int64_t kNotSnapped = INT64_MIN;

    std::int64_t mSnapMs = kNotSnapped;  // milliseconds since the system's start
};

}  // namespace xo

// A stopwatch; a new one is stopped at 0. A copy goes on by itself from where the original stood.
class XOSYSTEM_API xoHighResTimer {
public:
    xoHighResTimer();
    ~xoHighResTimer();
    // Copies the marks, and whether it runs.
    xoHighResTimer(const xoHighResTimer& other);
    xoHighResTimer& operator=(const xoHighResTimer& other);

    // Measures from now on, also when it runs already. The last end mark stays until the next stop or reading.
    void start();
    // Marks the end. A timer that is stopped keeps the mark that it has.
    void stop();
    bool isRunning() const;
    // Back to stopped, at 0.
    void clearTimer();

    // The time from the start to the end mark. Reading a running timer first moves its end mark to now.
    double getElapsedTimeInMicroSec();
    double getElapsedTimeInMilliSec() { return getElapsedTimeInMicroSec() * 0.001; }
    double getElapsedTimeInSec() { return getElapsedTimeInMicroSec() * 1e-6; }

private:
    struct Private;
    std::unique_ptr<Private> mPrivate;
};

#endif
