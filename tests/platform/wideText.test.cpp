#include "platform/wideText.h"

#include <gtest/gtest.h>

#include "platform/windows.h"

namespace {

using namespace std::string_literals;
using namespace xo::platform;

TEST(WideText, ConvertsWholeTextsBothWays) {
    const struct {
        std::string utf8;
        std::wstring wide;
    } rows[] = {
        {"", L""},
        {"a\0b"s, L"a\0b"s},
        {"\xC3\xA9t\xC3\xA9", L"\u00E9t\u00E9"},
        {"\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E", L"\u65E5\u672C\u8A9E"},  // three bytes a character
        {"\xF0\x9F\x98\x80", L"\xD83D\xDE00"},
        {"\x7F\xC2\x80", L"\x7F\x80"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(toWide(row.utf8), row.wide) << row.utf8;
        EXPECT_EQ(toUtf8(row.wide), row.utf8);
        std::string text = "x";
        appendUtf8(text, row.wide + L"\xD83D");
        EXPECT_EQ(text, "x" + row.utf8 + "\xEF\xBF\xBD");
    }
    std::string many;
    for (int i = 0; i < 100000; ++i) many += "\xE6\x97\xA5";
    EXPECT_EQ(toUtf8(toWide(many)), many);
}

TEST(WideText, ReplacesWhatIsBroken) {
    EXPECT_EQ(toUtf8(L"a\xD83D"), "a\xEF\xBF\xBD");
    EXPECT_EQ(toUtf8(L"\xDE00z"), "\xEF\xBF\xBDz");
    EXPECT_EQ(toWide("a\xFFz"), L"a\uFFFDz");
    EXPECT_EQ(toWide("\xC3"), L"\uFFFD");
    EXPECT_EQ(toNative("a\xF0\x9F\x98\x80", 2), "a") << "a character cut in two";
}

TEST(ApiPath, LiftsTheLengthLimitOfLongPathsOnly) {
    const std::wstring longName(250, L'n'), limit(245, L'n');
    const std::pair<std::wstring, std::wstring> rows[] = {
        {L"", L""},
        {L"a.txt", L"a.txt"},
        {L"C:/a/b.txt", L"C:/a/b.txt"},
        {LR"(\\server\share\a)", LR"(\\server\share\a)"},
        {L"C:\\" + limit.substr(1), L"C:\\" + limit.substr(1)},  // 247 characters, as a folder may have
        {L"C:\\" + limit, LR"(\\?\C:\)" + limit},
        {L"C:/a/../b/" + longName, LR"(\\?\C:\b\)" + longName},
        {LR"(\\server\share\)" + longName, LR"(\\?\UNC\server\share\)" + longName},
        {L"//server/share/" + longName, LR"(\\?\UNC\server\share\)" + longName},
        {LR"(\\?\C:\)" + longName, LR"(\\?\C:\)" + longName},
        {LR"(\\.\pipe\)" + longName, LR"(\\.\pipe\)" + longName},
        {L"C:\\a\0.txt"s, L""},  // names no file
        {L"x:b.txt", L"x:b.txt"},
        {L"y:b.txt", LR"(\\?\Y:\)" + longName + L"\\b.txt"},  // where the working folder of the drive is long
    };
    ::SetEnvironmentVariableW(L"=Y:", (L"Y:\\" + longName).c_str());
    for (const auto& [path, apiPath] : rows) EXPECT_EQ(toApiPath(path), apiPath) << toUtf8(path);
    const std::wstring relative = toApiPath(longName);
    EXPECT_EQ(relative.substr(0, 4), LR"(\\?\)");
    EXPECT_EQ(relative.substr(relative.size() - longName.size() - 1), L"\\" + longName);
}

TEST(ReadWide, GrowsUntilTheTextFits) {
    const std::wstring text(1000, L'x');
    const auto fill = [&](wchar_t* buffer, unsigned long size) -> unsigned long {
        if (size <= text.size()) return static_cast<unsigned long>(text.size() + 1);
        text.copy(buffer, text.size());
        return static_cast<unsigned long>(text.size());
    };
    EXPECT_EQ(readWide(fill), text);
    EXPECT_EQ(readWide([](wchar_t*, unsigned long) { return 0ul; }), L"");
}

}  // namespace
