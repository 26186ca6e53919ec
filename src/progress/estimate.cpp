// Estimates of speed and remaining time. The times are the caller's, so that a test needs no clock.
#include "progress/estimate.h"

#include <algorithm>
#include <cmath>

namespace xo::progress {
namespace {

constexpr double kMsPerSecond = 1000;
constexpr std::int64_t kLeastSampleMs = 50;      // GetTickCount64 advances by 10 to 16 ms, too coarse for less
constexpr std::int64_t kFirstEstimateMs = 2000;  // after the begin; earlier estimates are far off
constexpr double kLastEstimateMs = 99.0 * 3600 * kMsPerSecond;
constexpr double kSmallRise = 1.1;  // up to 10 % is suppressed

}  // namespace

void SmoothedSpeed::begin(std::int64_t nowMs, double amount) {
    *this = SmoothedSpeed();
    mBeginMs = mLastMs = nowMs;
    mLastAmount = amount;
}

void SmoothedSpeed::add(std::int64_t nowMs, double amount) {
    if (nowMs - mLastMs < kLeastSampleMs) return;
    const double seconds = static_cast<double>(nowMs - mLastMs) / kMsPerSecond;
    const double elapsedSeconds = static_cast<double>(nowMs - mBeginMs) / kMsPerSecond;
    const double timeConstant = (std::max)(15.0, elapsedSeconds / 4);
    // 1 - exp(-t/T): the weight of a sample that lasts t. expm1 keeps its digits where t is small against T.
    const double share = -std::expm1(-seconds / timeConstant);
    mSpeed += share * ((amount - mLastAmount) / seconds - mSpeed);
    // The sum of the weights so far, by which perSecond() divides: https://en.wikipedia.org/wiki/Exponential_smoothing
    mWeight += share * (1 - mWeight);
    mLastMs = nowMs;
    mLastAmount = amount;
}

void RemainingTime::begin(std::int64_t nowMs) {
    *this = RemainingTime();
    mSpeed.begin(nowMs, 0);
    mBeginMs = nowMs;
}

std::int64_t RemainingTime::at(std::int64_t nowMs, double fraction) {
    mSpeed.add(nowMs, fraction);
    const double perSecond = mSpeed.perSecond();
    // The comparison is written so that a NaN gives kNone too.
    if (nowMs - mBeginMs < kFirstEstimateMs || !(perSecond > 0)) return kNone;
    const double remainingMs = (1 - fraction) / perSecond * kMsPerSecond;
    if (!(remainingMs <= kLastEstimateMs)) return mLastRemainingMs = kNone;

    auto estimateMs = static_cast<std::int64_t>(remainingMs);
    if (mLastRemainingMs != kNone) {
        const std::int64_t countedDownMs = (std::max)(mLastRemainingMs - (nowMs - mLastMs), std::int64_t{0});
        const double smallRiseMs = static_cast<double>(countedDownMs) * kSmallRise;
        // Then the last estimate is continued, less the time that has passed.
        if (estimateMs > countedDownMs && remainingMs < smallRiseMs) estimateMs = countedDownMs;
    }
    mLastMs = nowMs;
    return mLastRemainingMs = estimateMs;
}

}  // namespace xo::progress
