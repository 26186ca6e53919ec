#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
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
    const std::pair<std::string, Pieces> rows[] = {
        {"", {}},         {",", {""}}, {"a", {"a"}}, {"a,", {"a"}}, {",a", {"", "a"}}, {"a,,b", {"a", "", "b"}},
        {",,", {"", ""}},
    };
    for (const auto& [text, pieces] : rows) {
        EXPECT_EQ(xoStringUtils::Split(text, ','), pieces) << text;
        EXPECT_EQ(splitInPlace(text, ','), pieces) << text;
    }
    EXPECT_EQ(xoStringUtils::Split(",a,,b,", ',', true), (Pieces{"a", "b"}));
}

TEST(Splitting, TakesNulsNothingAndItsOwnResult) {
    EXPECT_EQ(xoStringUtils::Split("a\0b"s, '\0', false), (Pieces{"a", "b"}));
    EXPECT_EQ(splitInPlace("a,b", '\0'), Pieces{"a,b"});
    std::vector<char*> none;
    EXPECT_TRUE(xoStringUtils::Split(nullptr, ',', none).empty());
    Pieces pieces = {"a,b", "c"};
    EXPECT_EQ(xoStringUtils::Split(pieces[0], ',', pieces), (Pieces{"a", "b"}));

    std::string first = "key=a=b", second = "=";
    const auto cut = [&](const std::string& text) {
        const bool found = xoStringUtils::SplitFirst(text, '=', first, second);
        return Pieces{found ? "found" : "none", first, second};
    };
    EXPECT_EQ(cut(first), (Pieces{"found", "key", "a=b"}));
    EXPECT_EQ(cut(second), (Pieces{"found", "a", "b"}));
    EXPECT_EQ(cut("no"), (Pieces{"none", "no", ""}));
    EXPECT_EQ(cut("="), (Pieces{"found", "", ""}));
}

TEST(Editing, TrimsWhiteSpaceAlone) {
    using Row = std::tuple<std::string, std::string, std::string, std::string>;
    for (const auto& [text, trimmedLeft, trimmedRight, collapsed] :
         {Row{"", "", "", ""}, Row{" \t ", "", "", ""}, Row{"\v\f\r\n\t a", "a", "\v\f\r\n\t a", "a"},
          Row{" a\t\tb  c ", "a\t\tb  c ", " a\t\tb  c", "a b c"}, Row{"a\tb", "a\tb", "a\tb", "a b"},
          Row{"\xA0 \x85", "\xA0 \x85", "\xA0 \x85", "\xA0 \x85"}, Row{"\0 a"s, "\0 a"s, "\0 a"s, "\0 a"s}}) {
        std::string left = text, right = text, both = text, runs = text;
        EXPECT_EQ(&xoStringUtils::ltrim(left), &left);
        EXPECT_EQ(left, trimmedLeft);
        EXPECT_EQ(xoStringUtils::rtrim(right), trimmedRight);
        EXPECT_EQ(xoStringUtils::trim(both), xoStringUtils::rtrim(left));
        EXPECT_EQ(xoStringUtils::trimAndRemoveConsecutiveSpaces(runs), collapsed);
    }
}

TEST(Editing, ReplacesEachOccurrenceOnce) {
    // From left to right without overlap, and never in what was put in.
    const std::tuple<std::string, std::string, std::string, std::string, int> rows[] = {
        {"", "a", "b", "", 0},           {"ab", "ab", "", "", 1},           {"aaa", "aa", "b", "ba", 1},
        {"aab", "ab", "b", "ab", 1},     {"abc", "", "x", "abc", 0},        {"abc", "x", "y", "abc", 0},
        {"a,b,c", ",", ";", "a;b;c", 2}, {"abbab", "ab", "ca", "cabca", 2}, {"aXbX", "X", "XX", "aXXbXX", 2},
        {"ab", "\0"s, "x", "ab", 0},
    };
    for (const auto& [text, from, to, result, count] : rows) {
        std::string counted = text, replaced = text;
        EXPECT_EQ(xoStringUtils::ReplaceAllOccurences(counted, from, to), count) << text;
        EXPECT_EQ(counted, result);
        EXPECT_EQ(xoStringUtils::replace(replaced, from, to), result);
    }
    std::wstring wide = L"C:\\a\\b";
    EXPECT_EQ(xoStringUtils::replace(wide, L"\\", L"//"), L"C://a//b");
    std::string self = "ab", nuls = "a\0b\0"s;
    EXPECT_EQ(xoStringUtils::replace(nuls, "\0"s, "--"), "a--b--");
    EXPECT_EQ(xoStringUtils::replace(self, self, self + self), "abab");
    EXPECT_EQ(xoStringUtils::replace(self, "a", self), "ababbababb");
}

TEST(Editing, ChangesTheCaseOfAsciiLettersAlone) {
    std::string text, upper, lower;
    for (int c = 0; c < 256; ++c) {
        text += static_cast<char>(c);
        upper += static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
        lower += static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    }
    EXPECT_EQ(xoStringUtils::toUpper(std::string(text).erase(0, 0)), upper);
    EXPECT_EQ(xoStringUtils::toLower(text), lower);
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

TEST(PathText, FallsIntoFolderBaseAndExtension) {
    using Row = std::tuple<const char*, const char*, std::string, std::string>;
    for (const auto& [path, parent, base, extension] :
         {Row{"", "", "", ""}, Row{"a.txt", "", "a", "txt"}, Row{"x/y/a.tar.gz", "x/y", "a.tar", "gz"},
          Row{"x/y\\a.b", "x/y", "a", "b"}, Row{"x.y/a", "x.y", "a", ""}, Row{"x/", "x", "", ""},
          Row{"/a", "/", "a", ""}, Row{"C:\\a.b", "C:\\", "a", "b"}, Row{"C:/x/a", "C:/x", "a", ""},
          Row{"x\\.a", "x", ".a", ""}, Row{"x/.a.b", "x", ".a", "b"}, Row{"..", "", "..", ""},
          Row{"ab/c", "ab", "c", ""}}) {
        SCOPED_TRACE(path);
        std::string folder = path, file;
        xoStringUtils::SplitFolderFilename(folder, folder, file);
        EXPECT_EQ(folder, parent);
        EXPECT_EQ(file, extension.empty() ? base : base + '.' + extension);
        EXPECT_EQ(xoStringUtils::ExtractFolder(path), parent);
        EXPECT_EQ(xoStringUtils::ExtractFileBaseName(path), base);
        EXPECT_EQ(xoStringUtils::ExtractFileExtension(path), extension);
    }
    EXPECT_EQ(xoStringUtils::ExtractFileBaseName("a."), "a");
    EXPECT_EQ(xoStringUtils::ExtractFileExtension("a."), "");
}

TEST(PathText, BecomesAValidFileName) {
    std::string name;
    const std::pair<std::string, std::string> rows[] = {
        {"", "_"},      {"COM", "COM"},  {"a. .", "a___"},   {"x.con", "x.con"},    {"CONSOLE", "CONSOLE"},
        {"..", "__"},   {"con", "con_"}, {"Com1", "Com1_"},  {"COM10", "COM10"},    {"CONOUT$", "CONOUT$_"},
        {" .a", " .a"}, {"PRN", "PRN_"}, {"lpt0.", "lpt0_"}, {"conin$", "conin$_"}, {"aux .txt", "aux_ .txt"},
    };
    for (const auto& [given, valid] : rows) {
        EXPECT_EQ(xoStringUtils::GenerateValidFileName(name = given), valid) << given;
        EXPECT_EQ(xoStringUtils::GenerateValidFileName(name), valid) << "not stable";
    }
    EXPECT_EQ(xoStringUtils::GenerateValidFileName(name = "NUL.tar.gz", '-'), "NUL-.tar.gz");
    for (const std::string digit : {"\xC2\xB9", "\xC2\xB2", "\xC2\xB3"})
        EXPECT_EQ(xoStringUtils::GenerateValidFileName(name = "LPT" + digit + ".x"), "LPT" + digit + "_.x");
    EXPECT_EQ(xoStringUtils::GenerateValidFileName(name = "<>:\"/\\|?*\x01\x1F\0"s, '-'), "------------");
    EXPECT_EQ(xoStringUtils::GenerateValidFileName(name = u8"\u00E9 \u4E2D.txt"), u8"\u00E9 \u4E2D.txt");
    EXPECT_EQ(xoStringUtils::GenerateValidFileName(name = "CO?", 'N'), "CONN");  // the replacement makes it a device
    for (const char unfit : {'\0', '*', '.', ' ', '\xC3'})
        EXPECT_EQ(xoStringUtils::GenerateValidFileName(name = "a/b?", unfit), "a_b_");
}

}  // namespace
