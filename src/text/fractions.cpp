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

// The fraction between 0 and 1 nearest to value, by its continued fraction (Hardy and Wright, "An introduction to the
// theory of numbers", chapter 10). The remainders of Euclid's algorithm are exact in floating point, since fmod is.
// Each convergent follows from the two before it. Where the next one's denominator is too large, the nearest fraction
// is either the current convergent or the intermediate fraction with the largest denominator that is allowed. The
// number of rounds grows with the logarithm of maxDenominator.
Fraction nearestFraction(double value, std::int64_t maxDenominator) {
    Fraction previous{1, 0};  // the convergent before the first, by convention
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
        if (!fits) {  // next is the intermediate fraction
            // |value - next| < |value - current|, with both sides multiplied by the denominators.
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
    if (!(magnitude < kTwoTo63) || maxDenominator < 1) return false;  // in this form also for NaN

    const auto whole = static_cast<std::int64_t>(magnitude);
    // The numerator is at most (whole + 1) * denominator, which has to fit 64 bits.
    const std::int64_t fitting = (std::numeric_limits<std::int64_t>::max)() / (whole + 1);
    const Fraction part = nearestFraction(magnitude - static_cast<double>(whole),
                                          (std::min)({maxDenominator, kMostDenominator, fitting}));
    denominator = part.denominator;
    numerator = whole * part.denominator + part.numerator;
    if (value < 0) numerator = -numerator;
    return true;
}

}  // namespace xo
