// Estimates the speed of a work and its remaining time.
#ifndef XO_PROGRESS_ESTIMATE_H
#define XO_PROGRESS_ESTIMATE_H

#include <cstdint>

namespace xo::progress {

// The exponential moving average of a speed, with samples at irregular times. Its time constant is 15 seconds, or a
// quarter of the elapsed time if that is longer: a long work needs a steadier value. Dividing by the sum of the weights
// keeps the first values from being too low.
class SmoothedSpeed {
public:
    // The amount that is done at a time. Neither value may be below the one before.
    void begin(std::int64_t nowMs, double amount);
    void add(std::int64_t nowMs, double amount);

    // Units per second; 0 until a sample was added at least 50 ms after begin().
    double perSecond() const { return mWeight > 0 ? mSpeed / mWeight : 0; }

private:
    std::int64_t mBeginMs = 0;
    std::int64_t mLastMs = 0;
    double mLastAmount = 0;
    double mSpeed = 0;   // starts at 0 and is too low at first; perSecond() corrects that
    double mWeight = 0;  // the sum of the weights, from 0 towards 1
};

// The remaining time of a work, from its fraction. A small rise is suppressed, because the display would jump up and
// down.
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
