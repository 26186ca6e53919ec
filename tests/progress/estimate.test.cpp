#include "progress/estimate.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using xo::progress::RemainingTime;
using xo::progress::SmoothedSpeed;

constexpr std::int64_t kBeginMs = 123456;

TEST(Estimate, ConstantSpeedIsToldFromTheFirstSample) {
    SmoothedSpeed speed;
    speed.begin(kBeginMs, 1000);
    EXPECT_EQ(speed.perSecond(), 0);
    for (std::int64_t ms = 100; ms < 100000; ms += 700) {
        speed.add(kBeginMs + ms, 1000 + static_cast<double>(ms) / 4);
        EXPECT_NEAR(speed.perSecond(), 250, 1e-6) << ms;
    }
}

TEST(Estimate, SpeedFollowsAChangeWithinSomeTimeConstants) {
    SmoothedSpeed speed;
    speed.begin(kBeginMs, 0);
    double amount = 0;
    std::int64_t now = kBeginMs;
    const auto run = [&](int seconds, double perSecond) {
        for (int i = 0; i < seconds; ++i) speed.add(now += 1000, amount += perSecond);
    };
    run(20, 100);
    run(15, 10);  // ten times slower: after one time constant two thirds of the way
    EXPECT_GT(speed.perSecond(), 30);
    EXPECT_LT(speed.perSecond(), 70);
    run(60, 10);
    EXPECT_NEAR(speed.perSecond(), 10, 4);
    run(300, 0);
    EXPECT_LT(speed.perSecond(), 1);

    // Bursts once in 2 seconds: what is told stays near the mean.
    speed.begin(now, amount);
    for (int i = 0; i < 100; ++i) {
        speed.add(now += 1000, amount += i % 2 == 0 ? 100 : 0);
        if (i > 30) {
            EXPECT_NEAR(speed.perSecond(), 50, 5) << i;
        }
    }
}

TEST(Estimate, RemainingTimeComesLateAndDoesNotJumpUp) {
    RemainingTime remaining;
    remaining.begin(kBeginMs);
    EXPECT_EQ(remaining.at(kBeginMs + 1999, 0.1), RemainingTime::kNone) << "too early";
    EXPECT_NEAR(static_cast<double>(remaining.at(kBeginMs + 2000, 0.1)), 18000, 20);

    remaining.begin(kBeginMs);
    EXPECT_EQ(remaining.at(kBeginMs + 60000, 0), RemainingTime::kNone) << "nothing has moved";
    EXPECT_EQ(remaining.at(kBeginMs + 61000, 1e-9), RemainingTime::kNone) << "beyond 99 hours";

    remaining.begin(kBeginMs);
    const std::int64_t first = remaining.at(kBeginMs + 10000, 0.1);
    EXPECT_NEAR(static_cast<double>(first), 90000, 100);
    // Half a second in which nothing moves is a small rise: the value counts down.
    EXPECT_EQ(remaining.at(kBeginMs + 10500, 0.1), first - 500);
    // A long stall is not.
    EXPECT_GT(remaining.at(kBeginMs + 60000, 0.1), first);
}

}  // namespace
