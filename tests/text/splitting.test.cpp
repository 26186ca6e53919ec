#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "xoSystem/xoStringUtils.h"

namespace {

using xo::xoStringUtils;
using namespace std::string_literals;
using Pieces = std::vector<std::string>;

Pieces splitInPlace(std::string text, char sep) {
    std::vector<char*> pointers{nullptr};
    xoStringUtils::Split(text.data(), sep, pointers);
    return {pointers.begin(), pointers.end()};
}

TEST(Splitting, CutsAsALineReaderDoes) {
    const struct {
        std::string text;
        Pieces all, filled;
    } rows[] = {
        {"", {}, {}},
        {",", {""}, {}},
        {"a", {"a"}, {"a"}},
        {"a,", {"a"}, {"a"}},
        {",a", {"", "a"}, {"a"}},
        {"a,,b,,", {"a", "", "b", ""}, {"a", "b"}},
        {" a , b", {" a ", " b"}, {" a ", " b"}},
        {"\xC3\xA9,\n", {"\xC3\xA9", "\n"}, {"\xC3\xA9", "\n"}},
    };
    for (const auto& row : rows) {
        Pieces out = {"left over"};
        EXPECT_EQ(&xoStringUtils::Split(row.text, ',', out, false), &out);
        EXPECT_EQ(out, row.all) << row.text;
        EXPECT_EQ(xoStringUtils::Split(row.text, ',', out, true), row.filled) << row.text;
        EXPECT_EQ(xoStringUtils::Split(row.text, ',', false), row.all) << row.text;
        EXPECT_EQ(xoStringUtils::Split(row.text, ',', true), row.filled) << row.text;
        EXPECT_EQ(splitInPlace(row.text, ','), row.all) << row.text;
    }
    EXPECT_EQ(xoStringUtils::Split("a\0b"s, '\0', false), (Pieces{"a", "b"}));
    EXPECT_EQ(splitInPlace("a,b", '\0'), Pieces{"a,b"});
    std::vector<char*> none;
    EXPECT_TRUE(xoStringUtils::Split(nullptr, ',', none).empty());
}

TEST(Splitting, AgreesWithALineReaderOnRandomTexts) {
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        std::string text(random() % 80, 'x');
        for (char& c : text) c = ";abc"[random() % 4];
        Pieces expected;
        std::istringstream stream(text);
        for (std::string piece; std::getline(stream, piece, ';');) expected.push_back(piece);
        ASSERT_EQ(xoStringUtils::Split(text, ';', false), expected) << text;
    }
}

TEST(Splitting, TakesItsOwnResultForText) {
    Pieces pieces = {"a,b", "c"};
    EXPECT_EQ(xoStringUtils::Split(pieces[0], ',', pieces, false), (Pieces{"a", "b"}));

    std::string first = "key=a=b", second;
    EXPECT_TRUE(xoStringUtils::SplitFirst(first, '=', first, second));
    EXPECT_EQ(first, "key");
    EXPECT_EQ(second, "a=b");
    EXPECT_TRUE(xoStringUtils::SplitFirst(second, '=', first, second));
    EXPECT_EQ(first, "a");
    EXPECT_EQ(second, "b");
    EXPECT_FALSE(xoStringUtils::SplitFirst("none", '=', first, second));
    EXPECT_EQ(first, "none");
    EXPECT_EQ(second, "");
    EXPECT_TRUE(xoStringUtils::SplitFirst("=", '=', first, second));
    EXPECT_EQ(first + second, "");
}

}  // namespace
