#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <string>

#include "xoSystem/xoStringUtils.h"

namespace {

using xo::xoStringUtils;
using namespace std::string_literals;

constexpr auto kNative = xoStringUtils::CharSetNative;
constexpr auto kUtf8 = xoStringUtils::CharSetUtf8;
constexpr auto kAscii = xoStringUtils::CharSetAscii;

const std::string kWideningFailed = "xoStringUtils::convertCharset failed \n";
const std::string kNarrowingFailed = "xoStringUtils::toUT8 failed \n";
const std::string kAsciiFailed = "xoStringUtils::fromAscii failed \n";

// What std::cout is given while it lives.
class CapturedOutput {
public:
    CapturedOutput() : mPrevious(std::cout.rdbuf(mText.rdbuf())) {}
    ~CapturedOutput() { std::cout.rdbuf(mPrevious); }
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;
    std::string text() const { return mText.str(); }

private:
    std::ostringstream mText;
    std::streambuf* mPrevious;
};

class CharSets : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(xoStringUtils::InitializeStringUtils()); }
    void TearDown() override { ASSERT_TRUE(xoStringUtils::TerminateStringUtils()); }
};

TEST(Locales, ExistBetweenInitialisationAndTermination) {
    EXPECT_FALSE(xoStringUtils::TerminateStringUtils());
    EXPECT_EQ(xoStringUtils::GetCLocale(), nullptr);
    EXPECT_EQ(xoStringUtils::GetCPlusLocale(), nullptr);
    EXPECT_EQ(xoStringUtils::convertCharset("no locale yet", kAscii, kAscii), "no locale yet");

    EXPECT_TRUE(xoStringUtils::InitializeStringUtils());
    const auto runtime = xoStringUtils::GetCLocale();
    const auto stream = xoStringUtils::GetCPlusLocale();
    ASSERT_NE(runtime, nullptr);
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(stream->name(), "C");
    EXPECT_FALSE(xoStringUtils::InitializeStringUtils());
    EXPECT_EQ(xoStringUtils::GetCLocale(), runtime);
    EXPECT_EQ(xoStringUtils::GetCPlusLocale(), stream);

    EXPECT_TRUE(xoStringUtils::TerminateStringUtils());
    EXPECT_EQ(xoStringUtils::GetCLocale(), nullptr);
    EXPECT_EQ(xoStringUtils::GetCPlusLocale(), nullptr);
}

TEST_F(CharSets, WidenOrSayWhyNot) {
    const struct {
        std::string text;
        int from;
        std::wstring wide;
        std::string message;
    } rows[] = {
        {"", kNative, L"", ""},
        {"", kUtf8, L"", ""},
        {"", kAscii, L"", kAsciiFailed},
        {"plain", kNative, L"plain", ""},
        {"plain", kAscii, L"plain", ""},
        {"\xE9t\xE9", kNative, L"\u00E9t\u00E9", ""},
        {"\xC3\xA9t\xE2\x82\xAC\xF0\x9F\x98\x80", kUtf8, L"\u00E9t\u20AC\U0001F600", ""},
        {"a\xFFz", kUtf8, L"a\uFFFDz", ""},
        {"ab\0cd"s, kUtf8, L"ab", ""},
        {"ab\0cd"s, kAscii, L"ab", ""},
        {"\0ab"s, kUtf8, L"", ""},
        {"\0ab"s, kAscii, L"", kAsciiFailed},
        {"ab", 3, L"", kWideningFailed},
        {"ab", -1, L"", kWideningFailed},
    };
    for (const auto& row : rows) {
        const CapturedOutput output;
        EXPECT_EQ(xoStringUtils::convertToUnicode(row.text, row.from), row.wide) << row.text << " from " << row.from;
        EXPECT_EQ(output.text(), row.message) << row.text << " from " << row.from;
    }
}

TEST_F(CharSets, NarrowWithinTwoBytesACharacterOrSayWhyNot) {
    const struct {
        std::wstring wide;
        int to;
        std::string text;
        std::string message;
    } rows[] = {
        {L"", kNative, "", ""},
        {L"", kUtf8, "", ""},
        {L"", kAscii, "", kAsciiFailed},
        {L"plain", kNative, "plain", ""},
        {L"p", kAscii, "p", ""},
        {L"plain", kAscii, "plain", ""},
        {L"\u00E9t\u00E9", kNative, "\xE9t\xE9", ""},
        {L"\u00E9t\u00E9", kUtf8, "\xC3\xA9t\xC3\xA9", ""},
        {L"\u4E2D", kAscii, "", kAsciiFailed},
        {L"\u0800\u4E2D", kUtf8, "", kNarrowingFailed},
        {L"\u4E2D\u6587ab", kUtf8,
         "\xE4\xB8\xAD\xE6\x96\x87"
         "ab",
         ""},                                                    // eight bytes of nine, NUL included
        {L"\u4E2D\u6587\u5B57ab", kUtf8, "", kNarrowingFailed},  // eleven bytes of ten without the NUL
        {L"\U0001F600", kUtf8, "\xF0\x9F\x98\x80", ""},          // a surrogate pair fits exactly
        {L"ab\0cd"s, kUtf8, "ab", ""},
        {L"ab\0cd"s, kAscii, "ab", ""},
        {L"ab", 3, "", kNarrowingFailed},
    };
    for (const auto& row : rows) {
        const CapturedOutput output;
        EXPECT_EQ(xoStringUtils::convertTo8Bits(row.wide, row.to), row.text) << testing::PrintToString(row.wide);
        EXPECT_EQ(output.text(), row.message) << testing::PrintToString(row.wide) << " to " << row.to;
    }
}

TEST_F(CharSets, ConvertThroughWideText) {
    const CapturedOutput output;
    EXPECT_EQ(xoStringUtils::convertCharset("\xC3\xA9t\xC3\xA9", 1, 0), "\xE9t\xE9");
    EXPECT_EQ(xoStringUtils::convertCharset("\xE9t\xE9", 0, 1), "\xC3\xA9t\xC3\xA9");
    EXPECT_EQ(xoStringUtils::convertCharset("", kUtf8, kNative), "");
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(xoStringUtils::convertCharset("", kUtf8, kAscii), "");
    EXPECT_EQ(output.text(), kAsciiFailed);
}

TEST_F(CharSets, TakeATextOfUnknownEncodingForNative) {
    const CapturedOutput output;
    EXPECT_EQ(xoStringUtils::UnknownEncodingToUtf8("\xC3\xA9 \xE4\xB8\xAD", '?'), "\xC3\xA9 \xE4\xB8\xAD");
    EXPECT_EQ(xoStringUtils::UnknownEncodingToUtf8("\xE9t\xE9", '?'), "\xC3\xA9t\xC3\xA9");
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(xoStringUtils::UnknownEncodingToUtf8("\x80\x80\x80", '?'), "");  // three euro signs: nine bytes
    EXPECT_EQ(output.text(), kNarrowingFailed);
}

}  // namespace
