#include "xoSystem/xoDataStream.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "stream/testDevices.h"
#include "support/importHook.h"
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
std::string bitsOf(const T& value) {
    if constexpr (std::is_arithmetic_v<T>)
        return std::string(reinterpret_cast<const char*>(&value), sizeof value);
    else
        return std::string(value.begin(), value.end());
}

// Writes the value in both orders and reads it back, also from devices that end too early.
template <class T>
void expectLayout(T value, const char* big, const char* little) {
    for (const auto order : {kBig, kLittle, static_cast<xoDataStream::Endianness>(7)}) {
        MemoryDevice device;
        xoDataStream stream(&device, order);
        EXPECT_TRUE((stream << value).isOk());
        EXPECT_EQ(hex(device.bytes), order == kBig ? big : little);
        T copy{};
        EXPECT_TRUE((stream >> copy).isOk());
        EXPECT_EQ(hex(bitsOf(copy)), hex(bitsOf(value)));
        for (std::size_t size = 0; size < device.bytes.size(); ++size) {
            MemoryDevice cut(device.bytes.substr(0, size));
            T target{};
            EXPECT_FALSE((xoDataStream(&cut, order) >> target).isOk());
            EXPECT_EQ(bitsOf(target), bitsOf(T{})) << "of " << size << " bytes";
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

    float quiet = 0;  // with payloads
    double signaling = 0;
    std::memcpy(&quiet, "\x34\x12\xC0\x7F", 4);
    std::memcpy(&signaling, "\x01\x02\x03\x04\x05\x06\xF0\xFF", 8);
    expectLayout(quiet, "7fc01234", "3412c07f");
    expectLayout(signaling, "fff0060504030201", "010203040506f0ff");

    MemoryDevice device;
    xoDataStream(&device, kBig) << "abc" << static_cast<const char*>(nullptr);
    EXPECT_EQ(hex(device.bytes), "0000000361626300000000") << "plain text is a text, not a bool";
    device.bytes = "\x02";
    bool truth = false;
    EXPECT_TRUE((device.readAt = 0, xoDataStream(&device, kBig) >> truth).isOk() && truth);
    EXPECT_EQ(int{xo::xoMajorOutputStreamVersion} * 100 + xo::xoMinorOutputStreamVersion, 630);
}

TEST(DataStream, DoesNothingOnceItFailed) {
    MemoryDevice device("\1\2\3\4");
    xoDataStream stream(&device, kBig);
    const xoDataStream fresh = stream;
    stream.setError();
    int number = 7;
    std::string text = "old";
    std::vector<char> bytes{'o'};
    stream << 1 << "x"s >> number >> text >> bytes;
    EXPECT_FALSE(stream.writeRawData("raw", 3));
    EXPECT_EQ(device.bytes, "\1\2\3\4");
    EXPECT_TRUE(number == 7 && text.empty() && bytes.empty() && device.readAt == 0);
    char raw[3] = {};
    EXPECT_EQ(stream.readRawBytes(raw, 3), 3U) << "raw bytes can still be had";
    EXPECT_TRUE(!stream.isOk() && raw[2] == 3);
    stream = fresh;
    EXPECT_EQ(stream.readRawBytes(nullptr, 3) + stream.readRawBytes(raw, 0), 0U);
    EXPECT_TRUE(stream.writeRawData("raw", 3) && stream.isOk());
    EXPECT_EQ(stream.readRawBytes(raw, 3), 1U);
    EXPECT_FALSE(stream.isOk());

    for (const auto& use : std::initializer_list<void (*)(xoDataStream&)>{
             [](xoDataStream& s) { s << 'x'; }, [](xoDataStream& s) { s << 2.5; }, [](xoDataStream& s) { s << "x"s; },
             [](xoDataStream& s) { EXPECT_FALSE(s.writeRawData("x", 1)); },
             [](xoDataStream& s) {
                 char c = 'c';
                 s >> c;
                 EXPECT_EQ(c, 'c');
                 EXPECT_EQ(s.readRawBytes(&c, 1), 0U);
             },
             [](xoDataStream& s) { s.readRawBytes(std::string(1, 'x').data(), 1); }}) {
        xoDataStream nowhere(nullptr, kLittle);
        use(nowhere);
        EXPECT_FALSE(nowhere.isOk());
    }
}

TEST(DataStream, FailsQuietlyWhenTheDeviceIsFull) {
    const struct {
        std::uint64_t room;
        const char* bytes;
    } rows[] = {{0, ""}, {1, "ff"}, {3, "ff0102"}, {6, "ff0102"}, {7, "ff010200000003"}, {10, "ff010200000003616263"}};
    for (const auto& row : rows) {
        MemoryDevice device;
        device.room = row.room;
        xoDataStream stream(&device, kBig);
        stream << true << static_cast<short>(0x0102) << "abc"s << 'd';
        EXPECT_FALSE(stream.isOk());
        EXPECT_EQ(hex(device.bytes), row.bytes);
    }
}

template <class Target>
void expectNothingFrom(xo::xoIoDevice& device) {
    xoDataStream stream(&device, kBig);
    Target target(3, 'x');
    stream >> target;
    EXPECT_TRUE(target.empty() && !stream.isOk());
}

TEST(DataStream, IsNotDeceivedByALength) {
    const std::string hostile = "\xFF\xFF\xFF\xFF\1\2\3";
    MemoryDevice memory(hostile);
    expectNothingFrom<std::string>(memory);
    EXPECT_LE(memory.largestRead, 4U << 20);
    memory.readAt = 0;
    expectNothingFrom<std::vector<char>>(memory);
    std::istringstream in(hostile);
    xo::xoIoDeviceStdStreamProxy proxy(&in, nullptr);
    xo::xoIoDeviceByteCounter counter;
    counter.beginDelegation(&proxy);
    expectNothingFrom<std::string>(counter);

    MemoryDevice device;
    xoDataStream stream(&device, kLittle);
    std::string large((9U << 20) + 1, 'l'), copy;
    large[4U << 20] = 'm';
    EXPECT_TRUE((stream << large >> copy).isOk() && copy == large) << "longer than one piece";

    static void* (*malloc)(std::size_t);
    const xo::tests::ImportHook hook(
        "libstdc++-6.dll", "malloc", +[](std::size_t size) { return size > 1U << 20 ? nullptr : malloc(size); });
    ASSERT_TRUE(hook.isInstalled());
    malloc = hook.original<void*(std::size_t)>();
    device.readAt = 0;
    expectNothingFrom<std::string>(device);  // a true length, but no memory
    device.readAt = 0;
    expectNothingFrom<std::vector<char>>(device);
}

}  // namespace
