// How fast a work moves, and how long it will still take.
#ifndef XO_PROGRESS_ESTIMATE_H
#define XO_PROGRESS_ESTIMATE_H

#include <cstdint>

namespace xo::progress {

// The exponential average of a speed whose samples come at irregular times. It forgets with a time constant of 15
// seconds, or of a quarter of the time so far where that is longer. The first samples are not pulled towards 0: the
// average is divided by the sum of the weights that it was made with.
class SmoothedSpeed {
public:
    // The amount at a time, neither ever below the last one.
    void begin(std::int64_t nowMs, double amount);
    void add(std::int64_t nowMs, double amount);

    // Per second; 0 before the second sample.
    double perSecond() const { return mWeight > 0 ? mSpeed / mWeight : 0; }

private:
    std::int64_t mBeginMs = 0;
    std::int64_t mLastMs = 0;
    double mLastAmount = 0;
    double mSpeed = 0;
    double mWeight = 0;
};

// The time that a work will still take, from its fraction. A small rise is not passed on: it would make the display
// jump up and down.
class RemainingTime {
public:
    static constexpr std::int64_t kNone = -1;

    void begin(std::int64_t nowMs);
    // In milliseconds. kNone in the first 2 seconds, before anything has moved, and beyond 99 hours.
    std::int64_t at(std::int64_t nowMs, double fraction);

private:
    SmoothedSpeed mSpeed;
    std::int64_t mBeginMs = 0;
    std::int64_t mLastMs = 0;  // of the value that was returned last
    std::int64_t mLastRemainingMs = kNone;
};

}  // namespace xo::progress

#endif
