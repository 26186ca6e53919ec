#include "xoSystem/xoDataStream.h"

#include <gtest/gtest.h>

#include "stream/memoryDevice.h"
#include "support/allocationCount.h"
#include "xoSystem/xoStringUtils.h"

namespace {

using namespace std::string_literals;
using xo::xoDataStream;
using xo::tests::MemoryDevice;

constexpr auto kLittle = xoDataStream::EndiannessLittle;
constexpr auto kBig = xoDataStream::EndiannessBig;

std::string hex(const std::string& bytes) {
    std::string digits;
    xo::xoStringUtils::ToHex(bytes.data(), bytes.size(), digits);
    return digits;
}

template <class T>
std::string written(const T& value, int order) {
    MemoryDevice device;
    EXPECT_TRUE((xoDataStream(&device, order) << value).isOk());
    return device.bytes;
}

// Writes the value in both orders and reads it back, also from devices that end too early.
template <class T>
void expectLayout(const T& value, const char* big, const char* little) {
    for (const int order : {1, 0, 7}) {
        const std::string bytes = written(value, order);
        EXPECT_EQ(hex(bytes), order == 1 ? big : little);
        for (std::size_t size = 0; size <= bytes.size(); ++size) {
            MemoryDevice device(bytes.substr(0, size));
            T copy{};
            EXPECT_EQ((xoDataStream(&device, order) >> copy).isOk(), size == bytes.size());
            EXPECT_EQ(written(copy, order), written(size == bytes.size() ? value : T{}, order)) << size << " bytes";
        }
    }
}

TEST(DataStream, LaysEachTypeOut) {
    expectLayout(true, "ff", "ff");
    expectLayout(false, "00", "00");
    expectLayout('\x80', "80", "80");
    expectLayout(static_cast<signed char>(-2), "fe", "fe");
    expectLayout(static_cast<unsigned char>(200), "c8", "c8");
    expectLayout(static_cast<short>(-2), "fffe", "feff");
    expectLayout(static_cast<unsigned short>(0x0102), "0102", "0201");
    expectLayout(1, "00000001", "01000000");
    expectLayout(0xF1020304U, "f1020304", "040302f1");
    expectLayout(-2L, "fffffffe", "feffffff");
    expectLayout(0xF1020304UL, "f1020304", "040302f1");
    expectLayout(std::int64_t{-2}, "fffffffffffffffe", "feffffffffffffff");
    expectLayout(std::uint64_t{0x0102030405060708}, "0102030405060708", "0807060504030201");
    expectLayout(-0.0F, "80000000", "00000080");
    expectLayout(-1.5, "bff8000000000000", "000000000000f8bf");
    expectLayout(-0.0, "8000000000000000", "0000000000000080");
    expectLayout(""s, "00000000", "00000000");
    expectLayout("a\0\xFF"s, "000000036100ff", "030000006100ff");
    expectLayout(std::vector<char>{'x', '\r', '\n'}, "00000003780d0a", "03000000780d0a");

    float quiet = 0;  // numbers that are none, with payloads
    double signaling = 0;
    std::memcpy(&quiet, "\x34\x12\xC0\x7F", 4);
    std::memcpy(&signaling, "\x01\x02\x03\x04\x05\x06\xF0\xFF", 8);
    expectLayout(quiet, "7fc01234", "3412c07f");
    expectLayout(signaling, "fff0060504030201", "010203040506f0ff");

    MemoryDevice device("\x02");
    xoDataStream stream(&device, kBig);
    bool truth = false, untouched;
    std::memset(&untouched, 0x55, 1);  // as an uninitialised one may be
    EXPECT_TRUE((stream >> truth).isOk() && truth);
    EXPECT_EQ(std::memcmp(&truth, "\1", 1), 0);
    EXPECT_FALSE((xoDataStream(&device, kBig) >> untouched).isOk());
    EXPECT_EQ(std::memcmp(&untouched, "\x55", 1), 0) << "neither read nor written";
    stream << "abc" << static_cast<const char*>(nullptr);
    stream.setEndianness(kLittle);
    stream << 1;
    EXPECT_EQ(hex(device.bytes), "000000036162630000000001000000") << "plain text is a text, not a bool";
    EXPECT_EQ(xo::xoMajorOutputStreamVersion * 100 + xo::xoMinorOutputStreamVersion, 630);
}

TEST(DataStream, DoesNothingOnceItFailed) {
    MemoryDevice device("\1\2\3\4");
    xoDataStream stream(&device, kBig);
    const xoDataStream fresh = stream;
    stream.setError();
    int number = 7;
    std::string text = "old", raw = "raw";
    stream << 1 << "x"s >> number >> text;
    EXPECT_FALSE(stream.writeRawData("raw", 3));
    EXPECT_TRUE(device.bytes == "\1\2\3\4" && number == 7 && text.empty() && device.readAt == 0);
    EXPECT_EQ(stream.readRawBytes(raw.data(), 3), 3U) << "raw bytes are read all the same";
    EXPECT_TRUE(!stream.isOk() && raw == "\1\2\3");
    stream = fresh;
    EXPECT_EQ(stream.readRawBytes(nullptr, 3) + stream.readRawBytes(raw.data(), 0), 0U);
    EXPECT_TRUE(stream.writeRawData("raw", 3) && stream.writeRawData(nullptr, 0) && stream.isOk());
    EXPECT_FALSE(xoDataStream(stream).writeRawData(nullptr, 3));
    EXPECT_EQ(stream.readRawBytes(raw.data(), 3), 1U);
    EXPECT_FALSE(stream.isOk());
}

TEST(DataStream, FailsQuietlyOnAFullDeviceOrNone) {
    const std::string all = "ff0102000000026162";
    for (const int capacity : {0, 1, 2, 3, 6, 7, 8, 9}) {
        MemoryDevice device;
        device.capacity = static_cast<std::uint64_t>(capacity);
        xoDataStream stream(&device, kBig);
        stream << true << static_cast<short>(0x0102) << "ab"s << 'd' << false;
        EXPECT_FALSE(stream.isOk());
        const std::size_t whole = capacity < 1   ? 0
                                  : capacity < 3 ? 1
                                  : capacity < 7 ? 3
                                  : capacity < 9 ? 7
                                                 : 9;  // values
        EXPECT_EQ(hex(device.bytes), all.substr(0, 2 * whole));
    }
    int number = 7;
    char raw = 'r';
    for (const int use : {0, 1, 2, 3, 4}) {
        xoDataStream nowhere(nullptr, kLittle);
        if (use == 0) nowhere << 2.5;
        if (use == 1) nowhere << "text";
        if (use == 2) nowhere >> number;
        if (use == 3) EXPECT_EQ(nowhere.readRawBytes(&raw, 1), 0U);
        if (use == 4) EXPECT_FALSE(nowhere.writeRawData(&raw, 1));
        EXPECT_FALSE(nowhere.isOk());
    }
    EXPECT_EQ(number, 7);
}

void expectNothingFrom(xo::xoIoDevice& device, MemoryDevice& memory) {
    xoDataStream stream(&device, kBig), again = stream;
    std::string text = "old";
    std::vector<char> bytes{'o'};
    memory.readAt = 0;
    EXPECT_TRUE(!(stream >> text).isOk() && text.empty());
    memory.readAt = 0;
    EXPECT_TRUE(!(again >> bytes).isOk() && bytes.empty());
}

TEST(DataStream, IsNotDeceivedByALength) {
    MemoryDevice memory("\xFF\xFF\xFF\xFF\1\2\3"), large;
    xo::xoIoDeviceByteCounter counter;
    counter.beginDelegation(&memory);
    expectNothingFrom(counter, memory);
    EXPECT_LE(memory.largestRead, 4U << 20);

    std::string text((9U << 20) + 1, 'l'), copy;
    text[4U << 20] = 'm';
    EXPECT_TRUE((xoDataStream(&large, kBig) << text >> copy).isOk() && copy == text);
    EXPECT_EQ(large.largestRead, 4U << 20) << "in several reads";

    const xo::tests::ScarceMemory little(1U << 20);
    ASSERT_TRUE(little.isInstalled());
    expectNothingFrom(large, large);  // a true length, but no memory
}

}  // namespace
