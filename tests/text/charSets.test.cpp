#include <gtest/gtest.h>
#include <utf8.h>

#include <cstring>
#include <new>
#include <string>
#include <tuple>

#include "support/allocationCount.h"
#include "support/capturedOutput.h"
#include "support/importHook.h"
#include "xoSystem/xoStringUtils.h"

namespace {

using xo::xoStringUtils;
using xo::tests::AllocationCount;
using xo::tests::CapturedOutput;
using xo::tests::ImportHook;
using namespace std::string_literals;

constexpr int kNative = 0, kUtf8 = 1, kAscii = 2;
constexpr char kNoWide[] = "xoStringUtils::convertCharset failed \n";
constexpr char kNoUtf8[] = "xoStringUtils::toUT8 failed \n";
constexpr char kNoAscii[] = "xoStringUtils::fromAscii failed \n";

TEST(Locales, ExistBetweenInitialisationAndTermination) {
    EXPECT_FALSE(xoStringUtils::TerminateStringUtils());
    EXPECT_TRUE(xoStringUtils::GetCLocale() == nullptr && xoStringUtils::GetCPlusLocale() == nullptr);
    EXPECT_EQ(xoStringUtils::convertCharset("no locale yet", kAscii, kAscii), "no locale yet");

    EXPECT_TRUE(xoStringUtils::InitializeStringUtils());
    const auto runtime = xoStringUtils::GetCLocale();
    const auto stream = xoStringUtils::GetCPlusLocale();
    ASSERT_TRUE(runtime != nullptr && stream != nullptr);
    EXPECT_EQ(stream->name(), "C");
    EXPECT_EQ(xoStringUtils::convertToUnicode("\x80", kAscii), L"\x80");
    EXPECT_FALSE(xoStringUtils::InitializeStringUtils());
    EXPECT_TRUE(xoStringUtils::GetCLocale() == runtime && xoStringUtils::GetCPlusLocale() == stream);

    EXPECT_TRUE(xoStringUtils::TerminateStringUtils());
    EXPECT_TRUE(xoStringUtils::GetCLocale() == nullptr && xoStringUtils::GetCPlusLocale() == nullptr);
}

TEST(Locales, AreBothMissingAfterAFailure) {
    const AllocationCount allocations;
    ASSERT_TRUE(allocations.isCounting());
    bool isThrown = false;
    allocations.refuseAll(true);
    try {
        xoStringUtils::InitializeStringUtils();
    } catch (const std::bad_alloc&) {
        isThrown = true;
    }
    allocations.refuseAll(false);
    EXPECT_TRUE(isThrown);
    EXPECT_TRUE(xoStringUtils::GetCLocale() == nullptr && xoStringUtils::GetCPlusLocale() == nullptr);
    EXPECT_TRUE(xoStringUtils::InitializeStringUtils());
    EXPECT_TRUE(xoStringUtils::TerminateStringUtils());
}

TEST(CharSets, WidenOrSayWhyNot) {
    using Row = std::tuple<std::string, int, std::wstring, const char*>;
    for (const auto& [text, from, wide, message] :
         {Row{"", kUtf8, L"", ""}, Row{"", kAscii, L"", kNoAscii}, Row{"\0ab"s, kUtf8, L"", ""},
          Row{"\0ab"s, kAscii, L"", kNoAscii}, Row{"ab\0cd"s, kUtf8, L"ab", ""}, Row{"ab\0cd"s, kAscii, L"ab", ""},
          Row{"\x80t\xE9", kAscii, L"\x80t\xE9", ""}, Row{"\x80t\xE9", kNative, L"\u20ACt\xE9", ""},
          Row{u8"\u00E9\u20AC\U0001F600", kUtf8, L"\u00E9\u20AC\U0001F600", ""}, Row{"a\xFFz", kUtf8, L"a\uFFFDz", ""},
          Row{"a\xC3", kUtf8, L"a\uFFFD", ""}, Row{"ab", 3, L"", kNoWide}, Row{"ab", -1, L"", kNoWide}}) {
        const CapturedOutput output;
        EXPECT_EQ(xoStringUtils::convertToUnicode(text, from), wide) << text << " from " << from;
        EXPECT_EQ(output.text(), message) << text << " from " << from;
    }
}

// The output buffer has two bytes a character and one for the NUL.
TEST(CharSets, NarrowWithinTwoBytesACharacterOrSayWhyNot) {
    ::_set_invalid_parameter_handler([](const wchar_t*, const wchar_t*, const wchar_t*, unsigned, std::uintptr_t) {
        ADD_FAILURE() << "the default handler would end the process";
    });
    using Row = std::tuple<std::wstring, int, std::string, const char*>;
    for (const auto& [wide, to, text, message] :
         {Row{L"", kUtf8, "", ""}, Row{L"", kAscii, "", kNoAscii}, Row{L"p", kAscii, "p", ""},
          Row{L"\x80t\xE9", kAscii, "\x80t\xE9", ""}, Row{L"\u20ACt\xE9", kNative, "\x80t\xE9", ""},
          Row{L"\xE9t\xE9", kUtf8, "\xC3\xA9t\xC3\xA9", ""}, Row{L"\u4E2D", kAscii, "", kNoAscii},
          Row{L"\u0800\u4E2D", kUtf8, "", kNoUtf8}, Row{L"\u4E2D\u6587ab", kUtf8, u8"\u4E2D\u6587ab", ""},
          Row{L"\u4E2D\u6587\u5B57ab", kUtf8, "", kNoUtf8}, Row{L"\U0001F600", kUtf8, u8"\U0001F600", ""},
          Row{L"ab\0cd"s, kUtf8, "ab", ""}, Row{L"ab\0cd"s, kAscii, "ab", ""}, Row{L"\0ab"s, kAscii, "", ""},
          Row{L"a\xD83D", kUtf8, "a\xEF\xBF\xBD", ""}, Row{L"ab", 3, "", kNoUtf8}}) {
        const CapturedOutput output;
        EXPECT_EQ(xoStringUtils::convertTo8Bits(wide, to), text) << testing::PrintToString(wide);
        EXPECT_EQ(output.text(), message) << testing::PrintToString(wide) << " to " << to;
    }
}

TEST(CharSets, ConvertThroughWideText) {
    const CapturedOutput output;
    EXPECT_EQ(xoStringUtils::convertCharset("\xC3\xA9t\xC3\xA9", kUtf8, kNative), "\xE9t\xE9");
    EXPECT_EQ(xoStringUtils::convertCharset("\xE9t\xE9", kNative, kUtf8), "\xC3\xA9t\xC3\xA9");
    // Text of unknown encoding is native unless it is UTF-8.
    EXPECT_EQ(xoStringUtils::UnknownEncodingToUtf8("\xC3\xA9 \xE4\xB8\xAD"), "\xC3\xA9 \xE4\xB8\xAD");
    EXPECT_EQ(xoStringUtils::UnknownEncodingToUtf8("\xE9t\xE9"), "\xC3\xA9t\xC3\xA9");
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(xoStringUtils::convertCharset("", kUtf8, kAscii), "");
    EXPECT_EQ(xoStringUtils::UnknownEncodingToUtf8("\x80\x80\x80"), "");  // three euro signs: nine bytes
    EXPECT_EQ(output.text(), std::string(kNoAscii) + kNoUtf8);
}

// A conversion to UTF-8 whose result is a continuation byte without a first byte.
int WINAPI narrowBadly(UINT, DWORD, LPCWCH, int, LPSTR narrowed, int, LPCCH, LPBOOL) {
    std::memcpy(narrowed, "\x80", 2);
    return 2;
}

TEST(CharSets, OfUnknownTextAreReplacedIfItsConversionIsNoUtf8) {
    const ImportHook hook("xoSystem.dll", "WideCharToMultiByte", &narrowBadly);
    ASSERT_TRUE(hook.isInstalled());
    EXPECT_EQ(xoStringUtils::UnknownEncodingToUtf8("\x80t\xE9"), "?t?");
    EXPECT_EQ(xoStringUtils::UnknownEncodingToUtf8("\x7F\xFF", '*'), "\x7F*");
}

void expectAgreement(const std::string& text) {
    const bool valid = utf8::is_valid(text.begin(), text.end());
    const auto count = valid ? utf8::distance(text.begin(), text.end()) : 0;
    ASSERT_EQ(xoStringUtils::IsUtf8String(text), valid) << testing::PrintToString(text);
    ASSERT_EQ(xoStringUtils::CountUtf8Char(text), static_cast<std::size_t>(count)) << testing::PrintToString(text);
}

// Every lead byte before the edges of each range of second bytes, at the end of a text and well before it.
TEST(Utf8Checks, AgreeWithSlowDecodingOnEveryLeadByte) {
    for (int lead = 0x7F; lead < 256; ++lead) {
        for (const char second : "\x41\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC2\xFF"s) {
            for (const char* third : {"", "\x7F", "\x80", "\xBF", "\xC0"}) {
                for (const char* fourth : {"", "\x7F", "\x80", "\xBF", "\xC0", "\x80tail", "\xBFtail", "\xC0tail"})
                    expectAgreement(std::string{static_cast<char>(lead), second} + third + fourth);
            }
        }
        if (HasFatalFailure()) return;
    }
}

}  // namespace
