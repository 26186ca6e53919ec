#include <gtest/gtest.h>
#include <utf8.h>

#include <cstdint>
#include <optional>
#include <random>
#include <string>

#include "xoSystem/xoStringUtils.h"

namespace {

using xo::xoStringUtils;

// What utfcpp makes of the text, one checked code point after the other; nothing for a broken one.
std::optional<std::size_t> decodedCount(const std::string& text) {
    std::size_t count = 0;
    try {
        for (auto at = text.begin(); at != text.end(); ++count) utf8::next(at, text.end());
    } catch (const utf8::exception&) {
        return std::nullopt;
    }
    return count;
}

void expectAgreement(const std::string& text) {
    const auto count = decodedCount(text);
    ASSERT_EQ(xoStringUtils::IsUtf8String(text), count.has_value()) << testing::PrintToString(text);
    ASSERT_EQ(xoStringUtils::CountUtf8Char(text), count.value_or(0)) << testing::PrintToString(text);
}

TEST(Utf8Checks, KnowWhatIsWellFormed) {
    const struct {
        std::string text;
        bool valid;
        std::size_t count;
    } rows[] = {
        {"", true, 0},
        {"\xC3\xA9t\xC3\xA9", true, 3},
        {std::string(3, '\0'), true, 3},
        {"\xC3\x28", false, 0},          // no continuation
        {"abc\xC3", false, 0},           // cut off
        {"\xC0\xAF", false, 0},          // overlong
        {"\xED\xA0\x80", false, 0},      // a surrogate
        {"\xF4\x90\x80\x80", false, 0},  // beyond U+10FFFF
        {"\xEF\xBF\xBF\xF4\x8F\xBF\xBF", true, 2},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(xoStringUtils::IsUtf8String(row.text), row.valid) << testing::PrintToString(row.text);
        EXPECT_EQ(xoStringUtils::CountUtf8Char(row.text), row.count) << testing::PrintToString(row.text);
    }
}

// Every lead byte before the edges of each range of second bytes, at the end of a text and well before it.
TEST(Utf8Checks, AgreeWithSlowDecodingOnEveryLeadByte) {
    const std::string seconds = "\x41\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC2\xFF";
    const std::string others = "\x7F\x80\xBF\xC0";
    for (int lead = 0; lead < 256; ++lead) {
        for (const char second : seconds) {
            const std::string start = {static_cast<char>(lead), second};
            expectAgreement(start);
            for (const char third : others) {
                expectAgreement(start + third);
                for (const char fourth : others) {
                    expectAgreement(start + third + fourth);
                    expectAgreement(start + third + fourth + "tail");
                }
            }
            ASSERT_FALSE(HasFatalFailure());
        }
    }
}

TEST(Utf8Checks, AgreeWithSlowDecodingOnMutatedTexts) {
    std::mt19937 random(20240229);
    const auto below = [&](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    };
    const std::string pieces[] = {"a",
                                  "some longer run of ASCII that fills whole blocks of sixty-four bytes, and more",
                                  "\xC3\xA9",
                                  "\xE4\xB8\xAD",
                                  "\xF0\x9F\x98\x80",
                                  "\xED\x9F\xBF"};
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (std::size_t i = below(12); i != 0; --i) text += pieces[below(std::size(pieces))];
        expectAgreement(text);
        if (text.empty()) continue;
        text[below(text.size())] = static_cast<char>(below(256));
        expectAgreement(text);
        expectAgreement(text.substr(0, below(text.size())));
        ASSERT_FALSE(HasFatalFailure());
    }
}

}  // namespace
