#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "xoSystem/xoStringUtils.h"

namespace {

using xo::xoStringUtils;
using namespace std::string_literals;

TEST(NaturalOrder, ComparesDigitRunsAsNumbers) {
    const struct {
        std::string a, b;
        int sensitive, insensitive;
    } rows[] = {
        {"", "", 0, 0},
        {"", "a", -1, -1},
        {"file2", "file10", -1, -1},
        {"file10", "file2", 1, 1},
        {"File2", "file10", -1, -1},
        {"a", "A", -1, 0},
        {"e", "\xC3\xA9", -1, -1},
        {"\xC3\xA9", "f", -1, -1},
        {"\xC3\x89", "\xC3\xA9", 1, 0},
        {"a\0b"s, "a\0b"s, 0, 0},
        {"a\0b"s, "a\0c"s, -1, -1},  // the comparison goes on behind a NUL
    };
    for (const auto& row : rows) {
        EXPECT_EQ(xoStringUtils::CompareUTF8Natural(row.a, row.b, false), row.sensitive) << row.a << ' ' << row.b;
        EXPECT_EQ(xoStringUtils::CompareUTF8Natural(row.a, row.b, true), row.insensitive) << row.a << ' ' << row.b;
        EXPECT_EQ(xoStringUtils::CompareUTF8Natural(row.b, row.a, false), -row.sensitive) << row.a << ' ' << row.b;
    }
    EXPECT_EQ(xoStringUtils::CompareUTF16Natural(L"x10?", 3, L"x9??", 2, false), 1);
    EXPECT_EQ(xoStringUtils::CompareUTF16Natural(nullptr, 0, L"", 0, false), 0);
    EXPECT_EQ(xoStringUtils::CompareUTF16Natural(L"a", 0x80000000U, L"a", 1, false), -2);
    EXPECT_EQ(xoStringUtils::CompareUTF16Natural(nullptr, 1, L"a", 1, false), -2);
}

TEST(NaturalOrder, SortsBrokenTextsToo) {
    const std::vector<std::string> sorted = {"", "file1", "file2", "file10", "file10a", "g"};
    std::vector<std::string> names = sorted;
    std::mt19937 random(5);
    std::shuffle(names.begin(), names.end(), random);
    std::sort(names.begin(), names.end(), xoStringUtils::UTF8NaturalSortFunction);
    EXPECT_EQ(names, sorted);
    std::sort(names.rbegin(), names.rend(), xoStringUtils::UTF8NaturalSortFunctionCaseInsensitive);
    EXPECT_EQ(names.front(), "g");
    EXPECT_FALSE(xoStringUtils::UTF8NaturalSortFunction("a", "a"));
    EXPECT_FALSE(xoStringUtils::UTF8NaturalSortFunctionCaseInsensitive("a", "A"));

    for (int i = 0; i < 200; ++i) names.push_back("\xFF" + std::string(random() % 9, static_cast<char>(random())));
    std::sort(names.begin(), names.end(), xoStringUtils::UTF8NaturalSortFunction);
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end(), xoStringUtils::UTF8NaturalSortFunction));
}

TEST(SoftwareVersions, CompareOverTheLengthOfTheSecond) {
    constexpr auto kInvalid = xoStringUtils::SoftwareVersionInvalid;
    constexpr auto kEqual = xoStringUtils::SoftwareVersionEqual;
    constexpr auto kOlder = xoStringUtils::SoftwareVersionOlder;
    constexpr auto kNewer = xoStringUtils::SoftwareVersionNewer;
    const struct {
        std::string a, b;
        std::uint64_t maxComponents;
        xoStringUtils::SoftwareVersionComparisonResult result;
    } rows[] = {
        {"1.2.10", "1.2.9", 4, kNewer},
        {"1.2.9", "1.2.10", 4, kOlder},
        {"1.2", "1.2.0", 4, kEqual},
        {"1.2", "1.2.1", 4, kOlder},
        {"1.2.3", "1.2", 4, kEqual},  // what a has more is not looked at
        {"1.2.3", "1.2.4", 2, kEqual},
        {"2", "1.9", 0, kInvalid},
        {"", "", 4, kInvalid},
        {"1", "", 4, kInvalid},
        {"", "0.0", 4, kEqual},
        {"1.x", "1.0", 4, kInvalid},
        {"1.0", "1.x", 1, kInvalid},  // read whole before it is cut
        {"010", "8", 4, kEqual},
        {"0x10.08", "16", 4, kInvalid},
        {"0x10", "16", 4, kEqual},
        {" 1 . 2\t", "1.2", 4, kEqual},
        {"1..2", "1.0.2", 4, kEqual},
        {"1.2.", "1.2", 4, kEqual},
        {"4294967295", "4294967294", 4, kNewer},
        {"4294967296", "1", 4, kInvalid},
        {"99999999999999999999", "1", 4, kInvalid},
        {"-1", "1", 4, kInvalid},
        {"1 2", "1", 4, kInvalid},
        {"1\0"s, "1", 4, kInvalid},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(xoStringUtils::compareSoftwareVersion(row.a, row.b, row.maxComponents), row.result)
            << row.a << " with " << row.b;
    }
}

}  // namespace
