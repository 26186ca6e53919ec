#include "xoSystem/xoIoDevice.h"

#include <fstream>
#include <sstream>

#include "log/logFixture.h"
#include "stream/testDevices.h"
#include "support/capturedOutput.h"
#include "support/temporaryFolder.h"

namespace {

using namespace xo;
using xo::tests::MemoryDevice;
using Start = xoIoDevice::SeekStart;

class IoDevice : public xo::tests::LogTest {};

// One of each, on devices that stand at 1 to read and at 2 to write.
struct Devices {
    explicit Devices(char state) {
        twin.writeAt = memory.writeAt = 2;
        memory.readAt = 1;
        in.seekg(1);
        out.seekp(2);
        memory.broken = state == 'b';
        if (state == 'b') in.setstate(std::ios::badbit);
        if (state == 'b') out.setstate(std::ios::failbit);
        if (state == 'i') return;
        counter.beginDelegation(&memory);
        signaler.beginDelegation(&memory);
        modifier.beginDelegation(&memory);
    }

    MemoryDevice memory{"abcdef"}, twin{"abcdef"};
    std::stringstream in{"abcdef"}, out{"abcdef"};
    xo::tests::Transformer plain;
    xoIoDeviceBroadcast none{{}}, both{{&twin, nullptr, &memory}};
    xoIoDeviceStdStreamProxy noStream{nullptr, nullptr}, streams{&in, &out};
    xoIoDeviceByteCounter counter;
    xoIoDeviceSignaler signaler{nullptr, 10};
    xoIoDeviceWriteStreamModifier modifier{&plain};
};

TEST_F(IoDevice, AnswersEachOperationInEachState) {
    char room[4];
    const std::pair<const char*, std::function<std::uint64_t(xoIoDevice&)>> operations[] = {
        {"readBytes", [&](xoIoDevice& device) { return device.readBytes(room, 4); }},
        {"writeBytes", [](xoIoDevice& device) { return device.writeBytes("xy", 2); }},
        {"hasError", [](xoIoDevice& device) { return device.hasError(); }},
        {"atEnd", [](xoIoDevice& device) { return device.atEnd(); }},
        {"seekg", [](xoIoDevice& device) { return device.seekg(3, Start::SeekFromBegin); }},
        {"seekp", [](xoIoDevice& device) { return device.seekp(3, Start::SeekFromBegin); }},
        {"tellg", [](xoIoDevice& device) { return device.tellg(); }},
        {"tellp", [](xoIoDevice& device) { return device.tellp(); }}};
    // The result, "!" for an error afterwards, and where the log is told something "B", "C" or "M" for the message.
    const std::map<char, std::pair<std::string, std::string>> messages = {
        {'B', {"3()xoIoDeviceBroadcast ", " is not supported"}},
        {'C', {"3()xoIoDeviceByteCounter ", " is not supported"}},
        {'M', {"3()xoIoDeviceWriteStreamModifier::", " not implemented"}}};
    const struct {
        const char* name;
        char state;  // idle, attached, or attached to what is broken
        std::function<xoIoDevice&(Devices&)> pick;
        const char* outcomes[8];
    } rows[] = {
        {"broadcast",
         'i',
         [](Devices& d) -> xoIoDevice& { return d.none; },
         {"0!B", "2", "0", "0B", "0!B", "1", "0!B", "0"}},
        {"broadcast",
         'a',
         [](Devices& d) -> xoIoDevice& { return d.both; },
         {"0!B", "2", "0", "0B", "0!B", "1", "0!B", "2"}},
        {"broadcast",
         'b',
         [](Devices& d) -> xoIoDevice& { return d.both; },
         {"0!B", "0!", "1!", "0!B", "0!B", "0!", "0!B", "2!"}},
        {"proxy", 'i', [](Devices& d) -> xoIoDevice& { return d.noStream; }, {"0", "0", "0", "0", "0", "0", "0", "0"}},
        {"proxy", 'a', [](Devices& d) -> xoIoDevice& { return d.streams; }, {"4", "2", "0", "0", "1", "1", "1", "2"}},
        {"proxy",
         'b',
         [](Devices& d) -> xoIoDevice& { return d.streams; },
         {"0!", "0!", "1!", "0!", "0!", "0!", "18446744073709551615!", "18446744073709551615!"}},
        {"counter",
         'i',
         [](Devices& d) -> xoIoDevice& { return d.counter; },
         {"0!", "2", "0", "1", "0!C", "1", "0", "0"}},
        {"counter",
         'a',
         [](Devices& d) -> xoIoDevice& { return d.counter; },
         {"4", "2", "0", "0", "0!C", "1", "0", "0"}},
        {"counter",
         'b',
         [](Devices& d) -> xoIoDevice& { return d.counter; },
         {"0!", "0!", "1!", "0!", "0!C", "0!", "0!", "0!"}},
        {"signaler",
         'i',
         [](Devices& d) -> xoIoDevice& { return d.signaler; },
         {"0!", "2", "0", "1", "0!C", "0!C", "0", "0"}},
        {"signaler",
         'a',
         [](Devices& d) -> xoIoDevice& { return d.signaler; },
         {"4", "2", "0", "0", "0!C", "0!C", "1", "2"}},
        {"signaler",
         'b',
         [](Devices& d) -> xoIoDevice& { return d.signaler; },
         {"0!", "0!", "1!", "0!", "0!C", "0!C", "1!", "2!"}},
        {"modifier",
         'i',
         [](Devices& d) -> xoIoDevice& { return d.modifier; },
         {"0", "2", "0", "0", "0M", "0M", "0M", "0M"}},
        {"modifier",
         'a',
         [](Devices& d) -> xoIoDevice& { return d.modifier; },
         {"0", "2", "0", "0", "0M", "0M", "0M", "0M"}},
        {"modifier",
         'b',
         [](Devices& d) -> xoIoDevice& { return d.modifier; },
         {"0!", "0!", "1!", "0!", "0!M", "0!M", "0!M", "0!M"}}};
    for (const bool enabled : {true, false}) {
        log().setLogTypeEnabled(xoLogCritical, enabled);
        for (const auto& row : rows) {
            for (std::size_t i = 0; i < std::size(operations); ++i) {
                Devices devices(row.state);
                xoIoDevice& device = row.pick(devices);
                std::string outcome = std::to_string(operations[i].second(device)) + (device.good() ? "" : "!");
                std::string expected = row.outcomes[i];
                std::vector<std::string> lines;
                if (const auto message = messages.find(expected.back()); message != messages.end()) {
                    expected.pop_back();
                    if (enabled) lines = {message->second.first + operations[i].first + message->second.second};
                }
                EXPECT_EQ(outcome, expected) << row.name << ' ' << row.state << ' ' << operations[i].first;
                EXPECT_EQ(takeLines(), lines) << row.name << ' ' << row.state << ' ' << operations[i].first;
            }
        }
    }
}

TEST_F(IoDevice, SaysNothingWithoutALog) {
    const xo::tests::CapturedOutput output;
    xoLog::destroyInstance();
    EXPECT_FALSE(xoIoDeviceBroadcast({}).atEnd());
    EXPECT_EQ(output.text(), "");
}

TEST_F(IoDevice, WritesTextAndSkipsBytes) {
    MemoryDevice device;
    const char* const null = nullptr;
    device << "one " << null << std::string("t\0o", 3);
    EXPECT_EQ(device.bytes, std::string("one t\0o", 7));
    EXPECT_EQ(device.skipBytes(0), 0U);
    EXPECT_EQ(device.skipBytes(4), 4U);
    EXPECT_EQ(device.skipBytes(UINT64_MAX), 3U) << "fewer than asked";
    MemoryDevice large(std::string(10000, 'x'));
    EXPECT_EQ(large.skipBytes(9000), 9000U);
    EXPECT_EQ(large.tellg(), 9000U);
    EXPECT_EQ(large.largestRead, 4096U);
}

TEST_F(IoDevice, BroadcastKeepsItsErrorAndItsOrder) {
    MemoryDevice first, full, last;
    full.room = 5;
    xoIoDeviceBroadcast broadcast({&first, &full, &last});
    EXPECT_EQ(broadcast.writeBytes("1234", 4), 4U);
    EXPECT_EQ(broadcast.writeBytes("5678", 4), 0U);
    EXPECT_EQ(first.bytes + "," + full.bytes + "," + last.bytes, "12345678,1234,1234");
    full.room = 100;
    EXPECT_EQ(broadcast.writeBytes("9", 1), 0U) << "written, but the error stays";
    EXPECT_EQ(last.bytes, "12349");

    xoIoDeviceBroadcast uneven({&first, &last});
    EXPECT_EQ(uneven.tellp(), 0U);
    EXPECT_TRUE(uneven.hasError());
    first.broken = true;
    EXPECT_FALSE(uneven.seekp(2, Start::SeekFromBegin));
    EXPECT_EQ(last.writeAt, 2U) << "moved although the first failed";
}

TEST_F(IoDevice, CounterFollowsThePositionToWriteTo) {
    MemoryDevice device(std::string(200, '-'));
    xoIoDeviceByteCounter counter;
    ASSERT_TRUE(counter.beginDelegation(&device));
    counter << std::string(100, 'x');
    const struct {
        std::int64_t offset;
        int start;
        std::uint64_t position;
    } seeks[] = {{10, 0, 10}, {5, 1, 15}, {-90, 1, 0}, {-1, 2, 99}, {-101, 2, 0}, {7, 2, 107}, {3, 9, 107}};
    for (const auto& seek : seeks) {
        EXPECT_TRUE(counter.seekp(seek.offset, static_cast<Start>(seek.start)));
        EXPECT_EQ(counter.tellp(), seek.position) << seek.offset << " from " << seek.start;
        EXPECT_EQ(device.writeAt, static_cast<std::size_t>(seek.offset)) << "passed on";
    }
    EXPECT_EQ(counter.getWrittenBytes(), 107U);
    counter.seekp(10, Start::SeekFromBegin);
    counter << "12345";
    EXPECT_EQ(counter.tellp(), 15U);
    EXPECT_EQ(counter.skipBytes(300), 200U);
    EXPECT_TRUE(counter.endDelegation());
    EXPECT_EQ(counter.getWrittenBytes(), 107U);
    EXPECT_EQ(counter.getReadBytes(), 200U);
    EXPECT_EQ(counter.skipBytes(1), 0U);
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

// Takes 8 bytes, as a disk that fills up.
struct FullBuffer final : std::streambuf {
    FullBuffer() { setp(room, room + sizeof room); }
    char room[8];
};

TEST_F(IoDevice, ProxyTellsOfEndAndFailureWithoutThrowing) {
    for (const bool throwing : {false, true}) {
        FullBuffer buffer;
        std::ostream full(&buffer);
        std::istringstream in("abc");
        if (throwing) full.exceptions(std::ios::badbit | std::ios::failbit);
        if (throwing) in.exceptions(std::ios::badbit | std::ios::failbit | std::ios::eofbit);
        xoIoDeviceStdStreamProxy device(&in, &full);
        EXPECT_EQ(device.writeBytes("12345", 5), 5U);
        EXPECT_EQ(device.skipBytes(3), 3U);
        EXPECT_FALSE(device.atEnd()) << "nobody has looked beyond";
        EXPECT_EQ(device.skipBytes(1), 0U);
        EXPECT_TRUE(device.atEnd() && device.good());
        EXPECT_EQ(device.writeBytes("12345", 5), 0U);
        EXPECT_TRUE(device.hasError());
    }
    std::ofstream vanished;
    {
        const xo::tests::TemporaryFolder folder;
        vanished.open(folder.widePath() / L"a", std::ios::binary);
        ASSERT_TRUE(vanished.is_open());
        vanished.close();
        std::filesystem::remove_all(folder.widePath());
        vanished.open(folder.widePath() / L"a", std::ios::binary);
    }
    xoIoDeviceStdStreamProxy device(nullptr, &vanished);
    device << "lost";
    EXPECT_TRUE(device.hasError());
}

}  // namespace
