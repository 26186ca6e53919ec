#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <string>

#include "xoSystem/xoStringUtils.h"

namespace {

using xo::xoStringUtils;

template <class Value>
std::string streamed(Value value, int width, int precision) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream.fill('0');
    stream.width(width);
    stream.precision(precision);
    stream << value;
    return stream.str();
}

TEST(Numbers, PrintsIntegersPaddedInFrontOfTheSign) {
    EXPECT_EQ(xoStringUtils::fromInt(7, 3), "007");
    EXPECT_EQ(xoStringUtils::fromInt(-7, 3), "0-7");
    EXPECT_EQ(xoStringUtils::fromInt(1234, 2), "1234");
    for (const int width : {-2147483647 - 1, -1, 0, 1, 2, 10, 11, 20, 21, 300}) {
        for (const auto value : {std::numeric_limits<std::int64_t>::min(), std::int64_t{-1}, std::int64_t{0},
                                 std::numeric_limits<std::int64_t>::max()}) {
            const auto narrow = static_cast<int>(value);
            const auto bits = static_cast<std::uint64_t>(value);
            EXPECT_EQ(xoStringUtils::fromInt(narrow, width), streamed(narrow, width, 6));
            EXPECT_EQ(xoStringUtils::fromUInt(static_cast<unsigned>(narrow), width),
                      streamed(static_cast<unsigned>(narrow), width, 6));
            EXPECT_EQ(xoStringUtils::fromInt64(value, width), streamed(value, width, 6));
            EXPECT_EQ(xoStringUtils::fromUInt64(bits, width), streamed(bits, width, 6));
        }
    }
    EXPECT_EQ(xoStringUtils::fromInt((std::numeric_limits<int>::min)()), "-2147483648");
}

TEST(Numbers, PrintsRealsAsAStreamDoesAtAnyPrecision) {
    EXPECT_EQ(xoStringUtils::fromFloat(0.1, 3), "0.1");
    EXPECT_EQ(xoStringUtils::fromFloat(0.1F, 9), "0.100000001");
    EXPECT_EQ(xoStringUtils::fromFloat(1234.5678, 3), "1.23e+03");
    using Limits = std::numeric_limits<double>;
    const double values[] = {0.0,
                             -0.0,
                             1.5,
                             2.5,
                             123456789.0,
                             1e15,
                             1e16,
                             0.00015,
                             Limits::max(),
                             Limits::min(),
                             Limits::denorm_min(),
                             -Limits::infinity(),
                             Limits::quiet_NaN(),
                             -Limits::quiet_NaN(),
                             std::nextafter(0.001, 1)};
    for (const double value : values) {
        for (const int precision : {-5, -1, 0, 1, 3, 6, 17, 18, 100, 500, 767, 800}) {
            EXPECT_EQ(xoStringUtils::fromFloat(value, precision), streamed(value, 0, precision)) << precision;
        }
        EXPECT_EQ(xoStringUtils::fromFloat(value, (std::numeric_limits<int>::max)()), streamed(value, 0, 800));
    }
}

TEST(Numbers, RoundsForDisplay) {
    const struct {
        double value;
        unsigned char digits;
        bool keepZeros;
        unsigned char integerDigits;
        const char* text;
    } rows[] = {
        {1234.5678, 2, false, 1, "1234,57"},
        {0.5, 0, false, 1, "0"},  // a tie goes to the even digit
        {1.5, 0, true, 1, "2"},
        {2.675, 2, false, 1, "2,67"},  // the nearest double lies below the tie
        {1.5, 3, true, 1, "1,500"},
        {1.5, 3, false, 3, "001,5"},
        {100.0, 3, false, 1, "100"},
        {100.0, 0, false, 1, "100"},
        {9.999, 2, false, 1, "10"},
        {-1.25, 1, false, 2, "-01,2"},
        {-0.001, 2, true, 1, "0,00"},
        {1e21, 0, false, 1, "1000000000000000000000"},
        {HUGE_VAL, 2, true, 9, "inf"},
        {-HUGE_VAL, 2, true, 9, "-inf"},
        {-std::nan(""), 2, true, 9, "nan"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(xoStringUtils::roundNumber(row.value, row.digits, ',', row.keepZeros, row.integerDigits), row.text);
    }
    const std::string longest = xoStringUtils::roundNumber(-(std::numeric_limits<double>::max)(), 255, '.', true, 255);
    EXPECT_EQ(longest.size(), 1u + 309 + 1 + 255);
}

TEST(Fractions, AreTheNearestWithinTheBound) {
    const auto kMax = (std::numeric_limits<std::int64_t>::max)();
    const struct {
        double value;
        std::int64_t bound, numerator, denominator;
        bool representable = true;
    } rows[] = {
        {0.0, 10, 0, 1},
        {0.5, 1, 0, 1},  // as near as 1/1
        {0.75, 100, 3, 4},
        {-2.25, 100, -9, 4},
        {3.141592653589793, 10, 22, 7},
        {3.141592653589793, 50, 22, 7},    // nearer than any up to 56
        {3.141592653589793, 57, 179, 57},  // part of a step, and nearer
        {3.141592653589793, 113, 355, 113},
        {0.333, 10, 1, 3},
        {1e-300, 1000, 0, 1},
        {0.1, kMax, 1, 10},
        {1e18 + 128, kMax, 1000000000000000128, 1},
        {-9223372036854774784.0, kMax, -9223372036854774784, 1},
        {9223372036854775808.0, 10, 0, 1, false},
        {std::nan(""), 10, 0, 1, false},
        {0.5, 0, 0, 1, false},
    };
    for (const auto& row : rows) {
        std::int64_t numerator = 7, denominator = 7;
        EXPECT_EQ(xoStringUtils::computeFractionnalRepresentation(row.value, numerator, denominator, row.bound),
                  row.representable);
        EXPECT_EQ(numerator, row.numerator) << row.value << " up to " << row.bound;
        EXPECT_EQ(denominator, row.denominator) << row.value << " up to " << row.bound;
    }
}

TEST(Fractions, AgreeWithTryingEveryDenominator) {
    std::mt19937 random(3);
    for (int round = 0; round < 500; ++round) {
        const double value = std::uniform_real_distribution<double>(0, 3)(random);
        const auto bound = static_cast<std::int64_t>(random() % 200 + 1);
        double best = 1;
        for (std::int64_t d = 1; d <= bound; ++d) {
            const auto denominator = static_cast<double>(d);
            best = (std::min)(best, std::fabs(value - std::round(value * denominator) / denominator));
        }
        std::int64_t numerator = 0, denominator = 0;
        ASSERT_TRUE(xoStringUtils::computeFractionnalRepresentation(value, numerator, denominator, bound));
        ASSERT_TRUE(denominator >= 1 && denominator <= bound);
        const double missed = std::fabs(value - static_cast<double>(numerator) / static_cast<double>(denominator));
        ASSERT_NEAR(missed, best, 1e-15) << value << " up to " << bound;
    }
}

}  // namespace
