#include <atomic>
#include <functional>

#include "pipe/pipeFixture.h"
#include "xoSystem/xoCsvStream.h"
#include "xoSystem/xoDataStream.h"

namespace xo::tests {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::size_t kMegabyte = 1 << 20;

TEST_F(Pipe, IsNamedByATextOfALimitedLength) {
    ASSERT_TRUE(mServer.listenUtf8("\\\\.\\PIPE\\" + mName));
    for (const std::string& prefix : {"", "\\\\.\\pipe\\", "//./Pipe/"}) {
        EXPECT_TRUE(mClient.connectUtf8(prefix + mName, kPatienceMs)) << prefix;
        EXPECT_TRUE(mServer.waitForConnection(mPeer, kPatienceMs));
    }
    takeLines();
    const std::string longest(247, 'x');
    for (const std::string& bad : std::vector<std::string>{
             "", "a\\b", "a/b", {"a\0b", 3}, "\xFF", longest + "x", "\\\\server\\pipe\\a", "\\\\.\\pipe\\"}) {
        EXPECT_TRUE(!mClient.connectUtf8(bad, 0) && mClient.getReadResult() == P::ResultInvalid) << bad;
        EXPECT_EQ(mClient.getWriteResult(), P::ResultInvalid);
        EXPECT_THAT(takeLines(), ElementsAre("0(NamedPipe)cannot connect to \"" + bad + "\": Invalid"));
        xoNamedPipeServer server;
        EXPECT_TRUE(!server.listenUtf8(bad) && server.getResult() == P::ResultInvalid);
        EXPECT_THAT(takeLines(), ElementsAre(HasSubstr("3()xoNamedPipeServer cannot listen on \"" + bad + "\": ")));
    }
    EXPECT_TRUE(!mClient.connectUtf8(longest, 0) && mClient.getReadResult() == P::ResultNotFound);
}

TEST_F(Pipe, AwaitsItsServer) {
    EXPECT_TRUE(!mClient.connectUtf8(mName, P::kNoLimit, P::ConnectIfServing));
    EXPECT_EQ(mClient.getReadResult(), P::ResultNotFound);
    const ULONGLONG start = ::GetTickCount64();
    EXPECT_TRUE(!mClient.connectUtf8(mName, 100) && mClient.getReadResult() == P::ResultNotFound);
    EXPECT_GE(::GetTickCount64() - start, 80u);
    std::thread late([&] {
        ::SleepEx(100, FALSE);
        mServer.listenUtf8(mName);
    });
    EXPECT_TRUE(mClient.connectUtf8(mName, kPatienceMs));
    late.join();

    // All instances are taken by clients that nobody accepts. The name is free once the client has left, too.
    mClient.close();
    mServer.setBacklog(1);
    ASSERT_TRUE(mServer.listenUtf8(mName) && mClient.connectUtf8(mName, kPatienceMs));
    EXPECT_TRUE(!mPeer.connectUtf8(mName, 60) && mPeer.getReadResult() == P::ResultBusy);
    std::thread acceptor([&] {
        xoNamedPipe first, second;
        EXPECT_TRUE(mServer.waitForConnection(first, kPatienceMs) && mServer.waitForConnection(second, kPatienceMs));
    });
    EXPECT_TRUE(mPeer.connectUtf8(mName, kPatienceMs));
    acceptor.join();
}

TEST_F(Pipe, MovesBytesBothWays) {
    EXPECT_TRUE(!mClient.isConnected() && mClient.atEnd() && !mClient.hasError() && mClient.close());
    EXPECT_TRUE(mClient.writeBytes("x", 1) == 0 && mClient.hasError() && !mClient.close());
    ASSERT_TRUE(connect());
    EXPECT_TRUE(mClient.isConnected() && !mClient.hasError());
    for (const std::size_t size : {1u, 4u, 65535u, 65536u, 65537u, 200000u, 3u << 20}) {
        const std::string bytes = pattern(size);
        std::thread writer([&] { EXPECT_TRUE(mPeer.writeBytes(bytes.data(), size) == size && mPeer.flush()); });
        EXPECT_TRUE(readAll(mClient, size) == bytes) << size;
        writer.join();
    }
    // What the reading thread has written goes out before it waits; small pieces arrive in order.
    std::thread echo([&] {
        for (std::string byte(1, '\0'); mPeer.readBytes(byte.data(), 1) == 1;) mPeer.writeBytes(byte.data(), 1);
    });
    std::string sent, received;
    for (const std::string& piece : {"a", "bcd", "efghijk"}) {
        sent += piece;
        EXPECT_EQ(mClient.writeBytes(piece.data(), piece.size()), piece.size());
    }
    EXPECT_TRUE(mClient.waitForData());
    for (char buffer[7]; received.size() < sent.size();) {
        const auto got = static_cast<std::size_t>(mClient.readSome(buffer, sizeof buffer));
        ASSERT_NE(got, 0u);
        received.append(buffer, got);
    }
    EXPECT_EQ(received, sent);
    EXPECT_TRUE(!mClient.atEnd() && mClient.tellp() == sent.size());
    EXPECT_TRUE(!mClient.seekg(0, P::SeekFromBegin) && !mClient.seekp(0, P::SeekFromEnd) && !mClient.hasError());
    EXPECT_THAT(takeLines(), ElementsAre("3()xoNamedPipe cannot seek", "3()xoNamedPipe cannot seek"));
    xoNamedPipe moved(std::move(mClient));
    EXPECT_TRUE(moved.isConnected() && !mClient.isConnected() && mClient.getReadResult() == P::ResultFailed);
    mClient = std::move(moved);
    EXPECT_TRUE(mClient.isConnected() && mClient.close() && mClient.close());
    echo.join();
    EXPECT_TRUE(mPeer.atEnd() && mPeer.getReadResult() == P::ResultEnd && !mPeer.hasError());
}

TEST_F(Pipe, DeliversWhatWasSentBeforeTheEnd) {
    for (const bool clientLeaves : {true, false}) {
        ASSERT_TRUE(connect());
        xoNamedPipe& leaving = clientLeaves ? mClient : mPeer;
        xoNamedPipe& staying = clientLeaves ? mPeer : mClient;
        leaving.writeBytes("last", 4);
        EXPECT_TRUE(leaving.close() && staying.waitForData() && !staying.atEnd());
        EXPECT_EQ(readAll(staying, 10), "last");
        EXPECT_TRUE(staying.getReadResult() == P::ResultEnd && staying.atEnd() && !staying.waitForData());
        EXPECT_TRUE(staying.isConnected() && !staying.hasError());
        const std::string block(kMegabyte, 'x');
        EXPECT_TRUE(staying.writeBytes(block.data(), block.size()) == 0 && staying.hasError());
        EXPECT_TRUE(staying.getWriteResult() == P::ResultEnd && !staying.close());
        ASSERT_TRUE(connect());
        leaving.close();
        EXPECT_TRUE(staying.writeBytes("x", 1) == 1 && !staying.hasError()) << "it waits in the buffer";
        EXPECT_FALSE(staying.close()) << "and is lost";
    }
}

TEST_F(Pipe, KeepsItsLimits) {
    ASSERT_TRUE(connect());
    mClient.setTimeLimits(50, 50);
    mPeer.writeBytes("ab", 2);
    mPeer.flush();
    ULONGLONG start = ::GetTickCount64();
    EXPECT_EQ(readAll(mClient, 3), "ab") << "what was there";
    EXPECT_GE(::GetTickCount64() - start, 30u);
    EXPECT_TRUE(mClient.getReadResult() == P::ResultTimeout && !mClient.hasError());
    EXPECT_TRUE(!mClient.waitForData(0) && mClient.getReadResult() == P::ResultTimeout);
    mPeer.writeBytes("c", 1);
    mPeer.flush();
    EXPECT_EQ(readAll(mClient, 1), "c") << "reading goes on";

    const std::string block(4 * kMegabyte, 'x');
    start = ::GetTickCount64();
    EXPECT_EQ(mClient.writeBytes(block.data(), block.size()), 0u);
    EXPECT_GE(::GetTickCount64() - start, 30u);
    EXPECT_TRUE(mClient.getWriteResult() == P::ResultTimeout && mClient.hasError());
    EXPECT_TRUE(mClient.writeBytes("x", 1) == 0 && !mClient.flush() && !mClient.close());
}

TEST_F(Pipe, IsCancelledAtAnyTime) {
    std::string message, block(4 * kMegabyte, 'x');
    const std::function<void()> waits[] = {
        [&] { EXPECT_TRUE(readAll(mClient, 1).empty() && mClient.getReadResult() == P::ResultCanceled); },
        [&] { EXPECT_TRUE(!mClient.waitForData() && mClient.getReadResult() == P::ResultCanceled); },
        [&] { EXPECT_TRUE(!mClient.readMessage(message) && mClient.getReadResult() == P::ResultCanceled); },
        [&] {
            EXPECT_EQ(mClient.writeBytes(block.data(), block.size()), 0u);
            EXPECT_TRUE(mClient.getWriteResult() == P::ResultCanceled && mClient.hasError());
        },
    };
    for (const auto& wait : waits) {
        ASSERT_TRUE(connect()) << "connecting clears the cancellation";
        std::thread canceler([&] {
            ::SleepEx(20, FALSE);  // most likely during the wait; before it would do as well
            mClient.cancel();
        });
        wait();
        canceler.join();
        wait();  // and each later one
    }
    std::atomic<bool> isEnded{false};
    std::thread canceler([&] {
        for (; !isEnded; ::SleepEx(1, FALSE)) mClient.cancel();  // beginning to connect clears it
    });
    EXPECT_FALSE(mClient.connectUtf8(mName + "missing"));
    isEnded = true;
    canceler.join();
    EXPECT_EQ(mClient.getReadResult(), P::ResultCanceled);
}

TEST_F(Pipe, MovesMessages) {
    ASSERT_TRUE(connect());
    mPeer.setMaxMessageBytes(200000);
    for (const std::size_t size : {0u, 1u, 65532u, 65533u, 200000u}) {
        const std::string sent = pattern(size);
        std::string received = "old";
        std::thread writer([&] { EXPECT_TRUE(mClient.writeMessage(sent)); });
        EXPECT_TRUE(mPeer.readMessage(received) && received == sent) << size;
        writer.join();
    }
    // A time-out inside a message loses nothing.
    std::string message = "old";
    mPeer.setTimeLimits(20, 20);
    for (const std::string& piece : {std::string("\x05\0", 2), std::string("\0\0", 2), std::string("ab")}) {
        mClient.writeBytes(piece.data(), piece.size());
        mClient.flush();
        EXPECT_TRUE(!mPeer.readMessage(message) && mPeer.getReadResult() == P::ResultTimeout && message == "old");
    }
    mClient.writeBytes("cde", 3);
    mClient.flush();
    mPeer.setTimeLimits(kPatienceMs, kPatienceMs);
    EXPECT_TRUE(mPeer.readMessage(message) && message == "abcde");

    EXPECT_TRUE(!mPeer.writeMessage(std::string(200001, 'x')) && mPeer.getWriteResult() == P::ResultTooLong);
    EXPECT_TRUE(!mPeer.hasError() && takeLines().empty());
    mClient.writeBytes("\x41\x0D\x03\0", 4);
    mClient.flush();
    EXPECT_TRUE(!mPeer.readMessage(message) && mPeer.getReadResult() == P::ResultTooLong && mPeer.hasError());
    EXPECT_THAT(takeLines(), ElementsAre("2()xoNamedPipe refused a message of 200001 bytes (more than 200000)"));
    EXPECT_TRUE(readAll(mPeer, 1).empty() && mPeer.getReadResult() == P::ResultTooLong && message == "abcde");
}

TEST_F(Pipe, SurvivesOtherProcesses) {
    ASSERT_TRUE(mServer.listenUtf8(mName));
    std::string message;
    {
        const Child child(L"pipePeer", arguments(L"echo"));
        ASSERT_TRUE(accept(child));
        for (const std::size_t size : {0u, 5u, 300000u}) {
            const std::string sent = pattern(size);
            EXPECT_TRUE(mPeer.writeMessage(sent) && mPeer.readMessage(message) && message == sent) << size;
        }
        EXPECT_EQ(mPeer.getPeerUser().rfind("S-1-5-", 0), 0u);
        EXPECT_NE(mPeer.getPeerUserName().find('\\'), std::string::npos);
        EXPECT_NE(mPeer.getPeerProcessId(), ::GetCurrentProcessId());
        EXPECT_TRUE(mPeer.close() && child.wait() == 0);
    }
    {
        const Child child(L"pipePeer", arguments(L"flood"));
        ASSERT_TRUE(accept(child));
        mPeer.setTimeLimits(kPatienceMs, 50);
        const std::string flood(4 * kMegabyte, 'x');  // neither reads: the limit ends it, and reading goes on
        EXPECT_TRUE(mPeer.writeBytes(flood.data(), flood.size()) == 0 && mPeer.getWriteResult() == P::ResultTimeout);
        EXPECT_EQ(readAll(mPeer, 100 * kMegabyte), std::string(100 * kMegabyte, 'f'));
        EXPECT_TRUE(!mPeer.close() && child.wait() == 0);
    }
    mPeer.setTimeLimits(kPatienceMs, kPatienceMs);
    const std::pair<const wchar_t*, P::Result> rows[] = {
        {L"die", P::ResultEnd}, {L"announce", P::ResultTooLong}, {L"half", P::ResultEnd}};
    for (const auto& [task, result] : rows) {
        const Child child(L"pipePeer", arguments(task));
        ASSERT_TRUE(accept(child));
        message = "old";
        EXPECT_TRUE(!mPeer.readMessage(message) && mPeer.getReadResult() == result && message == "old") << result;
        mPeer.close();
        child.wait();
    }
}

TEST_F(Pipe, TransfersBothWaysAtOnce) {
    ASSERT_TRUE(connect());
    const std::string block = pattern(100000);
    constexpr int kBlocks = 650;  // 64 MB
    const auto write = [&](xoNamedPipe& pipe) {
        for (int i = 0; i < kBlocks; ++i)
            if (pipe.writeBytes(block.data(), block.size()) == 0) return ADD_FAILURE() << "not written";
        EXPECT_TRUE(pipe.flush());
    };
    const auto read = [&](xoNamedPipe& pipe) {
        for (int i = 0; i < kBlocks; ++i)
            if (readAll(pipe, block.size()) != block) return ADD_FAILURE() << "block " << i;
    };
    std::thread threads[] = {std::thread(write, std::ref(mClient)), std::thread(write, std::ref(mPeer)),
                             std::thread(read, std::ref(mClient)), std::thread(read, std::ref(mPeer))};
    for (std::thread& thread : threads) thread.join();
}

TEST_F(Pipe, IsADeviceForTheStreams) {
    ASSERT_TRUE(connect());
    std::thread server([&] {
        xoDataStream stream(&mPeer, xoDataStream::EndiannessBig);
        std::string text;
        for (int number = 0; (stream >> text >> number).isOk();) stream << text + "!" << number + 1;
    });
    xoDataStream stream(&mClient, xoDataStream::EndiannessBig);
    for (int i = 0; i < 3; ++i) {
        std::string text;
        int number = 0;
        stream << "find" << i;
        EXPECT_TRUE((stream >> text >> number).isOk() && text == "find!" && number == i + 1);
    }
    EXPECT_TRUE(mClient.close());
    server.join();
    ASSERT_TRUE(connect());
    xoCsvStream(&mClient) << "a" << 1 << xoCsvStream::EndOfRow() << "b;";
    EXPECT_TRUE(mClient.close());
    EXPECT_EQ(readAll(mPeer, 100), "a,1\nb;");
}

}  // namespace xo::tests
