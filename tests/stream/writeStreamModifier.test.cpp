#include "log/logFixture.h"
#include "stream/testDevices.h"

namespace {

using namespace xo;
using testing::ElementsAre;
using xo::tests::MemoryDevice;
using xo::tests::Transformer;

constexpr std::size_t kThreshold = 2202009;
constexpr const char* kBeginFailed = "3()Fail to begin delegation of read modifier";
constexpr const char* kEndFailed = "3()Fail to end delegation of read modifier";

// Answers each request with what it gets for it.
struct Cipher final : Transformer {
    std::uint64_t readBytes(char* buffer, std::uint64_t size) override {
        const std::uint64_t count = source->readBytes(buffer, size);
        std::for_each(buffer, buffer + count, [](char& c) { c = static_cast<char>(c ^ 0x5A); });
        return count;
    }
    static std::string decoded(std::string bytes) {
        for (char& c : bytes) c = static_cast<char>(c ^ 0x5A);
        return bytes;
    }
};

// Goes on asking until it has filled a request, since its output is short: so it meets the bytes one by one.
struct RunLengthCoder final : Transformer {
    std::uint64_t readBytes(char* buffer, std::uint64_t size) override {
        std::uint64_t made = 0;
        while (made + 2 <= size) {
            if (mAt == mGot) mAt = 0, mGot = source->readBytes(mInput, sizeof mInput);
            const bool continues = mAt < mGot && mCount > 0 && mCount < 127 && mInput[mAt] == mByte;
            if (!continues && mCount > 0) {
                buffer[made++] = static_cast<char>(std::exchange(mCount, 0));
                buffer[made++] = mByte;
            }
            if (mGot == 0) break;
            mByte = mInput[mAt++];
            ++mCount;
        }
        return made;
    }
    static std::string decoded(const std::string& pairs) {
        std::string bytes;
        for (std::size_t i = 0; i + 1 < pairs.size(); i += 2) bytes.append(std::size_t(pairs[i]), pairs[i + 1]);
        return bytes;
    }

private:
    char mInput[30000];
    std::uint64_t mAt = 0, mGot = 0;
    int mCount = 0;  // of mByte, not yet handed out
    char mByte = 0;
};

class WriteStreamModifier : public xo::tests::LogTest {
protected:
    // Runs next to noise, the same in every test.
    static std::string sample(std::size_t size) {
        std::string bytes(size, '\0');
        for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i % 1000 < 990 ? i / 1000 : i * i / 7);
        return bytes;
    }

    template <class Coder>
    void sendThrough(std::size_t size, std::size_t piece) {
        SCOPED_TRACE(std::to_string(size) + " by " + std::to_string(piece));
        const std::string bytes = sample(size);
        MemoryDevice device;
        Coder coder;
        xoIoDeviceWriteStreamModifier modifier(&coder);
        for (const int round : {1, 2}) {  // the object may be used again
            device.bytes.clear();
            device.writeAt = 0;
            coder.source = nullptr;
            ASSERT_TRUE(modifier.beginDelegation(&device));
            ASSERT_FALSE(modifier.beginDelegation(&device)) << "attached already";
            for (std::size_t at = 0; at < size; at += piece) {
                const std::size_t count = (std::min)(piece, size - at);
                ASSERT_EQ(modifier.writeBytes(bytes.data() + at, count), count);
                ASSERT_EQ(coder.source != nullptr, at + count >= kThreshold) << "begun by " << at + count;
            }
            if (size < kThreshold) EXPECT_EQ(device.bytes, "");
            EXPECT_TRUE(modifier.endDelegation());
            EXPECT_TRUE(Coder::decoded(device.bytes) == bytes) << "round " << round;
        }
        EXPECT_TRUE(takeLines().empty());
    }
};

TEST_F(WriteStreamModifier, LosesNothingOfAnyAmount) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, kThreshold - 1, kThreshold, kThreshold + 1,
                                   3 * kThreshold, 3 * kThreshold + 1, 4 * kThreshold + 77777}) {
        for (const std::size_t piece : {std::size_t{1000}, std::size_t{1234567}, size + 1}) {
            sendThrough<Cipher>(size, piece);
            sendThrough<RunLengthCoder>(size, piece);
        }
    }
}

TEST_F(WriteStreamModifier, HandsOutTheTailByteByByte) {
    MemoryDevice device;
    Transformer plain;
    xoIoDeviceWriteStreamModifier modifier(&plain);
    modifier.beginDelegation(&device);
    modifier << sample(kThreshold + 10);
    EXPECT_EQ(device.bytes.size(), 0x100000U) << "one block, then fewer than the threshold wait";
    std::string room(kThreshold, '\0');
    EXPECT_EQ(modifier.readBytes(room.data(), room.size()), 1U);
    EXPECT_EQ(modifier.readBytes(room.data(), 0), 0U);
    modifier << sample(0x100000 + 1);
    EXPECT_EQ(device.bytes.size(), 0x200000U) << "again as many as the threshold waited";
    modifier.endDelegation();
    EXPECT_EQ(device.bytes.size(), kThreshold + 10 + 0x100000);
}

TEST_F(WriteStreamModifier, ReportsWhatFails) {
    Transformer plain, stubborn;
    stubborn.refuses = true;
    for (xoIoDeviceDelegable* const none :
         {static_cast<xoIoDeviceDelegable*>(nullptr), static_cast<xoIoDeviceDelegable*>(&stubborn)}) {
        MemoryDevice device;
        xoIoDeviceWriteStreamModifier modifier(none);
        modifier.beginDelegation(&device);
        EXPECT_FALSE((modifier << sample(kThreshold)).good());
        EXPECT_THAT(takeLines(), ElementsAre(kBeginFailed));
        EXPECT_FALSE(modifier.endDelegation());
        EXPECT_THAT(takeLines(), ElementsAre(kEndFailed));
        EXPECT_TRUE(modifier.beginDelegation(&device) && modifier.good()) << "begins anew";
    }
    MemoryDevice full;
    full.room = 0x100000;
    xoIoDeviceWriteStreamModifier modifier(&plain);
    modifier.beginDelegation(&full);
    EXPECT_TRUE((modifier << sample(kThreshold)).good());
    EXPECT_FALSE(modifier.endDelegation()) << "the device took only the first block";
    modifier.beginDelegation(&full);
    modifier.clearDelegation();
    modifier << "kept";
    MemoryDevice next;
    EXPECT_TRUE(modifier.beginDelegation(&next) && modifier.endDelegation());
    EXPECT_EQ(next.bytes.substr(next.bytes.size() - 4), "kept");
}

}  // namespace
