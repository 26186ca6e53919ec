#include <gtest/gtest.h>

#include <limits>

#include "variant/trees.h"

namespace {

using namespace std::string_literals;
using namespace xo::tests;
using xo::xoVariant;

// Every value is less than all after it, and equal to itself alone. Vectors go by their bytes, the lowest first.
TEST(VariantComparison, OrdersAllValues) {
    const List ascending =
        list(xoVariant(), -5, 0, 1000, -5.5, 1.0, "", "A", "a", "a\0"s, "ab", "b", "\x80", false, true, numbers(0, 1),
             numbers(2, 0), numbers(-0.0, 1), numbers(-1, 0), numbers(1, 2, 3), Strings{}, Strings{""}, Strings{"a"},
             Strings{"a", "a"}, Strings{"b"}, map(), map("a", 1), map("a", 1, "b", 0), map("a", 2),
             map("a", map("x", 1)), map("a", map("x", 1, "y", 0), "b", 1), map("b", 0), list(), list(1), list(1, 2),
             list(1, "a"), list(1, list()), list(1, list(1, 2), 0), list(1, list(1, 2), 1), list(1, list(1, 3), 0),
             list(2), xoVariant::DateTime(-1), xoVariant::DateTime(1), xoVariant(xoVariant::USERDATA));
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            EXPECT_EQ(ascending[i] < ascending[j], i < j) << i << ' ' << j;
            EXPECT_EQ(ascending[i] == ascending[j], i == j) << i << ' ' << j;
            EXPECT_EQ(ascending[i] != ascending[j], i != j) << i << ' ' << j;
        }
    }
    EXPECT_TRUE(list(1) < list(1, 2) && !(list(1, 2) < list(1)) && list(1) != list(1, 2));
    EXPECT_TRUE(map("a", 1) < map("b", 0) && map("a", 1) != map("b", 1) && map("a", 1) != map("a", 1, "b", 1));
}

TEST(VariantComparison, NaNAndSignedZeroFollowTheirTypesRule) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_NE(xoVariant(nan), xoVariant(nan));
    EXPECT_NE(list(nan), list(nan));
    EXPECT_FALSE(xoVariant(nan) < xoVariant(1.0) || xoVariant(1.0) < xoVariant(nan));
    EXPECT_EQ(xoVariant(0.0), xoVariant(-0.0));
    EXPECT_EQ(numbers(nan, 1), numbers(nan, 1));
    EXPECT_NE(numbers(0.0, 1), numbers(-0.0, 1));
}

}  // namespace
