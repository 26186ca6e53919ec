#include <gtest/gtest.h>

#include <string>

#include "xoSystem/xoStringUtils.h"

namespace {

using xo::xoStringUtils;
using namespace std::string_literals;
constexpr auto npos = std::string::npos;

TEST(Searching, FindsWithAndWithoutCase) {
    const struct {
        std::string text, what;
        std::size_t sensitive, insensitive;
    } rows[] = {
        {"", "", 0, 0},
        {"abc", "", 0, 0},
        {"", "a", npos, npos},
        {"abcABC", "BC", 4, 1},
        {"aabaac", "AAC", npos, 3},
        {"ab", "abc", npos, npos},
        {"@[`{", "`{", 2, 2},                    // the neighbours of the letters have no case
        {"\xC3\x89t", "\xC3\xA9t", npos, npos},  // nor has anything beyond ASCII
        {"a\0B"s, "\0b"s, npos, 1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(xoStringUtils::FindCaseSensitive(row.text, row.what), row.sensitive) << row.text;
        EXPECT_EQ(xoStringUtils::FindCaseInsensitive(row.text, row.what), row.insensitive) << row.text;
        EXPECT_EQ(xoStringUtils::Contains(row.text, row.what, true), row.sensitive != npos) << row.text;
        EXPECT_EQ(xoStringUtils::Contains(row.text, row.what, false), row.insensitive != npos) << row.text;
    }
}

TEST(Searching, ComparesStartAndEnd) {
    const struct {
        std::string text, part;
        bool starts, ends;
    } rows[] = {
        {"", "", true, true},          {"abc", "", true, true},     {"abc", "abc", true, true},
        {"abc", "xabc", false, false}, {"abc", "ab", true, false},  {"abc", "bc", false, true},
        {"", "a", false, false},       {"abc", "AB", false, false}, {"a\0"s, "\0"s, false, true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(xoStringUtils::StartsWith(row.text, row.part), row.starts) << row.text << ' ' << row.part;
        EXPECT_EQ(xoStringUtils::endsWith(row.text, row.part), row.ends) << row.text << ' ' << row.part;
    }
}

TEST(Searching, ParsesTheSpellingsOfTrue) {
    for (const char* text : {"1", "true", "TRUE", "Yes", "on", " \tTrue\r\n"}) {
        EXPECT_TRUE(xoStringUtils::parseBool(text)) << text;
    }
    for (const char* text : {"", " ", "0", "2", "false", "no", "off", "tru", "true1", "o n"}) {
        EXPECT_FALSE(xoStringUtils::parseBool(text)) << text;
    }
    EXPECT_FALSE(xoStringUtils::parseBool(nullptr));
}

}  // namespace
