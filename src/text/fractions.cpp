// The fraction with a bounded denominator that is nearest to a number.
#include <algorithm>
#include <cmath>
#include <limits>

#include "xoSystem/xoStringUtils.h"

namespace xo {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr std::int64_t kMostDenominator = 1000000000000000;  // below 2^50, so that each quotient is exact in a double

struct Fraction {
    std::int64_t numerator;
    std::int64_t denominator;

    // The distance from value, times the denominator.
    double missBy(double value) const {
        return std::fabs(std::fma(value, static_cast<double>(denominator), -static_cast<double>(numerator)));
    }
};

// The fraction between 0 and 1 nearest to value, by its continued fraction. The remainders of Euclid's algorithm are
// exact in floating point, since fmod is.
Fraction nearestFraction(double value, std::int64_t maxDenominator) {
    Fraction previous{1, 0};
    Fraction current{0, 1};
    double dividend = 1.0;
    double divisor = value;
    while (divisor > 0.0) {
        const double remainder = std::fmod(dividend, divisor);
        const double quotient = std::round((dividend - remainder) / divisor);
        const std::int64_t mostSteps = (maxDenominator - previous.denominator) / current.denominator;
        const bool fits = quotient <= static_cast<double>(mostSteps);
        const std::int64_t steps = fits ? static_cast<std::int64_t>(quotient) : mostSteps;
        const Fraction next{previous.numerator + steps * current.numerator,
                            previous.denominator + steps * current.denominator};
        if (!fits) {  // the last step in part: nearer than the step before, or not
            const bool nearer = next.missBy(value) * static_cast<double>(current.denominator) <
                                current.missBy(value) * static_cast<double>(next.denominator);
            return nearer ? next : current;
        }
        previous = current;
        current = next;
        dividend = divisor;
        divisor = remainder;
    }
    return current;
}

}  // namespace

bool xoStringUtils::computeFractionnalRepresentation(double value, std::int64_t& numerator, std::int64_t& denominator,
                                                     std::int64_t maxDenominator) {
    numerator = 0;
    denominator = 1;
    const double magnitude = std::fabs(value);
    if (!(magnitude < kTwoTo63) || maxDenominator < 1) return false;

    const auto whole = static_cast<std::int64_t>(magnitude);
    const std::int64_t fitting = (std::numeric_limits<std::int64_t>::max)() / (whole + 1);
    const Fraction part = nearestFraction(magnitude - static_cast<double>(whole),
                                          (std::min)({maxDenominator, kMostDenominator, fitting}));
    denominator = part.denominator;
    numerator = whole * part.denominator + part.numerator;
    if (value < 0) numerator = -numerator;
    return true;
}

}  // namespace xo
