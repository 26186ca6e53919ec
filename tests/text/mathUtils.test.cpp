#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
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
constexpr Math::xoByteUnit kUnits[] = {Math::ByteUnitBinary, Math::ByteUnitDecimal, Math::ByteUnitWindows};

// "999.5 kHz": 999; what is in front of the point.
std::uint64_t wholeOf(const std::string& text) { return std::strtoull(text.c_str(), nullptr, 10); }

TEST(MathUtils, ShowsBytes) {
    EXPECT_EQ(Math::BytesToText(0), "0 B");
    EXPECT_EQ(Math::BytesToText(1023), "1023 B");
    EXPECT_EQ(Math::BytesToText(1024), "1.00 KiB");
    EXPECT_EQ(Math::BytesToText(1047552), "1023 KiB");
    EXPECT_EQ(Math::BytesToText(1468006), "1.40 MiB");
    EXPECT_EQ(Math::BytesToText(1048565), "1.00 MiB");
    EXPECT_EQ(Math::BytesToText(UINT64_MAX), "16.0 EiB");
    EXPECT_EQ(Math::BytesToText(-3145728), "-3.00 MiB");
    EXPECT_EQ(Math::BytesToText(INT64_MIN, Math::ByteUnitDecimal), "-9.22 EB");
    EXPECT_EQ(Math::BytesToText(1500000, Math::ByteUnitDecimal), "1.50 MB");
    EXPECT_EQ(Math::BytesToText(999999, Math::ByteUnitDecimal), "1.00 MB");
    EXPECT_EQ(Math::BytesToText(1468006, Math::ByteUnitWindows), "1.40 MB");
    EXPECT_EQ(Math::BytesToText(1536, Math::ByteUnitBinary, 1), "2 KiB") << "a tie goes to the even digit";
    EXPECT_EQ(Math::BytesToText(2560, Math::ByteUnitBinary, -1), "2 KiB");
    EXPECT_EQ(Math::BytesToText(UINT64_MAX, Math::ByteUnitDecimal, 99), "18.446744073709552 EB");
    EXPECT_EQ(Math::BytesToText(static_cast<unsigned char>(200), static_cast<Math::xoByteUnit>(9)), "200 B");
}

// Around each border of two prefixes and each power of two and ten: never a base before a unit that has a next, and the
// parser reads back what is shown.
TEST(MathUtils, CarriesBytesToTheNextPrefix) {
    std::vector<std::uint64_t> values;
    for (const std::uint64_t base : {2u, 10u, 1000u, 1024u})
        for (std::uint64_t power = 1;; power *= base) {
            for (std::uint64_t off = 0; off < 60; off = off * 2 + 1)
                values.insert(values.end(), {power - off, power + off});
            for (const std::uint64_t part : {20u, 200u, 2000u, 20000u, 2000000u})
                values.insert(values.end(), {power - power / part, power - power / part - 1, power - power / part + 1});
            if (power > UINT64_MAX / base) break;
        }
    for (const std::uint64_t value : values)
        for (const auto unit : kUnits)
            for (int digits = 1; digits <= 17; ++digits) {
                const std::string text = Math::BytesToText(value, unit, digits);
                const unsigned base = unit == Math::ByteUnitDecimal ? 1000 : 1024;
                if (text.find('E') == std::string::npos) ASSERT_LT(wholeOf(text), base) << text;
                std::uint64_t read = 0;
                if (!Math::ParseBytes(text, read, unit)) {
                    ASSERT_GT(value, UINT64_MAX / 100 * 99) << text << ", which is more than there are";
                    continue;
                }
                const std::uint64_t off = read < value ? value - read : read - value;
                ASSERT_LE(static_cast<double>(off), static_cast<double>(value) * std::pow(10.0, 1 - digits)) << text;
            }
}

TEST(MathUtils, ShowsCounts) {
    EXPECT_EQ(Math::CountToText(0), "0");
    EXPECT_EQ(Math::CountToText(-999), "-999");
    EXPECT_EQ(Math::CountToText(-1234567), "-1,234,567");
    EXPECT_EQ(Math::CountToText(INT64_MIN, '\''), "-9'223'372'036'854'775'808");
    EXPECT_EQ(Math::CountToText(UINT64_MAX, '\0'), "18446744073709551615");
}

TEST(MathUtils, ShowsReals) {
    const struct {
        std::string text, expected;
    } rows[] = {
        {Math::SiToText(1500, "Hz"), "1.50 kHz"},
        {Math::SiToText(12.3e-6, "F"), "12.3 \u00b5F"},
        {Math::SiToText(999950), "1.00 M"},
        {Math::SiToText(999.4, {}, 2), "999"},
        {Math::SiToText(999.5, {}, 1), "1 k"},
        {Math::SiToText(9.96, "m", 1), "10 m"},
        {Math::SiToText(99.6, "m", 2), "100 m"},
        {Math::SiToText(-0.0, "V"), "0 V"},
        {Math::SiToText(-1e30), "-1.00 Q"},
        {Math::SiToText(1.5e35, "g"), "150000 Qg"},
        {Math::SiToText(1e-35, "g"), "0.0000100 qg"},
        {Math::SiToText(kMost, {}, 1).substr(0, 20), "17976931348623157081"},
        {Math::SiToText(kInfinity, "Hz"), "inf Hz"},
        {Math::SiToText(-kNaN), "nan"},
        {Math::PercentToText(0.4711), "47 %"},
        {Math::PercentToText(0.4711, 1), "47.1 %"},
        {Math::PercentToText(0.005), "1 %"},  // a little more than that
        {Math::PercentToText(0.125, 0), "12 %"},
        {Math::PercentToText(-0.001), "0 %"},
        {Math::PercentToText(-0.001, 99), "-0.10000000000000000 %"},
        {Math::PercentToText(12.5, -3), "1250 %"},
        {Math::PercentToText(-kInfinity), "-inf %"},
        {Math::PercentToText(kNaN), "nan %"},
        {Math::SignificantToText(1234.5, 3), "1230"},
        {Math::SignificantToText(0.00012345, 2), "0.00012"},
        {Math::SignificantToText(2, 3), "2.00"},
        {Math::SignificantToText(1e20, 3), "1.00e+20"},
        {Math::SignificantToText(999999999999999.0, 3), "1.00e+15"},
        {Math::SignificantToText(-0.00000999999, 2), "-0.000010"},
        {Math::SignificantToText(0.0000099, 1), "0.00001"},
        {Math::SignificantToText(0.0000094, 1), "9e-06"},
        {Math::SignificantToText(0.0, 3), "0"},
        {Math::SignificantToText(kLeast, 99), "4.9406564584124654e-324"},
        {Math::RealToText(0.1f), "0.1"},
        {Math::RealToText(0.1), "0.1"},
        {Math::RealToText(1e22), "1e+22"},
        {Math::RealToText(9999999999999998.0), "9999999999999998"},
        {Math::RealToText(0.0001), "0.0001"},
        {Math::RealToText(0.00001), "1e-05"},
        {Math::RealToText(-0.0), "-0"},
        {Math::RealToText(-7), "-7"},
        {Math::RealToText(kLeast), "5e-324"},
        {Math::RealToText(-kInfinity), "-inf"},
    };
    for (const auto& row : rows) EXPECT_EQ(row.text, row.expected);
}

TEST(MathUtils, ShowsDurations) {
    const struct {
        double seconds;
        const char* text;
        const char* clock;
    } rows[] = {
        {0, "0 s", "0:00"},
        {14.2e-9, "14.2 ns", "0:00"},
        {1.5e-10, "0.150 ns", "0:00"},
        {2.5e-6, "2.50 \u00b5s", "0:00"},
        {0.0142, "14.2 ms", "0:00"},
        {0.9996, "1.00 s", "0:01"},
        {-0.4, "-400 ms", "0:00"},
        {-5, "-5.00 s", "-0:05"},
        {17, "17.0 s", "0:17"},
        {42.1, "42.1 s", "0:42"},
        {59.94, "59.9 s", "1:00"},
        {59.96, "1 min 00 s", "1:00"},
        {125, "2 min 05 s", "2:05"},
        {3599.5, "1 h 00 min", "1:00:00"},
        {3630, "1 h 00 min", "1:00:30"},
        {3690, "1 h 02 min", "1:01:30"},
        {-7380, "-2 h 03 min", "-2:03:00"},
        {7389, "2 h 03 min", "2:03:09"},
        {86399, "1 d 00 h", "23:59:59"},
        {273600, "3 d 04 h", "76:00:00"},
        {360000, "4 d 04 h", "100:00:00"},
        {86398200, "1000 d", "23999:30:00"},
        {1e15, "11574074074 d", "277777777777:46:40"},
        {kInfinity, "inf s", "inf"},
        {-kInfinity, "-inf s", "-inf"},
        {kNaN, "nan s", "nan"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Math::DurationToText(row.seconds), row.text);
        EXPECT_EQ(Math::DurationToClock(row.seconds), row.clock);
    }
    EXPECT_EQ(Math::DurationToClock(59.999, 2), "1:00.00");
    EXPECT_EQ(Math::DurationToClock(-0.04, 1), "0:00.0");
    EXPECT_EQ(Math::DurationToClock(-0.06, 1), "-0:00.1");
    EXPECT_EQ(Math::DurationToClock(1.5, 99), "0:01.500000000");
    EXPECT_GT(Math::DurationToText(kMost).size(), 300u);
    EXPECT_GT(Math::DurationToClock(kMost).size(), 300u);
}

template <class Value>
using Parser = bool (*)(std::string_view, Value&);

template <class Value>
struct Read {
    std::string text;
    Value value;
};

// What the rows and rejected texts give, in blanks too. A target of a text that is rejected keeps its value.
template <class Value>
void expectReads(Parser<Value> parse, const std::vector<Read<Value>>& rows, const std::vector<std::string>& rejected) {
    for (const Read<Value>& row : rows)
        for (const std::string& text : {row.text, " \t" + row.text + " \n"}) {
            Value value{};
            EXPECT_TRUE(parse(text, value)) << text;
            EXPECT_EQ(std::memcmp(&value, &row.value, sizeof value), 0) << text << " is " << value;
        }
    for (const std::string& text : rejected) {
        Value value = 77;
        EXPECT_FALSE(parse(text, value)) << text << " is " << value;
        EXPECT_EQ(value, Value{77}) << text;
    }
}

TEST(MathUtils, ReadsBytes) {
    expectReads<std::uint64_t>(
        [](std::string_view text, std::uint64_t& bytes) { return Math::ParseBytes(text, bytes); },
        {{"10", 10},
         {"10 B", 10},
         {"2 bytes", 2},
         {"1 BYTE", 1},
         {"1.5MiB", 1572864},
         {"250Mi", 262144000},
         {"10 mb", 10000000},
         {"10  k", 10000},
         {"3 kbytes", 3000},
         {"0.1 kB", 100},
         {".5 kb", 500},
         {"5. kb", 5000},
         {"1.0005 kB", 1000},
         {"1.0015 kB", 1002},
         {"1.00050000000000000000000000000000000000000000000000000000000000000000000000000001 kB", 1001},
         {"0.00048828125 KiB", 0},
         {"0.00146484375 KiB", 2},
         {"18446744073709551615", UINT64_MAX},
         {"18446744073709551615.4", UINT64_MAX},
         {"18.446744073709551615 EB", UINT64_MAX},
         {"15.9999999999999999994 EiB", UINT64_MAX},
         {"00000000000000000000000000001 TiB", std::uint64_t{1} << 40}},
        {"",
         " ",
         "B",
         "-1",
         "-0",
         "+1",
         "1,5 MB",
         "1.5.2",
         ".",
         "1e3",
         "0x10",
         "10 bit",
         "10 kbit",
         "10 i",
         "10 ki b x",
         "10 MBB",
         "1 0",
         "18446744073709551616",
         "18446744073709551615.5",
         "15.9999999999999999996 EiB",
         "16 EiB",
         "18.5 EB",
         "1 ZB",
         "1 MB 2 KB",
         "10 \xC2\xB5"s,
         "nan",
         "10 B\0"s});
    std::uint64_t bytes = 0;
    EXPECT_TRUE(Math::ParseBytes("1 KB", bytes, Math::ByteUnitWindows));
    EXPECT_EQ(bytes, 1024u);
}

TEST(MathUtils, ReadsCounts) {
    expectReads<std::int64_t>([](std::string_view text, std::int64_t& value) { return Math::ParseCount(text, value); },
                              {{"0", 0},
                               {"-0", 0},
                               {"1234567", 1234567},
                               {"-1,234,567", -1234567},
                               {"001,000", 1000},
                               {"9,223,372,036,854,775,807", INT64_MAX},
                               {"-9223372036854775808", INT64_MIN}},
                              {"", "-", ",", "1,", ",123", "1,23", "1,2345", "1234,567", "1,234567", "1,,234", "+1",
                               "1.0", "- 1", "1 2", "9223372036854775808", "-9,223,372,036,854,775,809", "1,234,56x"});
    std::int64_t value = 0;
    EXPECT_TRUE(Math::ParseCount("1'000", value, '\''));
    EXPECT_EQ(value, 1000);
    EXPECT_FALSE(Math::ParseCount("1,000", value, '\0'));
}

TEST(MathUtils, ReadsDurations) {
    expectReads<double>(
        &Math::ParseDuration,
        {{"90", 90},
         {"0", 0},
         {"-1.5", -1.5},
         {"2h 3m", 7380},
         {"2 h 03 min", 7380},
         {"-2 h 03 min", -7380},
         {"1h30m", 5400},
         {"1.5 h", 5400},
         {"1.1 m", 66},
         {"14.2ms", 0.0142},
         {"14.2 ns", 14.2e-9},
         {"3 days 4 hours", 273600},
         {"1 Week 1 DAY 1 Hr 1 Minute 1 sec 1 ms 1 us 1 ns", 694861.001001001},
         {"5 \u00b5s", 5e-6},
         {"5\u03bcs", 5e-6},
         {"2:03:09", 7389},
         {"0:17.2", 17.2},
         {"100:00:00", 360000},
         {"1:5", 65},
         {"20000000000000000000 d", 1.728e24}},
        {"",      "-",     "h",      "5 x",      "1h 1h", "1m 1h",   "1.5h 3m", "1. h 3 m", "1 h 5",
         "1,5 h", "1e3 s", "+5",     "- 5",      "1:60",  "1:60:00", "1:2:3:4", "1.5:00",   ":30",
         "1:",    "1: 30", "1:30 s", "5 months", "nan",   "inf",     "5 \xC2",  "1h-3m",    std::string(400, '9')});
}

TEST(MathUtils, ReadsQuantitiesAndReals) {
    expectReads<double>([](std::string_view text, double& value) { return Math::ParseSi(text, value, "Hz"); },
                        {{"1.5 kHz", 1500},
                         {"1.5KHz", 1500},
                         {"-12.3 uHz", -12.3e-6},
                         {"12.3 \u00b5Hz", 12.3e-6},
                         {"12.3\u03bc", 12.3e-6},
                         {"5", 5},
                         {"5 Hz", 5},
                         {"5 mHz", 0.005},
                         {"5 MHz", 5e6},
                         {"5 Q", 5e30},
                         {"0." + std::string(500, '0') + "0", 0},
                         {"0.1" + std::string(2000, '0') + "1 k", 100},
                         {std::string(1, '1') + std::string(320, '0') + " q", 1e290}},
                        {"", "Hz", "5 hz", "5 kHzz", "5 kk", "5 cHz", "5 HzHz", "5 k Hz", "1e3 Hz", "+5", "inf Hz",
                         "0." + std::string(400, '0') + "1", std::string(400, '9')});
    double value = 0;
    EXPECT_TRUE(Math::ParseSi("5 m", value, "m"));
    EXPECT_EQ(value, 5);
    EXPECT_TRUE(Math::ParseSi("5 mm", value, "m"));
    EXPECT_EQ(value, 0.005);
    EXPECT_TRUE(Math::ParseSi("5 m", value));
    EXPECT_EQ(value, 0.005);

    expectReads<double>(&Math::ParseReal,
                        {{"1.5", 1.5},
                         {"+1.5e3", 1500},
                         {"-.5", -0.5},
                         {"5.", 5},
                         {"-0", -0.0},
                         {"5e-324", kLeast},
                         {"1.7976931348623157e+308", kMost},
                         {"INF", kInfinity},
                         {"-Infinity", -kInfinity},
                         {"nan", kNaN}},
                        {"", "+", "-", ".", "e5", "1e", "1e999", "1e-999", "0x10", "1,5", "--1", "+-1", "1 2", "1.5f",
                         "nan(1)", "1..5"});
}

TEST(MathUtils, ReadsWhatItShows) {
    std::mt19937_64 random(11);
    for (int round = 0; round < 20000; ++round) {
        double value = 0, read = 0;
        const std::uint64_t bits = random();
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value)) continue;
        SCOPED_TRACE(Math::RealToText(value));
        ASSERT_TRUE(Math::ParseReal(Math::RealToText(value), read));
        ASSERT_EQ(std::memcmp(&value, &read, sizeof value), 0);
        const auto narrow = static_cast<float>(value);
        if (std::isfinite(narrow)) {
            ASSERT_TRUE(Math::ParseReal(Math::RealToText(narrow), read));
            ASSERT_EQ(static_cast<float>(read), narrow);
        }
        // The exact texts where few digits are needed are those of the standard's rounding.
        const int digits = 1 + static_cast<int>(random() % 17);
        char expected[64];
        std::snprintf(expected, sizeof expected, "%.*e", digits - 1, value);
        const double rounded = std::strtod(expected, nullptr);
        ASSERT_EQ(Math::ParseReal(Math::SignificantToText(value, digits), read), std::isfinite(rounded));
        if (std::isfinite(rounded)) ASSERT_EQ(read, rounded);

        const double tame = std::ldexp(static_cast<double>(bits >> 11), static_cast<int>(random() % 141) - 130);
        const std::string si = Math::SiToText(tame, "Hz", digits);
        ASSERT_TRUE(Math::ParseSi(si, read, "Hz")) << si;
        ASSERT_EQ(Math::SiToText(read, "Hz", digits), si);
        if (si.find('Q') == std::string::npos) ASSERT_LT(wholeOf(si), 1000u) << si;
        for (const std::string& text : {Math::DurationToText(-tame), Math::DurationToClock(tame, digits % 10)}) {
            ASSERT_TRUE(Math::ParseDuration(text, read)) << text;
            ASSERT_TRUE(text == Math::DurationToText(read) || text == Math::DurationToClock(read, digits % 10)) << text;
        }
        ASSERT_TRUE(Math::DurationToText(tame).find("60") == std::string::npos ||
                    Math::DurationToText(tame).find(" min") == std::string::npos || tame > 3600);
        std::int64_t count = 0;
        ASSERT_TRUE(Math::ParseCount(Math::CountToText(static_cast<std::int64_t>(bits)), count));
        ASSERT_EQ(count, static_cast<std::int64_t>(bits));
    }
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
