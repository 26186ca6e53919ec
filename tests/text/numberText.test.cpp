#include "text/numberText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

using namespace std::string_literals;

TEST(NumberText, ReadsIntegersAsTheRuntimeDoes) {
    const struct {
        std::string text;
        bool whole;
        std::int64_t value;
    } rows[] = {
        {"", true, 0},
        {"0", true, 0},
        {" \t\n12", true, 12},
        {"+7", true, 7},
        {"-0x1F", true, -31},
        {"0XfF", true, 255},
        {"010", true, 8},
        {"-017", true, -15},
        {"9223372036854775807", true, (std::numeric_limits<std::int64_t>::max)()},
        {"9223372036854775808", true, (std::numeric_limits<std::int64_t>::max)()},  // out of range: the nearest end
        {"-9223372036854775808", true, (std::numeric_limits<std::int64_t>::min)()},
        {"-99999999999999999999", true, (std::numeric_limits<std::int64_t>::min)()},
        {"0xFFFFFFFFFFFFFFFFFF", true, (std::numeric_limits<std::int64_t>::max)()},
        {" ", false, 0},
        {"-", false, 0},
        {"+-1", false, 0},
        {"12 ", false, 12},
        {"08", false, 0},  // the octal number ends before the 8
        {"0x", false, 0},  // the number is the 0
        {"0xg", false, 0},
        {"12\0"s, false, 12},
        {"\0"s, false, 0},
        {"\xC3\xA9", false, 0},
    };
    for (const auto& row : rows) {
        std::int64_t value = -1;
        EXPECT_EQ(xo::text::parseInteger(row.text, value), row.whole) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
    }
}

TEST(NumberText, ReadsDecimalRealsAlone) {
    const double infinity = std::numeric_limits<double>::infinity();
    const struct {
        std::string text;
        bool whole;
        double value;
    } rows[] = {
        {"", true, 0.0},        {"1.5", true, 1.5},        {" -.5", true, -0.5},      {"1.", true, 1.0},
        {"+1e3", true, 1000.0}, {"08", true, 8.0},         {"1e999", true, infinity}, {"-1e999", true, -infinity},
        {"1e-999", true, 0.0},  {"0.1", true, 0.1},        {".", false, 0.0},         {"inf", false, 0.0},
        {"nan", false, 0.0},    {"-infinity", false, 0.0}, {"0x10", false, 0.0},      {"1,5", false, 1.0},
        {"1e", false, 1.0},     {"1.5 ", false, 1.5},      {"1\0"s, false, 1.0},      {"e5", false, 0.0},
    };
    for (const auto& row : rows) {
        double value = -1;
        EXPECT_EQ(xo::text::parseReal(row.text, value), row.whole) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
    }
    double value = 0;
    EXPECT_TRUE(xo::text::parseReal(std::string(400, '9'), value));
    EXPECT_EQ(value, infinity);
    EXPECT_TRUE(xo::text::parseReal("0." + std::string(400, '0') + "1", value));
    EXPECT_EQ(value, 0.0);
    EXPECT_TRUE(xo::text::parseReal("-0", value));
    EXPECT_TRUE(std::signbit(value));
}

TEST(NumberText, PrintsAsAStreamDoes) {
    const struct {
        double value;
        int precision;
        const char* text;
    } rows[] = {{0.1, 6, "0.1"},
                {1e20, 6, "1e+20"},
                {1234567.0, 6, "1.23457e+06"},
                {-0.0, 6, "-0"},
                {1234.5678, 3, "1.23e+03"},
                {0.00001, 6, "1e-05"},
                {100000.0, 6, "100000"},
                {std::numeric_limits<double>::quiet_NaN(), 6, "nan"},
                {-std::numeric_limits<double>::quiet_NaN(), 6, "nan"},
                {1.0 / 3, 17, "0.33333333333333331"}};
    for (const auto& row : rows) {
        char text[xo::text::kRealRoom];
        EXPECT_EQ(std::string(text, xo::text::printReal(text, row.value, row.precision)), row.text);
    }
}

}  // namespace
