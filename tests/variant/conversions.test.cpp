#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "variant/trees.h"

namespace {

using namespace std::string_literals;
using namespace xo::tests;
using xo::xoVariant;

constexpr auto kMax = (std::numeric_limits<std::int64_t>::max)();
constexpr auto kMin = (std::numeric_limits<std::int64_t>::min)();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(VariantConversions, Scalars) {
    const struct {
        xoVariant value;
        bool asBool;
        std::int64_t asInteger;
        double asReal;
        std::string asString;
    } rows[] = {
        {xoVariant(), false, 0, kNaN, ""},
        {12, true, 12, 12.0, "12"},
        {0, false, 0, 0.0, "0"},
        {-2.7, true, -2, -2.7, "-2.7"},
        {0.1, true, 0, 0.1, "0.1"},
        {1e20, true, kMax, 1e20, "1e+20"},
        {-kInfinity, true, kMin, -kInfinity, "-inf"},
        {-9223372036854775808.0, true, kMin, -9223372036854775808.0, "-9.22337e+18"},
        {9223372036854775808.0, true, kMax, 9223372036854775808.0, "9.22337e+18"},
        {kNaN, true, 0, kNaN, "nan"},
        {-0.0, false, 0, 0.0, "-0"},
        {true, true, 1, 1.0, "true"},
        {false, false, 0, 0.0, "false"},
        {"1", true, 1, 1.0, "1"},
        {"t", true, 0, 0.0, "t"},
        {"TRUE", true, 0, 0.0, "TRUE"},
        {"True", true, 0, 0.0, "True"},
        {"true", true, 0, 0.0, "true"},
        {"TRUE ", false, 0, 0.0, "TRUE "},
        {"T", false, 0, 0.0, "T"},
        {"yes", false, 0, 0.0, "yes"},
        {"true\0"s, false, 0, 0.0, "true\0"s},
        {"0x1F", false, 31, 0.0, "0x1F"},
        {"010", false, 8, 10.0, "010"},
        {"1.5", false, 0, 1.5, "1.5"},
        {"1,5", false, 0, 0.0, "1,5"},
        {"12abc", false, 0, 0.0, "12abc"},
        {"", false, 0, 0.0, ""},
        {xoVariant::DateTime(7), false, 7, kNaN, "7"},
        {numbers({1, 2.5, 3}), false, 0, kNaN, "[1,2.5,3]"},
        {Strings{"1", "2"}, false, 0, kNaN, "1 2"},
        {list({1, list({2, "x"}), Strings{"a", "b"}}), false, 0, kNaN, "1 2 x a b"},
        {map({{"a", 1}, {"b", map({{"c", true}})}}), false, 0, kNaN, "(a=1),(b=(c=true))"},
        {map({{"a", map({})}, {"l", list({map({{"x", 1}}), 2, list({})})}}), false, 0, kNaN, "(a=),(l=(x=1) 2 )"},
        {xoVariant(xoVariant::USERDATA), false, 0, kNaN, ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.value.toBool(), row.asBool) << row.asString;
        EXPECT_EQ(row.value.toInteger(), row.asInteger) << row.asString;
        EXPECT_EQ(row.value.toString(), row.asString);
        const double real = row.value.toReal();
        EXPECT_TRUE(std::isnan(row.asReal) ? std::isnan(real) : real == row.asReal) << row.asString << ' ' << real;
    }
}

TEST(VariantConversions, Containers) {
    EXPECT_EQ(xoVariant("a b").toStringList(), Strings{"a b"});
    EXPECT_EQ(xoVariant(Strings{"a", "b"}).toStringList(), (Strings{"a", "b"}));
    EXPECT_EQ(xoVariant(list({1, "x", list({2, 3})})).toStringList(), (Strings{"1", "x", "2 3"}));
    EXPECT_EQ(xoVariant(Strings{"a", "b"}).toList(), list({"a", "b"}));
    EXPECT_EQ(xoVariant(list({1, "x"})).toList(), list({1, "x"}));
    EXPECT_EQ(xoVariant(map({{"k", 1}})).toMap(), map({{"k", 1}}));
    for (const xoVariant& scalar : {xoVariant(), xoVariant(5), xoVariant(map({{"k", 1}}))}) {
        EXPECT_TRUE(scalar.toStringList().empty());
        EXPECT_TRUE(scalar.toList().empty());
    }
    EXPECT_TRUE(xoVariant("text").toList().empty());
    EXPECT_TRUE(xoVariant(list({1})).toMap().empty());
    EXPECT_EQ(xoVariant(9).toDateTime(), xoVariant::DateTime(9));
    EXPECT_EQ(xoVariant(9.0).toDateTime(), xoVariant::DateTime(0));
    EXPECT_EQ(list({1, "", list({2, 3})}).toString("; "), "1; ; 2 3");
}

TEST(VariantConversions, BuildFromStringFindsTheNarrowestType) {
    const struct {
        std::string text;
        xoVariant value;
    } rows[] = {
        {"", 0},
        {"0x1F", 31},
        {"010", 8},
        {" 12", 12},
        {"3,25", 3.25},
        {",5", 0.5},
        {"1e3", 1000.0},
        {"08", 8.0},
        {"12abc", "12abc"},
        {"1,2,3", "1,2,3"},
        {"a,b", "a,b"},
        {"true", "true"},
        {"12 ", "12 "},
        {" ", " "},
        {"12\0"s, "12\0"s},
        {"99999999999999999999", kMax},
    };
    for (const auto& row : rows) EXPECT_EQ(xoVariant::BuildFromString(row.text), row.value) << row.text;
}

TEST(VariantConversions, LosslessOnesSucceedAndOthersLeaveTheTargetAlone) {
    const xoVariant none;  // stands for a refusal
    const xoVariant untouched = "untouched";
    const struct {
        xoVariant from;
        xoVariant::Type to;
        xoVariant result;
    } rows[] = {
        {5, xoVariant::INTEGER, 5},
        {true, xoVariant::INTEGER, 1},
        {xoVariant::DateTime(5), xoVariant::INTEGER, 5},
        {-3.0, xoVariant::INTEGER, -3},
        {-3.5, xoVariant::INTEGER, none},
        {kNaN, xoVariant::INTEGER, none},
        {9223372036854775808.0, xoVariant::INTEGER, none},
        {-9223372036854775808.0, xoVariant::INTEGER, kMin},
        {"0x10", xoVariant::INTEGER, 16},
        {"", xoVariant::INTEGER, none},
        {"5 ", xoVariant::INTEGER, none},
        {"9223372036854775807", xoVariant::INTEGER, kMax},
        {"9223372036854775808", xoVariant::INTEGER, none},
        {"-9223372036854775808", xoVariant::INTEGER, kMin},
        {"-9223372036854775809", xoVariant::INTEGER, none},
        {"0x7FFFFFFFFFFFFFFF", xoVariant::INTEGER, kMax},
        {"0xFFFFFFFFFFFFFFFFF", xoVariant::INTEGER, none},
        {"0777777777777777777777", xoVariant::INTEGER, kMax},
        {Strings{"5"}, xoVariant::INTEGER, none},
        {5, xoVariant::REAL, 5.0},
        {false, xoVariant::REAL, 0.0},
        {std::int64_t{1} << 53, xoVariant::REAL, 9007199254740992.0},
        {(std::int64_t{1} << 53) + 1, xoVariant::REAL, none},
        {kMax, xoVariant::REAL, none},
        {kMin, xoVariant::REAL, -9223372036854775808.0},
        {"1.5", xoVariant::REAL, 1.5},
        {"1,5", xoVariant::REAL, none},
        {"", xoVariant::REAL, none},
        {"0e5", xoVariant::REAL, 0.0},
        {"1e999", xoVariant::REAL, none},
        {"1e-999", xoVariant::REAL, none},
        {xoVariant::DateTime(5), xoVariant::REAL, none},
        {1, xoVariant::BOOL, true},
        {0.0, xoVariant::BOOL, false},
        {2, xoVariant::BOOL, none},
        {kNaN, xoVariant::BOOL, none},
        {"True", xoVariant::BOOL, true},
        {"FALSE", xoVariant::BOOL, false},
        {"t", xoVariant::BOOL, none},
        {"1", xoVariant::BOOL, none},
        {-5, xoVariant::STRING, "-5"},
        {true, xoVariant::STRING, "true"},
        {0.1, xoVariant::STRING, "0.1"},
        {1.0 / 3, xoVariant::STRING, none},
        {kNaN, xoVariant::STRING, none},
        {Strings{"only"}, xoVariant::STRING, "only"},
        {Strings{"a", "b"}, xoVariant::STRING, none},
        {numbers({1, 2}), xoVariant::STRING, none},
        {"a", xoVariant::STRINGLIST, Strings{"a"}},
        {list({"a", "b"}), xoVariant::STRINGLIST, Strings{"a", "b"}},
        {list({"a", 1}), xoVariant::STRINGLIST, none},
        {5, xoVariant::STRINGLIST, none},
        {Strings{"a", "b"}, xoVariant::LIST, list({"a", "b"})},
        {"a", xoVariant::LIST, none},
        {5, xoVariant::DATETIME, xoVariant::DateTime(5)},
        {5.0, xoVariant::DATETIME, none},
        {map({{"k", 1}}), xoVariant::MAP, map({{"k", 1}})},
        {list({}), xoVariant::MAP, none},
        {5, static_cast<xoVariant::Type>(8), none},
    };
    for (const auto& row : rows) {
        xoVariant out = untouched;
        const bool accepted = !row.result.isNull();
        EXPECT_EQ(row.from.convertLosslessTo(row.to, out), accepted) << row.from.toString() << " to " << row.to;
        EXPECT_EQ(out, accepted ? row.result : untouched) << row.from.toString() << " to " << row.to;
    }
    xoVariant same = "12";
    EXPECT_TRUE(same.convertLosslessTo(xoVariant::INTEGER, same));
    EXPECT_EQ(same, xoVariant(12));
}

}  // namespace
