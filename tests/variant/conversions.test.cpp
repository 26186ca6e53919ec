#include <gtest/gtest.h>

#include <limits>

#include "variant/trees.h"

namespace {

using namespace std::string_literals;
using namespace xo::tests;
using xo::xoVariant;

constexpr auto kMax = (std::numeric_limits<std::int64_t>::max)();
constexpr auto kMin = (std::numeric_limits<std::int64_t>::min)();
constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(VariantConversions, GiveEveryValueEachSimpleType) {
    const std::pair<xoVariant, std::string> rows[] = {
        {xoVariant(), "false; 0; nan; "},
        {12, "true; 12; 12; 12"},
        {0, "false; 0; 0; 0"},
        {-2.7, "true; -2; -2.7; -2.7"},
        {1e20, "true; 9223372036854775807; 1e+20; 1e+20"},
        {-kInfinity, "true; -9223372036854775808; -inf; -inf"},
        {-kTwoTo63, "true; -9223372036854775808; -9.22337e+18; -9.22337e+18"},
        {kTwoTo63, "true; 9223372036854775807; 9.22337e+18; 9.22337e+18"},
        {kNaN, "true; 0; nan; nan"},
        {-0.0, "false; 0; -0; -0"},
        {true, "true; 1; 1; true"},
        {false, "false; 0; 0; false"},
        {xoVariant::DateTime(7), "false; 7; nan; 7"},
        {numbers(1, 2.5, 3), "false; 0; nan; [1,2.5,3]"},
        {Strings{"1", "2"}, "false; 0; nan; 1 2"},
        {list(1, list(2, "x"), Strings{"a", "b"}), "false; 0; nan; 1 2 x a b"},
        {map("a", map(), "b", map("c", true), "l", list(map("x", 1), 2, list())),
         "false; 0; nan; (a=),(b=(c=true)),(l=(x=1) 2 )"},
        {xoVariant(xoVariant::USERDATA), "false; 0; nan; "},
    };
    for (const auto& [value, shown] : rows)
        EXPECT_EQ(list(value.toBool(), value.toInteger(), value.toReal(), value.toString()).toString("; "), shown);
}

TEST(VariantConversions, ReadTexts) {
    for (const xoVariant text : {"1", "t", "TRUE", "True", "true"}) EXPECT_TRUE(text.toBool()) << text.toString();
    for (const xoVariant& text : list("TRUE ", "T", "yes", "true\0"s, "2", "")) EXPECT_FALSE(text.toBool());
    for (const auto& [text, value] : map("1", 1, "0x1F", 31, "010", 8, "1.5", 0, "12abc", 0, "true", 0, "", 0))
        EXPECT_EQ(xoVariant(text).toInteger(), value.toInteger()) << text;
    for (const auto& [text, value] : map("010", 10.0, "1.5", 1.5, "0x1F", 0.0, "1,5", 0.0, "12abc", 0.0, "", 0.0))
        EXPECT_EQ(xoVariant(text).toReal(), value.toReal()) << text;
    const std::string zeros(400, '0');
    for (const auto& [text, value] :
         map("0." + zeros + "1e0", 0.0, "1" + zeros + "e-5", kInfinity, "-1" + zeros, -kInfinity, "." + zeros + "1e-9",
             0.0, "1" + zeros + "e-400", 1.0, "0." + zeros + "1e+401", 1.0, "0.001e+99999999999999999999", kInfinity,
             "1000e-99999999999999999999", 0.0))
        EXPECT_EQ(xoVariant(text).toReal(), value.toReal()) << text;
    EXPECT_EQ(xoVariant("a\0 b"s).toString(), "a\0 b"s);

    // The narrowest type that reads all of a text.
    for (const auto& [text, value] : map("", 0, "0x1F", 31, " 12", 12, "3,25", 3.25, ",5", 0.5, "1e3", 1000.0, "08",
                                         8.0, "99999999999999999999", kMax))
        EXPECT_EQ(xoVariant::BuildFromString(text), value) << text;
    for (const std::string& text : {"12abc"s, "1,2,3"s, "a,b"s, "true"s, "12 "s, " "s, "12\0"s})
        EXPECT_EQ(xoVariant::BuildFromString(text), xoVariant(text)) << text;
    EXPECT_EQ(xoVariant::BuildFromString(static_cast<const char*>(nullptr)), xoVariant(0));
}

TEST(VariantConversions, GiveContainersFromTheirKindAlone) {
    EXPECT_EQ(xoVariant("a b").toStringList(), Strings{"a b"});
    EXPECT_EQ(xoVariant(list(1, "x", list(2, 3))).toStringList(), (Strings{"1", "x", "2 3"}));
    EXPECT_EQ(xoVariant(Strings{"a", "b"}).toList(), list("a", "b"));
    for (const xoVariant& other : list(xoVariant(), 5, map("k", 1)))
        EXPECT_TRUE(other.toStringList().empty() && other.toList().empty());
    EXPECT_TRUE(xoVariant("text").toList().empty() && xoVariant(list(1)).toMap().empty());
    EXPECT_EQ(xoVariant(9).toDateTime(), xoVariant::DateTime(9));
    EXPECT_EQ(xoVariant(9.0).toDateTime(), xoVariant::DateTime(0));
    EXPECT_EQ(list(1, "", list(2, 3)).toString("; "), "1; ; 2 3");
}

void accepts(xoVariant::Type type, const std::vector<std::pair<xoVariant, xoVariant>>& rows) {
    for (const auto& [from, expected] : rows) {
        xoVariant out = "before";
        EXPECT_TRUE(from.convertLosslessTo(type, out)) << from.toString() << " to " << type;
        EXPECT_EQ(out, expected) << from.toString() << " to " << type;
    }
}

template <class... Values>
void refuses(xoVariant::Type type, const Values&... values) {
    for (const xoVariant& from : list(values...)) {
        xoVariant out = "before";
        EXPECT_FALSE(from.convertLosslessTo(type, out)) << from.toString() << " to " << type;
        EXPECT_EQ(out, xoVariant("before")) << from.toString() << " to " << type;
    }
}

TEST(VariantConversions, LosslessOnesSucceedAndOthersLeaveTheTargetAlone) {
    const std::int64_t twoTo53 = std::int64_t{1} << 53;
    accepts(xoVariant::INTEGER, {{5, 5}, {true, 1}, {xoVariant::DateTime(5), 5}, {-3.0, -3}, {-kTwoTo63, kMin}});
    accepts(xoVariant::INTEGER, {{"0x10", 16}, {"9223372036854775807", kMax}, {"-9223372036854775808", kMin}});
    accepts(xoVariant::INTEGER, {{"0x7FFFFFFFFFFFFFFF", kMax}, {"0777777777777777777777", kMax}});
    refuses(xoVariant::INTEGER, -3.5, kNaN, kTwoTo63, "", "5 ", "9223372036854775808", "-9223372036854775809",
            "0xFFFFFFFFFFFFFFFFF", Strings{"5"});
    accepts(xoVariant::REAL, {{5, 5.0}, {false, 0.0}, {twoTo53, 9007199254740992.0}, {kMin, -kTwoTo63}});
    accepts(xoVariant::REAL, {{"1.5", 1.5},
                              {"0e5", 0.0},
                              {" -007", -7.0},
                              {"9007199254740992", 9007199254740992.0},
                              {"10000000000000000000000", 1e22},
                              {"9007199254740993.0", 9007199254740992.0}});
    refuses(xoVariant::REAL, "9007199254740993", " -9007199254740993", "100000000000000000000000", "1 ");
    refuses(xoVariant::REAL, twoTo53 + 1, kMax, "1,5", "", "1e999", "1e-999", xoVariant::DateTime(5));
    accepts(xoVariant::BOOL, {{1, true}, {0.0, false}, {"True", true}, {"FALSE", false}});
    refuses(xoVariant::BOOL, 2, kNaN, "t", "1");
    accepts(xoVariant::STRING, {{-5, "-5"}, {true, "true"}, {0.1, "0.1"}, {Strings{"only"}, "only"}});
    refuses(xoVariant::STRING, 1.0 / 3, kNaN, Strings{"a", "b"}, numbers(1, 2));
    accepts(xoVariant::STRINGLIST, {{"a", Strings{"a"}}, {list("a", "b"), Strings{"a", "b"}}});
    refuses(xoVariant::STRINGLIST, list("a", 1), 5);
    accepts(xoVariant::LIST, {{Strings{"a", "b"}, list("a", "b")}});
    refuses(xoVariant::LIST, "a");
    accepts(xoVariant::DATETIME, {{5, xoVariant::DateTime(5)}});
    refuses(xoVariant::DATETIME, 5.0);
    refuses(xoVariant::MAP, list());
    refuses(static_cast<xoVariant::Type>(8), 5);

    xoVariant same = "12";
    EXPECT_TRUE(same.convertLosslessTo(xoVariant::INTEGER, same));
    EXPECT_EQ(same, xoVariant(12));
}

}  // namespace
