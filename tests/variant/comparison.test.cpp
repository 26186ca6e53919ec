#include <gtest/gtest.h>

#include <limits>

#include "variant/trees.h"

namespace {

using namespace std::string_literals;
using namespace xo::tests;
using xo::xoVariant;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Every value is less than all after it, and equal to itself alone.
TEST(VariantComparison, OrdersAllValues) {
    const std::vector<xoVariant> ascending = {
        xoVariant(),
        -5,
        0,
        1000,
        -5.5,
        1.0,
        "",
        "A",
        "a",
        "a\0"s,
        "ab",
        "b",
        "\x80",
        false,
        true,
        numbers({0.0, 1.0}),
        numbers({2.0, 0.0}),   // 40 00 00 00 00 00 00 00 from the back
        numbers({-0.0, 1.0}),  // 80 ...
        numbers({-1.0, 0.0}),  // BF F0 ...
        numbers({1.0, 2.0, 3.0}),
        Strings{},
        Strings{""},
        Strings{"a"},
        Strings{"a", "a"},
        Strings{"b"},
        map({}),
        map({{"a", 1}}),
        map({{"a", 1}, {"b", 0}}),
        map({{"a", 2}}),
        map({{"a", map({{"x", 1}})}}),
        map({{"a", map({{"x", 1}, {"y", 0}})}, {"b", 1}}),
        map({{"b", 0}}),
        list({}),
        list({1}),
        list({1, 2}),
        list({1, "a"}),
        list({1, list({})}),
        list({1, list({1, 2}), 0}),
        list({1, list({1, 2}), 1}),
        list({1, list({1, 3}), 0}),
        list({2}),
        xoVariant::DateTime(-1),
        xoVariant::DateTime(1),
        xoVariant(xoVariant::USERDATA),
    };
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            const xoVariant& a = ascending[i];
            const xoVariant& b = ascending[j];
            EXPECT_EQ(a < b, i < j) << i << ' ' << j;
            EXPECT_EQ(a == b, i == j) << i << ' ' << j;
            EXPECT_EQ(a != b, i != j) << i << ' ' << j;
        }
    }
    EXPECT_TRUE(list({1}) < list({1, 2}) && !(list({1, 2}) < list({1})) && list({1}) != list({1, 2}));
    EXPECT_TRUE(map({{"a", 1}}) < map({{"b", 0}}) && map({{"a", 1}}) != map({{"b", 1}}));
}

TEST(VariantComparison, NaNAndSignedZeroFollowTheirTypesRule) {
    EXPECT_NE(xoVariant(kNaN), xoVariant(kNaN));
    EXPECT_NE(list({kNaN}), list({kNaN}));
    EXPECT_FALSE(xoVariant(kNaN) < xoVariant(1.0) || xoVariant(1.0) < xoVariant(kNaN));
    EXPECT_EQ(xoVariant(0.0), xoVariant(-0.0));
    EXPECT_EQ(numbers({kNaN, 1}), numbers({kNaN, 1}));
    EXPECT_NE(numbers({0.0, 1}), numbers({-0.0, 1}));
}

}  // namespace
