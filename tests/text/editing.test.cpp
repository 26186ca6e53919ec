#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "xoSystem/xoStringUtils.h"

namespace {

using xo::xoStringUtils;
using namespace std::string_literals;

TEST(Editing, TrimsWhiteSpaceAlone) {
    const struct {
        std::string text, left, right, both, collapsed;
    } rows[] = {
        {"", "", "", "", ""},
        {" \t ", "", "", "", ""},
        {"\v\f\r\n\t a", "a", "\v\f\r\n\t a", "a", "a"},
        {" a\t\tb  c ", "a\t\tb  c ", " a\t\tb  c", "a\t\tb  c", "a b c"},
        {"a\tb", "a\tb", "a\tb", "a\tb", "a b"},
        {"\xA0 \x85", "\xA0 \x85", "\xA0 \x85", "\xA0 \x85", "\xA0 \x85"},  // no white space in any code page
        {"\0 a"s, "\0 a"s, "\0 a"s, "\0 a"s, "\0 a"s},
    };
    for (const auto& row : rows) {
        std::string left = row.text, right = row.text, both = row.text, collapsed = row.text;
        EXPECT_EQ(&xoStringUtils::ltrim(left), &left);
        EXPECT_EQ(left, row.left);
        EXPECT_EQ(xoStringUtils::rtrim(right), row.right);
        EXPECT_EQ(xoStringUtils::trim(both), row.both);
        EXPECT_EQ(xoStringUtils::trimAndRemoveConsecutiveSpaces(collapsed), row.collapsed);
    }
}

TEST(Editing, ReplacesEachOccurrenceOnce) {
    const struct {
        std::string text, from, to, result;
        int count;
    } rows[] = {
        {"", "a", "b", "", 0},
        {"abc", "", "x", "abc", 0},
        {"abc", "x", "y", "abc", 0},
        {"a,b,c", ",", ";", "a;b;c", 2},
        {"aaa", "aa", "b", "ba", 1},       // left to right, without overlap
        {"aXbX", "X", "XX", "aXXbXX", 2},  // what was put in is not looked at again
        {"abab", "ab", "ba", "baba", 2},
        {"aab", "ab", "b", "ab", 1},
        {"ab", "ab", "", "", 1},
        {"a\0b\0"s, "\0"s, "--", "a--b--", 2},
    };
    for (const auto& row : rows) {
        std::string counted = row.text, replaced = row.text;
        EXPECT_EQ(xoStringUtils::ReplaceAllOccurences(counted, row.from, row.to), row.count) << row.text;
        EXPECT_EQ(counted, row.result);
        EXPECT_EQ(xoStringUtils::replace(replaced, row.from, row.to), row.result);
    }
    std::wstring wide = L"C:\\a\\b";
    EXPECT_EQ(xoStringUtils::replace(wide, L"\\", L"//"), L"C://a//b");
    std::string self = "ab";
    EXPECT_EQ(xoStringUtils::replace(self, self, self + self), "abab");
    EXPECT_EQ(xoStringUtils::replace(self, "a", self), "ababbababb");
}

TEST(Editing, ChangesTheCaseOfAsciiLettersAlone) {
    std::string bytes, upper, lower;
    for (int c = 0; c < 256; ++c) {
        bytes += static_cast<char>(c);
        upper += static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
        lower += static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    }
    std::string text = bytes;
    EXPECT_EQ(xoStringUtils::toUpper(text), upper);
    EXPECT_EQ(xoStringUtils::toLower(text = bytes), lower);
}

TEST(Editing, SecureClearLeavesNothingInTheOwnedMemory) {
    std::string secret(100, 's');
    secret.resize(10);
    const char* const memory = secret.data();
    const std::size_t size = secret.capacity();
    xoStringUtils::SecureClear(secret);
    EXPECT_TRUE(secret.empty());
    ASSERT_EQ(secret.data(), memory);
    EXPECT_TRUE(std::all_of(memory, memory + size, [](char c) { return c == '\0'; }));
}

}  // namespace
