#include "log/logFixture.h"
#include "stream/memoryDevice.h"

namespace {

using namespace xo;
using testing::ElementsAre;
using xo::tests::MemoryDevice;
using Modifier = xoIoDeviceWriteStreamModifier;

constexpr std::size_t kThreshold = 2202009;

// A byte counter is a delegable that hands on what it reads, and tells how much that was.
struct Cipher : xoIoDeviceByteCounter {
    std::uint64_t readBytes(char* buffer, std::uint64_t size) override {
        const std::uint64_t count = xoIoDeviceByteCounter::readBytes(buffer, size);
        std::for_each(buffer, buffer + count, [](char& c) { c = static_cast<char>(c ^ 0x5A); });
        return count;
    }
    static std::string decoded(std::string bytes) {
        for (char& c : bytes) c = static_cast<char>(c ^ 0x5A);
        return bytes;
    }
};

// Asks until it has filled a request, and its output is short: so it meets the waiting bytes one by one.
struct RunLengthCoder : xoIoDeviceByteCounter {
    std::uint64_t readBytes(char* buffer, std::uint64_t size) override {
        std::uint64_t made = 0;
        while (made + 2 <= size) {
            if (at == got) at = 0, got = xoIoDeviceByteCounter::readBytes(input, sizeof input);
            if (count > 0 && (at == got || count == 127 || input[at] != byte)) {
                buffer[made++] = static_cast<char>(std::exchange(count, 0));
                buffer[made++] = byte;
            }
            if (got == 0) break;
            byte = input[at++];
            ++count;
        }
        return made;
    }
    static std::string decoded(const std::string& pairs) {
        std::string bytes;
        for (std::size_t i = 0; i + 1 < pairs.size(); i += 2) bytes.append(std::size_t(pairs[i]), pairs[i + 1]);
        return bytes;
    }

    char input[30000], byte = 0;
    std::uint64_t at = 0, got = 0;
    int count = 0;  // of byte, not yet handed out
};

struct Stubborn : xoIoDeviceByteCounter {
    bool beginDelegation(xoIoDevice*) override { return false; }
    bool endDelegation() override { return false; }
};

// Runs next to noise, the same in every test.
std::string sample(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i % 1000 < 990 ? i / 1000 : i * i / 7);
    return bytes;
}

template <class Coder>
void expectNothingLost(const std::string& bytes, std::size_t piece) {
    Coder coder;
    Modifier modifier(&coder);
    for (const int round : {1, 2}) {  // the object may be used again
        MemoryDevice device;
        ASSERT_TRUE(modifier.beginDelegation(&device));
        ASSERT_FALSE(modifier.beginDelegation(&device)) << "attached already";
        for (std::size_t at = 0; at < bytes.size(); at += piece) {
            modifier << bytes.substr(at, piece);
            ASSERT_EQ(coder.atEnd(), (std::min)(at + piece, bytes.size()) < kThreshold) << "not begun";
        }
        EXPECT_TRUE(modifier.good() && modifier.endDelegation());
        EXPECT_TRUE(Coder::decoded(device.bytes) == bytes) << "round " << round;
        EXPECT_EQ(coder.getReadBytes(), bytes.size());
    }
}

class WriteStreamModifier : public xo::tests::LogTest {};

TEST_F(WriteStreamModifier, LosesNothingOfAnyAmount) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, kThreshold - 1, kThreshold, kThreshold + 1, 3 * kThreshold + 77777}) {
        for (const std::size_t piece : {std::size_t{1000}, std::size_t{1234567}, size + 1}) {
            SCOPED_TRACE(std::to_string(size) + " by " + std::to_string(piece));
            expectNothingLost<Cipher>(sample(size), piece);
            expectNothingLost<RunLengthCoder>(sample(size), piece);
        }
    }
    EXPECT_TRUE(takeLines().empty());
}

TEST_F(WriteStreamModifier, ReportsWhatFails) {
    Stubborn stubborn;
    MemoryDevice device;
    for (xoIoDeviceDelegable* const none :
         {static_cast<xoIoDeviceDelegable*>(nullptr), static_cast<xoIoDeviceDelegable*>(&stubborn)}) {
        Modifier modifier(none);
        modifier.beginDelegation(&device);
        EXPECT_FALSE((modifier << sample(kThreshold)).good());
        EXPECT_THAT(takeLines(), ElementsAre("3()Fail to begin delegation of read modifier"));
        EXPECT_FALSE(modifier.endDelegation());
        EXPECT_THAT(takeLines(), ElementsAre("3()Fail to end delegation of read modifier"));
        EXPECT_TRUE(modifier.beginDelegation(&device) && modifier.good()) << "begins anew";
    }
    xoIoDeviceByteCounter plain;
    Modifier modifier(&plain);
    device.capacity = 0x100000;
    modifier.beginDelegation(&device);
    EXPECT_TRUE((modifier << sample(kThreshold + 10)).good());
    EXPECT_EQ(device.bytes.size(), 0x100000U) << "fewer than the threshold wait";
    char buffer[10];
    EXPECT_EQ(modifier.readBytes(buffer, 10) + modifier.readBytes(buffer, 0), 1U) << "the tail goes byte by byte";
    EXPECT_EQ(modifier.readBytes(nullptr, 10), 0U);
    EXPECT_FALSE(modifier.endDelegation()) << "the device took only the first block";
    modifier << "kept";
    EXPECT_FALSE(modifier.endDelegation()) << "no device to take it";
    device.capacity = UINT64_MAX;
    EXPECT_TRUE(modifier.beginDelegation(&device) && modifier.endDelegation() && modifier.endDelegation());
    EXPECT_EQ(device.bytes.substr(device.bytes.size() - 4), "kept");
    for (const auto& [bytes, size] : {std::pair("x", UINT64_MAX), {static_cast<const char*>(nullptr), 1}}) {
        EXPECT_TRUE(modifier.beginDelegation(&device));
        EXPECT_EQ(modifier.writeBytes(nullptr, 0) + modifier.writeBytes("x", 1), 1U);
        EXPECT_EQ(modifier.writeBytes(bytes, size), 0U);
        EXPECT_FALSE(modifier.endDelegation());
    }
}

}  // namespace
