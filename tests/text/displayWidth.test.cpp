#include <gtest/gtest.h>

#include <string>

#include "xoSystem/xoStringUtils.h"

namespace {

using xo::xoStringUtils;
using namespace std::string_literals;

std::size_t widthOf(const std::string& text) { return xoStringUtils::GetDisplayWidth(text); }

std::string printable(std::string text) { return xoStringUtils::MakePrintable(text); }

std::string cut(std::string text, std::size_t columns, const std::string& mark = "...", bool inMiddle = false) {
    return xoStringUtils::CutToDisplayWidth(text, columns, mark, inMiddle);
}

TEST(DisplayWidth, CountsColumns) {
    const struct {
        const char* what;
        std::string text;
        std::size_t width;
    } rows[] = {
        {"nothing", "", 0},
        {"a Latin letter", "é", 1},
        {"a letter and a combining mark", "e\u0301", 1},
        {"a combining mark alone", "\u0301", 0},
        {"ambiguous", "α§", 2},
        {"ideographs, Hangul and full-width forms", "日本한Ａ", 8},
        {"beyond the listed blocks", "\U0002A6E5\U0003FFFD\U0003FFFE\U0010FFFD", 6},
        {"a syllable of three jamo", "\u1112\u1161\u11ab", 2},
        {"soft hyphen and a sign that encloses digits", "\u00ad\u06dd", 2},
        {"zero-width space, joiner, byte-order mark", "\u200b\u200d\ufeff", 0},
        {"control characters", "\x1b\t\n\x7f\u009b\0"s, 0},
        {"no UTF-8: each byte", "\x80\xff\xe6\x97", 4},
        {"overlong, a surrogate, too great", "\xc0\x80\xed\xa0\x80\xf4\x90\x80\x80\xe0\x80\x80\xf0\x80\x80\x80", 16},
        {"emoji", "😀⌚", 4},
        {"text and emoji presentation", "❤❤\ufe0f", 3},
        {"a letter has none", "a\ufe0f", 1},
        {"joined", "👩\u200d🔧🔧", 4},
        {"joined behind a skin tone", "👩🏽\u200d🔧", 2},
        {"joined with a presentation", "🤷\u200d♂\ufe0f", 2},
        {"a joiner between others", "a\u200db👩\u200db", 5},
        {"skin tone", "👍🏽☝🏽", 3},
        {"skin tone behind what has none", "😀🏽a🏽", 7},
        {"flags, and half a flag", "🇸🇪🇫🇷🇸", 5},
        {"keycap, behind other digits", "11\ufe0f\u20e3", 3},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(widthOf(row.text), row.width) << row.what;
        // Wherever it stands in blocks of 16 bytes.
        for (std::size_t before = 1; before < 40; ++before)
            ASSERT_EQ(widthOf(std::string(before, 'x') + row.text + std::string(20, 'x')), before + row.width + 20)
                << row.what << " behind " << before;
    }
}

TEST(DisplayWidth, ShowsWhatATerminalWouldObey) {
    EXPECT_EQ(printable("C:\\a b é 日本 \U0001F600"), "C:\\a b é 日本 \U0001F600");
    EXPECT_EQ(printable("\r\n\t\0\x1b[31m\x7f"s), "\\r\\n\\t\\x00\\x1b[31m\\x7f");
    EXPECT_EQ(printable("\u0080\u009f\u00a0"), "\\x80\\x9f\u00a0");
    EXPECT_EQ(printable("\xff\xe6\x97"), "\\xff\\xe6\\x97");
    EXPECT_EQ(printable("\u061c\u200d\u200e\u200f\u2027\u2028\u202e\u202f\u2065\u2066\u2069\u206a"),
              "\\u061c\u200d\\u200e\\u200f\u2027\\u2028\\u202e\u202f\u2065\\u2066\\u2069\u206a");
    for (std::size_t before = 0; before < 40; ++before)
        EXPECT_EQ(printable(std::string(before, 'x') + "\n" + std::string(before, 'y')),
                  std::string(before, 'x') + "\\n" + std::string(before, 'y'));
}

TEST(DisplayWidth, CutsAtTheEndOrInTheMiddle) {
    const std::string path = "C:\\folder\\name.txt";
    EXPECT_EQ(cut(path, 18), path);
    EXPECT_EQ(cut(path, 17), "C:\\folder\\name...");
    EXPECT_EQ(cut(path, 10, "...", true), "C:\\....txt");
    EXPECT_EQ(cut(path, 3), "...");
    EXPECT_EQ(cut(path, 2), "C:");
    EXPECT_EQ(cut(path, 0), "");
    EXPECT_EQ(cut(path, 5, ""), "C:\\fo");
    EXPECT_EQ(cut("日本語", 5, "…"), "日本…");
    EXPECT_EQ(cut("日本語", 4, "…"), "日…");
    EXPECT_EQ(cut("日本語日本語", 6, "…", true), "日…語") << "the start leaves a column, too few for the end";
    EXPECT_EQ(cut("ae\u0301b", 2, ""), "ae\u0301");
    EXPECT_EQ(cut("👩\u200d🔧x", 2, ""), "👩\u200d🔧");
}

}  // namespace
