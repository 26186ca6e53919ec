#include <fstream>

#include "log/logFixture.h"
#include "stream/memoryDevice.h"
#include "support/capturedOutput.h"
#include "support/temporaryFolder.h"

namespace {

using namespace xo;
using testing::ElementsAre;
using xo::tests::MemoryDevice;
using Start = xoIoDevice::SeekStart;

class IoDevice : public xo::tests::LogTest {};

// One of each, idle or on devices that stand at 1 to read and at 2 to write, sound or broken ones.
struct Devices {
    explicit Devices(const std::string& state) {
        first.writeAt = second.writeAt = 2;
        first.readAt = 1;
        in.seekg(1);
        out.seekp(2);
        if (state == "broken") in.setstate(std::ios::badbit), out.setstate(std::ios::failbit), first.broken = true;
        if (state == "idle") return;
        byName["broadcast"] = &both;
        byName["proxy"] = &streams;
        counter.beginDelegation(&first);
        signaler.beginDelegation(&first);
        modifier.beginDelegation(&first);
    }

    MemoryDevice first{"abcdef"}, second{"abcdef"};
    std::stringstream in{"abcdef"}, out{"abcdef"};
    xoIoDeviceBroadcast none{{}}, both{{&second, nullptr, &first}};
    xoIoDeviceStdStreamProxy noStream{nullptr, nullptr}, streams{&in, &out};
    xoIoDeviceByteCounter counter, coder;
    xoIoDeviceSignaler signaler{nullptr, 10};
    xoIoDeviceWriteStreamModifier modifier{&coder};
    std::map<std::string, xoIoDevice*> byName = {{"broadcast", &none},
                                                 {"proxy", &noStream},
                                                 {"counter", &counter},
                                                 {"signaler", &signaler},
                                                 {"modifier", &modifier}};
};

std::uint64_t perform(const std::string& operation, xoIoDevice& device) {
    char buffer[4] = {'x', 'y'};
    if (operation == "readBytes") return device.readBytes(buffer, 4);
    if (operation == "writeBytes") return device.writeBytes(buffer, 2);
    if (operation == "hasError") return device.hasError();
    if (operation == "atEnd") return device.atEnd();
    if (operation == "seekg") return device.seekg(3, Start::SeekFromBegin);
    if (operation == "seekp") return device.seekp(3, Start::SeekFromBegin);
    return operation == "tellg" ? device.tellg() : device.tellp();
}

// The result, "!" for an error afterwards, and "B", "C" or "M" where the log is told that this cannot be done.
constexpr const char* kOutcomes = R"(
           readBytes writeBytes hasError atEnd seekg seekp tellg tellp
broadcast idle     0!B 2  0  0B  0!B 1   0!B 0
broadcast attached 0!B 2  0  0B  0!B 1   0!B 2
broadcast broken   0!B 0! 1! 0!B 0!B 0!  0!B 2!
proxy     idle     0   0  0  0   0   0   0   0
proxy     attached 4   2  0  0   1   1   1   2
proxy     broken   0!  0! 1! 0!  0!  0!  18446744073709551615! 18446744073709551615!
counter   idle     0!  2  0  1   0!C 1   0   0
counter   attached 4   2  0  0   0!C 1   0   0
counter   broken   0!  0! 1! 0!  0!C 0!  0!  0!
signaler  idle     0!  2  0  1   0!C 0!C 0   0
signaler  attached 4   2  0  0   0!C 0!C 1   2
signaler  broken   0!  0! 1! 0!  0!C 0!C 1!  2!
modifier  idle     0   2  0  0   0M  0M  0M  0M
modifier  attached 0   2  0  0   0M  0M  0M  0M
modifier  broken   0!  0! 1! 0!  0!M 0!M 0!M 0!M)";

std::string messageFor(char mark, const std::string& operation) {
    if (mark == 'M') return "3()xoIoDeviceWriteStreamModifier::" + operation + " not implemented";
    return (mark == 'B' ? "3()xoIoDeviceBroadcast " : "3()xoIoDeviceByteCounter ") + operation + " is not supported";
}

TEST_F(IoDevice, AnswersEachOperationInEachState) {
    for (const bool enabled : {true, false}) {
        log().setLogTypeEnabled(xoLogCritical, enabled);
        std::istringstream table(kOutcomes);
        std::string operations[8], name, state, expected;
        for (std::string& operation : operations) table >> operation;
        while (table >> name >> state) {
            for (const std::string& operation : operations) {
                table >> expected;
                Devices devices(state);
                xoIoDevice& device = *devices.byName.at(name);
                std::string outcome = std::to_string(perform(operation, device));
                if (!device.good()) outcome += '!';
                std::vector<std::string> lines;
                if (std::isalpha(expected.back())) {
                    if (enabled) lines = {messageFor(expected.back(), operation)};
                    expected.pop_back();
                }
                EXPECT_EQ(outcome, expected) << name << ' ' << state << ' ' << operation;
                EXPECT_EQ(takeLines(), lines) << name << ' ' << state << ' ' << operation;
            }
        }
    }
    const xo::tests::CapturedOutput output;
    xoLog::destroyInstance();
    EXPECT_FALSE(xoIoDeviceBroadcast({}).atEnd());
    EXPECT_EQ(output.text(), "") << "without a log nothing is said";
}

TEST_F(IoDevice, WritesTextAndSkipsBytes) {
    MemoryDevice device;
    device << "one " << static_cast<const char*>(nullptr) << std::string("t\0o", 3);
    EXPECT_EQ(device.bytes, std::string("one t\0o", 7));
    EXPECT_EQ(device.skipBytes(0), 0U);
    EXPECT_EQ(device.skipBytes(4), 4U);
    EXPECT_EQ(device.skipBytes(UINT64_MAX), 3U) << "fewer than asked";
    device << std::string(10000, 'x');
    EXPECT_EQ(device.skipBytes(9000), 9000U);
    EXPECT_EQ(device.tellg(), 9007U);
    EXPECT_EQ(device.largestRead, 4096U);
}

TEST_F(IoDevice, BroadcastKeepsItsErrorAndItsOrder) {
    MemoryDevice first, full, last;
    full.capacity = 5;
    xoIoDeviceBroadcast broadcast({&first, &full, &last});
    for (const char* const text : {"1234", "5678"}) broadcast << text;
    EXPECT_EQ(first.bytes + "," + full.bytes + "," + last.bytes, "12345678,1234,1234");
    full.capacity = 100;
    EXPECT_EQ(broadcast.writeBytes("9", 1), 0U) << "the error stays";
    EXPECT_EQ(last.bytes, "12349") << "yet the bytes are written";

    xoIoDeviceBroadcast uneven({&first, &last});
    EXPECT_EQ(uneven.tellp(), 0U);
    EXPECT_TRUE(uneven.hasError());
    xoIoDeviceByteCounter counter;
    counter.skipBytes(1);  // an error, yet it takes bytes
    EXPECT_EQ(xoIoDeviceBroadcast({&counter, &last}).writeBytes("lost", 4) + last.bytes.size(), 5U);
    first.broken = true;
    EXPECT_FALSE(uneven.seekp(2, Start::SeekFromBegin));
    EXPECT_EQ(last.writeAt, 2U) << "moved although the first failed";
}

TEST_F(IoDevice, CounterFollowsThePositionToWriteTo) {
    MemoryDevice device(std::string(200, '-'));
    xoIoDeviceByteCounter counter;
    counter.beginDelegation(&device);
    counter << std::string(100, 'x');
    const int seeks[][3] = {{10, 0, 10}, {5, 1, 15}, {-90, 1, 0}, {-1, 2, 99}, {-101, 2, 0}, {7, 2, 107}, {3, 9, 107}};
    for (const auto& [offset, start, position] : seeks) {
        EXPECT_TRUE(counter.seekp(offset, static_cast<Start>(start)));
        EXPECT_EQ(counter.tellp(), static_cast<std::uint64_t>(position)) << offset << " from " << start;
        EXPECT_EQ(device.writeAt, static_cast<std::size_t>(offset)) << "passed on";
    }
    counter.seekp(10, Start::SeekFromBegin);
    counter << "12345";
    EXPECT_EQ(counter.tellp(), 15U);
    EXPECT_EQ(counter.skipBytes(300), 200U);
    EXPECT_TRUE(counter.endDelegation());
    EXPECT_EQ(counter.getWrittenBytes(), 107U);
    EXPECT_EQ(counter.getReadBytes(), 200U);
    counter.skipBytes(1);
    EXPECT_FALSE(counter.endDelegation()) << "a read without a device";
    EXPECT_TRUE(counter.beginDelegation(&device) && counter.good());
    EXPECT_EQ(counter.getReadBytes() + counter.getWrittenBytes() + counter.tellp(), 0U);
}

TEST_F(IoDevice, SignalerCallsBeforeTheBytesThatReachTheThreshold) {
    const std::string mark = "[a mark longer than the threshold]";
    MemoryDevice device;
    xoIoDeviceSignaler signaler(nullptr, 10);
    xoIoDeviceSignaler::Signal signal = [&](xoIoDevice* attached) {
        EXPECT_EQ(attached, &device);
        signaler << mark;
    };
    signaler.setSignal(&signal);
    signaler.beginDelegation(&device);
    for (const char* const text : {"1111", "2222", "3333", "4444"}) signaler << text;
    signaler.beginDelegation(&device);  // does not restart the count
    for (const char* const text : {"5555", "6", "7"}) signaler << text;
    EXPECT_EQ(device.bytes, "11112222" + mark + "3333444455556" + mark + "7");
    signal = nullptr;
    EXPECT_THROW(signaler << "0123456789", std::bad_function_call);
    EXPECT_THROW(signaler << "0123456789", std::bad_function_call) << "the signal was lost";
    EXPECT_TRUE(signaler.endDelegation());
}

// Takes 24 bytes, as a disk that fills up.
struct FullBuffer final : std::streambuf {
    FullBuffer() { setp(buffer, buffer + sizeof buffer); }
    char buffer[24];
};

TEST_F(IoDevice, ProxyTellsOfEndAndFailureWithoutThrowing) {
    for (const auto& [size, throwing] : {std::pair(5U, false), {20U, false}, {5U, true}, {20U, true}}) {
        FullBuffer buffer;
        std::ostream full(&buffer);
        std::istringstream in(std::string(24, 'x'));
        if (throwing) full.exceptions(std::ios::badbit | std::ios::failbit);
        if (throwing) in.exceptions(std::ios::badbit | std::ios::failbit | std::ios::eofbit);
        xoIoDeviceStdStreamProxy device(&in, &full);
        char bytes[24];
        EXPECT_EQ(device.readBytes(nullptr, size) + device.writeBytes(nullptr, size), 0U);
        for (unsigned left = 24; left != 0; left -= (std::min)(left, size)) {
            EXPECT_FALSE(device.atEnd()) << "nobody has looked beyond";
            EXPECT_EQ(device.readBytes(bytes, size), (std::min)(left, size));
            EXPECT_EQ(device.good() ? device.writeBytes(bytes, size) : 0, left < size ? 0 : size);
        }
        EXPECT_TRUE(device.hasError() && in.eof() && in.fail());
        in.exceptions(std::ios::goodbit);
        in.clear(std::ios::failbit);
        full.exceptions(std::ios::goodbit);
        full.clear();
        EXPECT_TRUE(device.readBytes(bytes, 0) == 0 && !device.atEnd()) << "nothing was asked for";
        EXPECT_EQ(device.readBytes(bytes, size), 0U);
        EXPECT_TRUE(device.atEnd() && device.good());
    }
    const auto path = xo::tests::TemporaryFolder().widePath() / L"a";  // the folder is gone already
    std::ofstream vanished(path, std::ios::binary);
    xoIoDeviceStdStreamProxy device(nullptr, &vanished);
    EXPECT_FALSE((device << "lost").good());
}

// A buffer without areas, as for a socket: it moves what one call brings as one message, and counts flushes.
struct MessageBuffer final : std::streambuf {
    std::streamsize xsputn(const char* bytes, std::streamsize size) override {
        messages.emplace_back(bytes, static_cast<std::size_t>(size));
        return size;
    }
    std::streamsize xsgetn(char* bytes, std::streamsize size) override {
        messages.emplace_back("read " + std::to_string(size));
        return std::fill_n(bytes, size, 'x') - bytes;
    }
    int sync() override { return messages.emplace_back("flush"), 0; }

    std::vector<std::string> messages;
};

TEST_F(IoDevice, ProxyMovesAPieceThatTheBufferCannotHoldInOneCall) {
    MessageBuffer buffer;
    std::iostream stream(&buffer);
    xoIoDeviceStdStreamProxy device(&stream, &stream);
    char bytes[20] = {};
    for (const std::size_t size : {1U, 8U, 16U, 17U}) {
        EXPECT_EQ(device.writeBytes("01234567890123456789", size), size);
        EXPECT_EQ(device.readBytes(bytes, size), size);
        EXPECT_THAT(std::exchange(buffer.messages, {}),
                    ElementsAre(std::string("01234567890123456789", size), "read " + std::to_string(size)));
    }
    EXPECT_EQ(std::string(bytes), std::string(17, 'x'));

    std::stringstream text(std::string(100, 'x'));  // in its buffer, yet a tied stream is to be flushed first
    xoIoDeviceStdStreamProxy buffered(&text, &text);
    text.tie(&stream);
    for (const bool isRead : {false, true}) {
        EXPECT_EQ(isRead ? buffered.readBytes(bytes, 2) : buffered.writeBytes("ab", 2), 2U);
        EXPECT_THAT(std::exchange(buffer.messages, {}), ElementsAre("flush")) << isRead;
    }
    struct : std::stringbuf {
        int sync() override { return ++count, 0; }
        int count = 0;
    } counting;
    std::ostream unbuffered(&counting);
    unbuffered << "some bytes" << std::unitbuf;
    xoIoDeviceStdStreamProxy(nullptr, &unbuffered) << "a";
    EXPECT_EQ(counting.count, 1);
}

}  // namespace
