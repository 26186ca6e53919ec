#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "xoSystem/xoStringUtils.h"

namespace {

using xo::xoStringUtils;

TEST(Hexadecimal, WritesEveryByteAndReadsItBack) {
    std::mt19937 random(11);
    for (std::size_t size = 0; size < 300; ++size) {
        std::string bytes(size, '\0');
        for (char& c : bytes) c = static_cast<char>(random());
        std::string expected;
        for (const char c : bytes) {
            expected += "0123456789abcdef"[static_cast<unsigned char>(c) >> 4];
            expected += "0123456789abcdef"[c & 15];
        }
        std::string hex = "left over", back = "left over";
        xoStringUtils::ToHex(bytes.data(), bytes.size(), hex);
        ASSERT_EQ(hex, expected);
        ASSERT_TRUE(xoStringUtils::FromHex(hex.data(), hex.size(), back));
        ASSERT_EQ(back, bytes);
        xoStringUtils::toUpper(hex);
        ASSERT_TRUE(xoStringUtils::FromHex(hex.data(), hex.size(), hex));  // onto itself
        ASSERT_EQ(hex, bytes);
        xoStringUtils::ToHex(hex.data(), hex.size(), hex);
        ASSERT_EQ(hex, expected);
    }
}

TEST(Hexadecimal, RefusesWhatIsNoDigitAndOddSizes) {
    std::string out;
    for (int c = 0; c < 256; ++c) {
        const bool digit = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
        for (const std::size_t place : {0U, 1U, 38U, 39U}) {
            std::string text(40, '1');
            text[place] = static_cast<char>(c);
            EXPECT_EQ(xoStringUtils::FromHex(text.data(), text.size(), out), digit) << c;
            EXPECT_EQ(out.size(), digit ? 20u : 0u);
        }
    }
    EXPECT_FALSE(xoStringUtils::FromHex("123", 3, out));
    EXPECT_TRUE(xoStringUtils::FromHex(nullptr, 0, out));
}

TEST(Uuid, HasTwoForms) {
    unsigned char bytes[16];
    for (unsigned i = 0; i < 16; ++i) bytes[i] = static_cast<unsigned char>(i * 17);
    const std::string dashed = "00112233-4455-6677-8899-aabbccddeeff";
    const std::string plain = "00112233445566778899aabbccddeeff";
    std::string text;
    xoStringUtils::UUIDToHex(bytes, text);
    EXPECT_EQ(text, dashed);
    xoStringUtils::UUIDToHex(bytes, text, false);
    EXPECT_EQ(text, plain);

    for (std::string form : {dashed, plain, "{" + dashed + "}", "{" + plain + "}"}) {
        for (int round = 0; round < 2; ++round, xoStringUtils::toUpper(form)) {
            unsigned char read[16] = {};
            EXPECT_TRUE(xoStringUtils::IsUUID(form)) << form;
            EXPECT_TRUE(xoStringUtils::UUIDToBinary(form, read)) << form;
            EXPECT_TRUE(std::equal(std::begin(bytes), std::end(bytes), read)) << form;
        }
    }
}

TEST(Uuid, RefusesEverythingElse) {
    const std::string rows[] = {
        "",
        "{}",
        "00112233-4455-6677-8899-aabbccddeef",
        "00112233-4455-6677-8899-aabbccddeefff",
        "00112233-4455-6677-8899aa-bbccddeeff",
        "00112233-4455-6677-8899-aabbccddeefg",
        "0011223--4455-6677-8899-aabbccddeeff",
        "{00112233-4455-6677-8899-aabbccddeeff",
        " 0112233445566778899aabbccddeeff",
    };
    for (const auto& row : rows) {
        unsigned char bytes[16] = {42};
        EXPECT_FALSE(xoStringUtils::IsUUID(row)) << row;
        EXPECT_FALSE(xoStringUtils::UUIDToBinary(row, bytes)) << row;
        EXPECT_EQ(bytes[0], 42);
    }
}

}  // namespace
