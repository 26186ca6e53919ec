#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <limits>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "xoSystem/xoMathUtils.h"
#include "xoSystem/xoStringUtils.h"

namespace {

using Math = xo::xoMathUtils;
using namespace std::string_literals;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kLeast = std::numeric_limits<double>::denorm_min();
constexpr double kMost = (std::numeric_limits<double>::max)();

TEST(MathUtils, ShowsBytesAndCounts) {
    constexpr auto kBinary = Math::ByteUnitBinary, kDecimal = Math::ByteUnitDecimal, kWindows = Math::ByteUnitWindows;
    EXPECT_EQ(Math::BytesToText(static_cast<unsigned char>(200), static_cast<Math::xoByteUnit>(9)), "200 B");
    EXPECT_EQ(Math::BytesToText(-3145728) + Math::BytesToText(INT64_MIN, kDecimal), "-3.00 MiB-9.22 EB");
    EXPECT_EQ(Math::BytesToText(1536, kBinary, 1), "2 KiB") << "a tie goes to the even digit";
    const std::tuple<std::uint64_t, Math::xoByteUnit, int, const char*> rows[] = {
        {0, kBinary, 3, "0 B"},         {999999, kDecimal, 3, "1.00 MB"},  {1500000, kDecimal, 3, "1.50 MB"},
        {1023, kBinary, 3, "1023 B"},   {1047552, kBinary, 3, "1023 KiB"}, {1468006, kWindows, 3, "1.40 MB"},
        {2560, kBinary, -1, "2 KiB"},   {1468006, kBinary, 3, "1.40 MiB"}, {UINT64_MAX, kBinary, 3, "16.0 EiB"},
        {1024, kBinary, 3, "1.00 KiB"}, {1048565, kBinary, 3, "1.00 MiB"},
    };
    for (const auto& [value, unit, digits, text] : rows) EXPECT_EQ(Math::BytesToText(value, unit, digits), text);
    EXPECT_EQ(Math::BytesToText(UINT64_MAX, kDecimal, 99), "18.446744073709552 EB");

    EXPECT_EQ(Math::CountToText(0) + Math::CountToText(-999) + Math::CountToText(-1234567), "0-999-1,234,567");
    EXPECT_EQ(Math::CountToText(INT64_MIN, '\''), "-9'223'372'036'854'775'808");
    EXPECT_EQ(Math::CountToText(UINT64_MAX, '\0'), "18446744073709551615");
}

TEST(MathUtils, ShowsReals) {
    EXPECT_EQ(Math::SiToText(999950) + Math::SiToText(-1e30) + Math::SiToText(-kNaN), "1.00 M-1.00 Qnan");
    EXPECT_EQ(Math::SiToText(kMost, {}, 1).substr(0, 20), "17976931348623157081");
    EXPECT_EQ(Math::SiToText(1e60), "999999999999999949387135297074 Q") << "three digits would be rounded up";
    const std::tuple<double, const char*, int, const char*> quantities[] = {
        {999.4, "", 2, "999"},  {99.6, "m", 2, "100 m"},       {kInfinity, "Hz", 3, "inf Hz"},
        {999.5, "", 1, "1 k"},  {1500, "Hz", 3, "1.50 kHz"},   {1e-35, "g", 3, "0.0000100 qg"},
        {-0.0, "V", 3, "0 V"},  {1.5e35, "g", 3, "150000 Qg"}, {12.3e-6, "F", 3, "12.3 \u00b5F"},
        {9.96, "m", 1, "10 m"},
    };
    for (const auto& [value, unit, digits, text] : quantities) EXPECT_EQ(Math::SiToText(value, unit, digits), text);

    EXPECT_EQ(Math::PercentToText(0.4711) + Math::PercentToText(-0.001, 99), "47 %-0.10000000000000000 %");
    const std::tuple<double, int, const char*> percents[] = {
        {0.005, 0, "1 %"},         {-0.001, 0, "0 %"}, {12.5, -3, "1250 %"}, {0.4711, 1, "47.1 %"},
        {-kInfinity, 0, "-inf %"}, {0.125, 0, "12 %"}, {kNaN, 0, "nan %"},
    };
    for (const auto& [value, decimals, text] : percents) EXPECT_EQ(Math::PercentToText(value, decimals), text);

    EXPECT_EQ(Math::SignificantToText(kLeast, 99), "4.9406564584124654e-324");
    const std::tuple<double, int, const char*> significant[] = {
        {0.0, 3, "0"},       {1e20, 3, "1.00e+20"},   {0.0000099, 1, "0.00001"},  {-0.00000999999, 2, "-0.000010"},
        {2, 3, "2.00"},      {0.0000094, 1, "9e-06"}, {0.00012345, 2, "0.00012"}, {999999999999999.0, 3, "1.00e+15"},
        {1234.5, 3, "1230"},
    };
    for (const auto& [value, digits, text] : significant) EXPECT_EQ(Math::SignificantToText(value, digits), text);

    EXPECT_EQ(Math::RealToText(0.1f) + Math::RealToText(9999999999999998.0), "0.19999999999999998");
    const std::pair<double, const char*> reals[] = {
        {-7, "-7"},         {-0.0, "-0"},         {0.0001, "0.0001"}, {0.00001, "1e-05"},
        {kLeast, "5e-324"}, {-kInfinity, "-inf"}, {0.1, "0.1"},       {1e22, "1e+22"},
    };
    for (const auto& [value, text] : reals) EXPECT_EQ(Math::RealToText(value), text);
}

TEST(MathUtils, ShowsDurations) {
    const std::tuple<double, const char*, const char*> rows[] = {
        {0, "0 s", "0:00"},          {125, "2 min 05 s", "2:05"},     {7389, "2 h 03 min", "2:03:09"},
        {17, "17.0 s", "0:17"},      {kInfinity, "inf s", "inf"},     {86399, "1 d 00 h", "23:59:59"},
        {kNaN, "nan s", "nan"},      {14.2e-9, "14.2 ns", "0:00"},    {2.5e-6, "2.50 \u00b5s", "0:00"},
        {-5, "-5.00 s", "-0:05"},    {1.5e-10, "0.150 ns", "0:00"},   {273600, "3 d 04 h", "76:00:00"},
        {42.1, "42.1 s", "0:42"},    {59.96, "1 min 00 s", "1:00"},   {3599.5, "1 h 00 min", "1:00:00"},
        {-0.4, "-400 ms", "0:00"},   {-kInfinity, "-inf s", "-inf"},  {360000, "4 d 04 h", "100:00:00"},
        {59.94, "59.9 s", "1:00"},   {3630, "1 h 00 min", "1:00:30"}, {-7380, "-2 h 03 min", "-2:03:00"},
        {0.9996, "1.00 s", "0:01"},  {3690, "1 h 02 min", "1:01:30"}, {86398200, "1000 d", "23999:30:00"},
        {0.0142, "14.2 ms", "0:00"},
    };
    for (const auto& [seconds, text, clock] : rows) {
        EXPECT_EQ(Math::DurationToText(seconds), text);
        EXPECT_EQ(Math::DurationToClock(seconds), clock);
    }
    EXPECT_EQ(Math::DurationToText(1e15) + " = " + Math::DurationToClock(1e15), "11574074074 d = 277777777777:46:40");
    EXPECT_EQ(Math::DurationToClock(59.999, 2) + Math::DurationToClock(-0.04, 1), "1:00.000:00.0");
    EXPECT_EQ(Math::DurationToClock(-0.06, 1) + Math::DurationToClock(1.5, 99), "-0:00.10:01.500000000");
    EXPECT_GT(Math::DurationToText(kMost).size(), 300u);
    EXPECT_GT(Math::DurationToClock(kMost).size(), 300u);
}

template <class Value>
using Parser = bool (*)(std::string_view, Value&);

template <class Value>
using Reads = std::vector<std::pair<std::string, Value>>;
using Texts = std::vector<std::string>;

// What the rows and rejected texts give, in blanks too. A target of a text that is rejected keeps its value.
template <class Value>
void expectReads(Parser<Value> parse, const Reads<Value>& rows, const Texts& rejected) {
    for (const auto& [given, expected] : rows)
        for (const std::string& text : {given, " \t" + given + " \n"}) {
            Value value{};
            EXPECT_TRUE(parse(text, value)) << text;
            EXPECT_EQ(std::memcmp(&value, &expected, sizeof value), 0) << text << " is " << value;
        }
    for (const std::string& text : rejected) {
        Value value = 77;
        EXPECT_FALSE(parse(text, value)) << text << " is " << value;
        EXPECT_EQ(value, Value{77}) << text;
    }
}

TEST(MathUtils, ReadsBytes) {
    const std::string aboveTie = "1.0005" + std::string(74, '0') + "1 kB", padded = std::string(28, '0') + "1 TiB";
    Reads<std::uint64_t> reads = {
        {"10", 10},     {".5 kb", 500},   {aboveTie, 1001},    {"1.0005 kB", 1000},  {padded, 1099511627776},
        {"10 B", 10},   {"0.1 kB", 100},  {"3 kbytes", 3000},  {"1.0015 kB", 1002},  {"0.00048828125 KiB", 0},
        {"1 BYTE", 1},  {"5. kb", 5000},  {"1.5MiB", 1572864}, {"250Mi", 262144000}, {"0.00146484375 KiB", 2},
        {"2 bytes", 2}, {"10  k", 10000}, {"10 mb", 10000000},
    };
    for (const char* const most :
         {"18446744073709551615", "18446744073709551615.4", "18.446744073709551615 EB", "15.9999999999999999994 EiB"})
        reads.emplace_back(most, UINT64_MAX);
    const Texts rejected = {
        "",  "-1",  "1 0",  "1 ZB",   "10 bit", "10 kbit", "10 ki b x",    "18446744073709551616",
        " ", "-0",  "nan",  "1.5.2",  "10 MBB", "18.5 EB", "1 MB 2 KB",    "18446744073709551615.5",
        "B", "+1",  "0x10", "1,5 MB", "16 EiB", "10 B\0"s, "10 \xC2\xB5"s, "15.9999999999999999996 EiB",
        ".", "1e3", "10 i",
    };
    expectReads<std::uint64_t>(
        [](std::string_view text, std::uint64_t& bytes) { return Math::ParseBytes(text, bytes); }, reads, rejected);
    std::uint64_t bytes = 0;
    EXPECT_TRUE(Math::ParseBytes("1 KB", bytes, Math::ByteUnitWindows) && bytes == 1024);
}

TEST(MathUtils, ReadsCounts) {
    const Reads<std::int64_t> reads = {
        {"0", 0},          {"1234567", 1234567},     {"-9223372036854775808", INT64_MIN},
        {"-0", 0},         {"-1,234,567", -1234567}, {"9,223,372,036,854,775,807", INT64_MAX},
        {"001,000", 1000},
    };
    const Texts rejected = {
        "",  "1,", "1.0", "1 2",  "1,23",   "1,,234",   "1,234567",  "9223372036854775808",
        "-", "+1", "- 1", ",123", "1,2345", "1234,567", "1,234,56x", "-9,223,372,036,854,775,809",
        ",",
    };
    expectReads<std::int64_t>([](std::string_view text, std::int64_t& value) { return Math::ParseCount(text, value); },
                              reads, rejected);
    std::int64_t value = 0;
    EXPECT_TRUE(Math::ParseCount("1'000", value, '\'') && value == 1000);
    EXPECT_FALSE(Math::ParseCount("1,000", value, '\0'));
}

TEST(MathUtils, ReadsDurations) {
    Reads<double> reads = {
        {"0", 0},      {"-1.5", -1.5},  {"0:17.2", 17.2},   {"5 \u00b5s", 5e-6},  {"100:00:00", 360000},
        {"90", 90},    {"2h 3m", 7380}, {"2:03:09", 7389},  {"2 h 03 min", 7380}, {"-2 h 03 min", -7380},
        {"1:5", 65},   {"1h30m", 5400}, {"14.2ms", 0.0142}, {"14.2 ns", 14.2e-9}, {"3 days 4 hours", 273600},
        {"1.1 m", 66}, {"1.5 h", 5400}, {"5\u03bcs", 5e-6},
    };
    reads.emplace_back("1 Week 1 DAY 1 Hr 1 Minute 1 sec 1 ms 1 us 1 ns", 694861.001001001);
    reads.emplace_back("20000000000000000000 d", 1.728e24);
    const Texts rejected = {
        "",      "-",     "h",      "5 x",      "1h 1h", "1m 1h",   "1.5h 3m", "1. h 3 m", "1 h 5",
        "1,5 h", "1e3 s", "+5",     "- 5",      "1:60",  "1:60:00", "1:2:3:4", "1.5:00",   ":30",
        "1:",    "1: 30", "1:30 s", "5 months", "nan",   "inf",     "5 \xC2",  "1h-3m",    std::string(400, '9'),
    };
    expectReads<double>(&Math::ParseDuration, reads, rejected);
}

TEST(MathUtils, ReadsQuantities) {
    const std::string zeros(500, '0'), none = "0." + zeros + "0", tenth = "0.1" + zeros + "1 k";
    const std::string large = "1" + std::string(320, '0') + " q";
    const Reads<double> reads = {
        {"5", 5},    {tenth, 100},   {large, 1e290},   {"1.5 kHz", 1500},       {"12.3\u03bc", 12.3e-6},
        {none, 0},   {"5 Q", 5e30},  {"1.5KHz", 1500}, {"-12.3 uHz", -12.3e-6}, {"12.3 \u00b5Hz", 12.3e-6},
        {"5 Hz", 5}, {"5 MHz", 5e6}, {"5 mHz", 0.005},
    };
    const Texts rejected = {
        "",   "+5",   "5 kk",  "5 kHzz", "5 k Hz", "inf Hz", "0." + zeros + "1", std::string(400, '9'),
        "Hz", "5 hz", "5 cHz", "5 HzHz", "1e3 Hz",
    };
    expectReads<double>([](std::string_view text, double& value) { return Math::ParseSi(text, value, "Hz"); }, reads,
                        rejected);
    double value = 0;
    EXPECT_TRUE(Math::ParseSi("5 m", value, "m") && value == 5);
    EXPECT_TRUE(Math::ParseSi("5 mm", value, "m") && value == 0.005);
    EXPECT_TRUE(Math::ParseSi("5 m", value) && value == 0.005);
}

TEST(MathUtils, ReadsReals) {
    const Reads<double> reads = {
        {"5.", 5},    {"-0", -0.0},  {"nan", kNaN},    {"5e-324", kLeast}, {"-Infinity", -kInfinity},
        {"1.5", 1.5}, {"-.5", -0.5}, {"+1.5e3", 1500}, {"INF", kInfinity}, {"1.7976931348623157e+308", kMost},
    };
    const Texts rejected = {
        "", "-", "e5", "1,5", "+-1", "0x10", "1..5", "1e-999", "+", ".", "1e", "--1", "1 2", "1.5f", "1e999", "nan(1)",
    };
    expectReads<double>(&Math::ParseReal, reads, rejected);
}

TEST(MathUtils, KnowsNoLocale) {
    const char* const before = std::setlocale(LC_ALL, nullptr);
    const std::string kept = before != nullptr ? before : "C";
    ASSERT_NE(std::setlocale(LC_ALL, "German"), nullptr);
    double value = 0;
    EXPECT_EQ(Math::SiToText(1500, "Hz") + Math::PercentToText(0.5, 1) + Math::RealToText(0.5), "1.50 kHz50.0 %0.5");
    EXPECT_TRUE(Math::ParseReal("0.5", value) && !Math::ParseReal("0,5", value));
    std::setlocale(LC_ALL, kept.c_str());
}

}  // namespace
