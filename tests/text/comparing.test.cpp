#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "support/importHook.h"
#include "xoSystem/xoStringUtils.h"

namespace {

using xo::xoStringUtils;
using xo::tests::ImportHook;
using namespace std::string_literals;

constexpr auto npos = std::string::npos;

// Neither the neighbours of the letters have a case nor anything beyond ASCII.
TEST(Searching, FindsAnywhereAtTheStartAndAtTheEnd) {
    const std::tuple<std::string, std::string, std::size_t, std::size_t, bool> rows[] = {
        {"", "", 0, 0, true},          {"abcABC", "BC", 4, 1, true},  {"ab", "abc", npos, npos, false},
        {"abc", "", 0, 0, true},       {"abc", "ab", 0, 0, false},    {"bc", "abc", npos, npos, false},
        {"abc", "abc", 0, 0, true},    {"@[`{", "`{", 2, 2, true},    {"\xC9", "\xE9", npos, npos, false},
        {"", "a", npos, npos, false},  {"abc", "AB", npos, 0, false}, {"a\0B"s, "\0b"s, npos, 1, false},
        {"aab", "AB", npos, 1, false}, {"a\0"s, "\0"s, 1, 1, true},
    };
    for (const auto& [text, what, sensitive, insensitive, ends] : rows) {
        SCOPED_TRACE(text + ' ' + what);
        EXPECT_EQ(xoStringUtils::FindCaseSensitive(text, what), sensitive);
        EXPECT_EQ(xoStringUtils::FindCaseInsensitive(text, what), insensitive);
        EXPECT_EQ(xoStringUtils::Contains(text, what), sensitive != npos);
        EXPECT_EQ(xoStringUtils::Contains(text, what, false), insensitive != npos);
        EXPECT_EQ(xoStringUtils::StartsWith(text, what), sensitive == 0);
        EXPECT_EQ(xoStringUtils::endsWith(text, what), ends);
    }
}

TEST(Searching, ParsesTheSpellingsOfTrue) {
    for (const char* text : {"1", "true", "TRUE", "Yes", "on", " \tTrue\r\n"})
        EXPECT_TRUE(xoStringUtils::parseBool(text)) << text;
    for (const char* text :
         {"", " ", "0", "2", "false", "no", "tru", "true1", "o n", static_cast<const char*>(nullptr)})
        EXPECT_FALSE(xoStringUtils::parseBool(text)) << text;
}

TEST(NaturalOrder, ComparesDigitRunsAsNumbers) {
    const std::tuple<std::string, std::string, int, int> rows[] = {
        {"\xC3\xA9", "f", -1, -1},   {"\xC3\x89", "\xC3\xA9", 1, 0}, {"a\0b"s, "a\0c"s, -1, -1},
        {"file2", "file10", -1, -1}, {"file10", "file2", 1, 1},      {"File2", "file10", -1, -1},
        {"a", "A", -1, 0},           {"e", "\xC3\xA9", -1, -1},      {"", "", 0, 0},
        {"", "a", -1, -1},
    };
    for (const auto& [a, b, sensitive, insensitive] : rows) {
        EXPECT_EQ(xoStringUtils::CompareUTF8Natural(a, b), sensitive) << a << ' ' << b;
        EXPECT_EQ(xoStringUtils::CompareUTF8Natural(a, b, true), insensitive) << a << ' ' << b;
        EXPECT_EQ(xoStringUtils::CompareUTF8Natural(b, a), -sensitive) << a << ' ' << b;
    }
    EXPECT_EQ(xoStringUtils::CompareUTF16Natural(L"x10?", 3, L"x9??", 2), 1);
    EXPECT_EQ(xoStringUtils::CompareUTF16Natural(nullptr, 0, L"", 0), 0);
    EXPECT_EQ(xoStringUtils::CompareUTF16Natural(L"a", 0x80000000U, L"a", 1), -2);
    EXPECT_EQ(xoStringUtils::CompareUTF16Natural(L"a", 1, L"a", 0x80000000U), -2);
    EXPECT_EQ(xoStringUtils::CompareUTF16Natural(nullptr, 1, L"a", 1), -2);
}

TEST(NaturalOrder, SortsBrokenTextsToo) {
    std::vector<std::string> names = {"file10a", "g", "file2", "", "file10", "file1"};
    std::sort(names.begin(), names.end(), xoStringUtils::UTF8NaturalSortFunction);
    EXPECT_EQ(names, (std::vector<std::string>{"", "file1", "file2", "file10", "file10a", "g"}));
    std::sort(names.rbegin(), names.rend(), xoStringUtils::UTF8NaturalSortFunctionCaseInsensitive);
    EXPECT_EQ(names.front(), "g");
    EXPECT_TRUE(xoStringUtils::UTF8NaturalSortFunction("a", "A"));
    EXPECT_FALSE(xoStringUtils::UTF8NaturalSortFunctionCaseInsensitive("a", "A"));

    std::mt19937 random(5);
    for (int i = 0; i < 200; ++i) names.push_back("\xFF" + std::string(random() % 9, static_cast<char>(random())));
    std::sort(names.begin(), names.end(), xoStringUtils::UTF8NaturalSortFunction);
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end(), xoStringUtils::UTF8NaturalSortFunction));

    const ImportHook failing(
        "xoSystem.dll", "CompareStringEx",
        +[](LPCWSTR, DWORD, LPCWSTR, int, LPCWSTR, int, NLSVERSIONINFO*, void*, LPARAM) { return 0; });
    ASSERT_TRUE(failing.isInstalled());
    EXPECT_FALSE(xoStringUtils::UTF8NaturalSortFunction("a", "b")) << "a failure orders nothing";
}

TEST(SoftwareVersions, CompareOverTheLengthOfTheSecond) {
    constexpr auto invalid = xoStringUtils::SoftwareVersionInvalid;
    constexpr auto equal = xoStringUtils::SoftwareVersionEqual;
    constexpr auto older = xoStringUtils::SoftwareVersionOlder;
    constexpr auto newer = xoStringUtils::SoftwareVersionNewer;
    const std::tuple<std::string, std::string, xoStringUtils::SoftwareVersionComparisonResult> rows[] = {
        {"1.2.10", "1.2.9", newer}, {"1.2.9", "1.2.10", older},   {"1.2", "1.2.0", equal},  {"1.2", "1.2.1", older},
        {"1.9.1", "1.2.3", newer},  {"1.2.3", "1.2", equal},      {"", "", invalid},        {"1", "", invalid},
        {"", "0.0", equal},         {"2.x", "1.0", invalid},      {"010", "8", equal},      {"0x10.08", "16", invalid},
        {"0x10", "16", equal},      {" 1 . 2\t", "1.2", equal},   {"1..2", "1.0.2", equal}, {"1.2.", "1.2", equal},
        {"4294967295", "1", newer}, {"4294967296", "1", invalid}, {"-1", "1", invalid},     {"1 2", "1", invalid},
        {"1\0"s, "1", invalid},
    };
    for (const auto& [a, b, result] : rows)
        EXPECT_EQ(xoStringUtils::compareSoftwareVersion(a, b), result) << a << " with " << b;
    EXPECT_EQ(xoStringUtils::compareSoftwareVersion("1.2.3", "1.2.4", 2), equal);
    EXPECT_EQ(xoStringUtils::compareSoftwareVersion("2", "1.9", 0), invalid);
    EXPECT_EQ(xoStringUtils::compareSoftwareVersion("1.0", "1.x", 1), invalid);  // read whole before it is cut
}

}  // namespace
