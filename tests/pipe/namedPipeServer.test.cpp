#include <atomic>

#include "pipe/pipeFixture.h"
#include "support/allocationCount.h"
#include "support/importHook.h"
#include "support/openHandles.h"

// After <windows.h>, which it needs.
#include <sddl.h>

namespace xo::tests {

using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(Pipe, IsOfOneServer) {
    ASSERT_TRUE(mServer.listenUtf8(mName) && mServer.isListening());
    xoNamedPipeServer second;
    EXPECT_TRUE(!second.listenUtf8(mName) && second.getResult() == P::ResultRefused && !second.isListening());
    EXPECT_THAT(takeLines(), ElementsAre(HasSubstr("3()xoNamedPipeServer cannot listen on \"" + mName + "\": ")));
    EXPECT_TRUE(mServer.listenUtf8(mName)) << "the same server may begin again";
    mServer.close();
    EXPECT_TRUE(second.listenUtf8(mName) && !mServer.isListening());
    EXPECT_TRUE(!mServer.waitForConnection(mPeer, 0) && mServer.getResult() == P::ResultFailed);
    second.setSecurityDescriptor("nonsense");
    EXPECT_TRUE(!second.listenUtf8(mName) && second.getResult() == P::ResultInvalid);
    const Child child(L"pipePeer", arguments(L"serve"));
    ASSERT_TRUE(mClient.connectUtf8(mName, kPatienceMs));
    EXPECT_FALSE(mServer.listenUtf8(mName)) << "nor beside another process";
    std::string message;
    EXPECT_TRUE(mClient.readMessage(message) && message == "served");
    EXPECT_EQ(mClient.getPeerUser().rfind("S-1-5-", 0), 0u);
    EXPECT_NE(mClient.getPeerProcessId(), ::GetCurrentProcessId());
    child.kill();
    child.wait();
    EXPECT_TRUE(!mClient.readMessage(message) && mClient.getReadResult() == P::ResultEnd);
}

TEST_F(Pipe, ServesItsClientsInTheirOrder) {
    mServer.setBacklog(4);
    ASSERT_TRUE(mServer.listenUtf8(mName));
    xoNamedPipe clients[4];
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(clients[i].connectUtf8(mName, kPatienceMs));
        clients[i].writeMessage(std::to_string(i));
    }
    clients[1].close();  // its message stays
    clients[2] = xoNamedPipe();
    std::string message;
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(mServer.waitForConnection(mPeer, kPatienceMs));
        EXPECT_TRUE(mPeer.readMessage(message) && message == std::to_string(i)) << message;
    }
    mClient.connectUtf8(mName, kPatienceMs);
    mClient.close();  // came and left
    EXPECT_TRUE(!mServer.waitForConnection(mPeer, 50) && mServer.getResult() == P::ResultTimeout);
    EXPECT_FALSE(mPeer.isConnected()) << "the connection before is closed";

    std::atomic<int> served{0};
    std::vector<std::thread> crowd;
    for (int i = 0; i < 30; ++i)
        crowd.emplace_back([&] {
            xoNamedPipe client;
            std::string answer;
            client.setTimeLimits(kPatienceMs, kPatienceMs);
            served += client.connectUtf8(mName, kPatienceMs) && client.writeMessage("x") && client.readMessage(answer);
        });
    for (int i = 0; i < 30 && mServer.waitForConnection(mPeer, kPatienceMs); ++i)
        EXPECT_TRUE(mPeer.readMessage(message) && mPeer.writeMessage(message));
    mPeer.close();
    for (std::thread& client : crowd) client.join();
    EXPECT_EQ(served, 30);
}

TEST_F(Pipe, IsClosedByAnyThread) {
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(mServer.listenUtf8(mName));
        std::thread closer([&] { mServer.close(); });
        const bool isConnected = mServer.waitForConnection(mPeer);
        const P::Result result = mServer.getResult();
        EXPECT_TRUE(!isConnected && (result == P::ResultCanceled || result == P::ResultFailed)) << result;
        closer.join();
    }
    ASSERT_TRUE(connect());
    mServer.close();
    EXPECT_TRUE(mClient.writeMessage("on") && mPeer.isConnected()) << "connections outlive their server";
    std::string message;
    EXPECT_TRUE(mPeer.readMessage(message) && message == "on");
}

TEST_F(Pipe, OutlivesTheThreadThatListened) {
    std::thread([&] { ASSERT_TRUE(mServer.listenUtf8(mName)); }).join();
    std::thread client([&] { EXPECT_TRUE(mClient.connectUtf8(mName, kPatienceMs)); });
    EXPECT_TRUE(mServer.waitForConnection(mPeer, kPatienceMs));
    client.join();
}

std::atomic<int> instancesLeft{0};
HANDLE WINAPI limitInstances(const wchar_t* name, DWORD mode, DWORD kind, DWORD most, DWORD out, DWORD in, DWORD limit,
                             SECURITY_ATTRIBUTES* security) {
    if (instancesLeft-- > 0)
        return ImportHook::behind(&limitInstances)(name, mode, kind, most, out, in, limit, security);
    return ::SetLastError(ERROR_NO_SYSTEM_RESOURCES), INVALID_HANDLE_VALUE;
}

TEST_F(Pipe, GoesOnWithFewerInstances) {
    const ImportHook hook("xoSystem.dll", "CreateNamedPipeW", &limitInstances);
    instancesLeft = 1;
    mServer.setBacklog(2);
    EXPECT_TRUE(!mServer.listenUtf8(mName) && mServer.getResult() == P::ResultFailed);
    instancesLeft = 2;
    takeLines();
    ASSERT_TRUE(connect());
    EXPECT_THAT(takeLines(), ElementsAre("2()xoNamedPipeServer has 1 of 2 instances"));
    ASSERT_TRUE(connect());
    EXPECT_TRUE(!mServer.waitForConnection(mPeer, 0) && mServer.getResult() == P::ResultFailed);
    EXPECT_TRUE(takeLines().empty()) << "one line until there are enough again";
    instancesLeft = 2;
    EXPECT_TRUE(!mServer.waitForConnection(mPeer, 0) && mServer.getResult() == P::ResultTimeout);
    EXPECT_TRUE(connect()) << "the last but one instance";
    EXPECT_THAT(takeLines(), ElementsAre("2()xoNamedPipeServer has 1 of 2 instances"));

    // A handler of the log may close the server that reports.
    mServer.close();
    mClient.close();
    mPeer.close();
    instancesLeft = 2;
    ASSERT_TRUE(mServer.listenUtf8(mName) && mClient.connectUtf8(mName, kPatienceMs));
    mClient.close();
    const auto close = [](const std::string&, xoLogType, const std::string&, void* server) {
        static_cast<xoNamedPipeServer*>(server)->close();
    };
    log().installCustomHandler(close, &mServer);
    EXPECT_TRUE(!mServer.waitForConnection(mPeer, kPatienceMs) && mServer.getResult() == P::ResultCanceled);
}

TEST_F(Pipe, TakesLackOfMemoryForAResult) {
    xoNamedPipe client;
    ASSERT_TRUE(mServer.listenUtf8(mName) && client.connectUtf8(mName, kPatienceMs));
    xoNamedPipeServer other;
    const AllocationCount memory;
    ASSERT_TRUE(memory.isCounting());
    const std::string otherName = mName + "-other-name-that-is-long-enough-for-memory";
    AllocationCount::refuseAll(true);
    const bool isConnected = mServer.waitForConnection(mPeer, kPatienceMs);
    const bool isListening = other.listenUtf8(otherName);
    const bool finds = mClient.connectUtf8(otherName, 0);
    AllocationCount::refuseAll(false);
    EXPECT_TRUE(isConnected && mServer.getResult() == P::ResultOk) << "the client that has come is served";
    EXPECT_TRUE(client.writeMessage("x") && mPeer.waitForData(kPatienceMs));
    EXPECT_TRUE(!isListening && !other.isListening() && other.getResult() == P::ResultFailed);
    EXPECT_TRUE(!finds && mClient.getReadResult() == P::ResultFailed);
    EXPECT_TRUE(!mClient.connectUtf8(otherName, 0) && mClient.getReadResult() == P::ResultNotFound) << "none is left";

    // A pipe without its events cannot be connected.
    client.close();
    ASSERT_TRUE(client.connectUtf8(mName, kPatienceMs));
    const auto refuse = +[](SECURITY_ATTRIBUTES*, BOOL, BOOL, const wchar_t*) -> HANDLE { return nullptr; };
    const ImportHook hook("xoSystem.dll", "CreateEventW", refuse);
    xoNamedPipe eventless;
    EXPECT_TRUE(!mServer.waitForConnection(eventless, kPatienceMs) && mServer.getResult() == P::ResultFailed);
}

// A close() that comes while listenUtf8() begins.
xoNamedPipeServer* closedMeanwhile = nullptr;
std::thread lateCloser;
std::atomic<DWORD> lateCloserId{0};
HANDLE hasRequested = nullptr, mayClose = nullptr;

BOOL WINAPI closeBeforeReset(HANDLE event) {
    if (xoNamedPipeServer* const server = std::exchange(closedMeanwhile, nullptr)) {
        lateCloser = std::thread([server] {
            lateCloserId = ::GetCurrentThreadId();
            server->close();
        });
        ::WaitForSingleObject(hasRequested, INFINITE);
    }
    return ImportHook::behind(&closeBeforeReset)(event);
}
void WINAPI lockWhenAllowed(SRWLOCK* lock) {
    if (::GetCurrentThreadId() == lateCloserId) ::SignalObjectAndWait(hasRequested, mayClose, INFINITE, FALSE);
    ImportHook::behind (&lockWhenAllowed)(lock);
}

TEST_F(Pipe, IsClosedWhileItBeginsToListen) {
    const platform::KernelHandle requested(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const platform::KernelHandle allowed(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    hasRequested = requested.get();
    mayClose = allowed.get();
    const ImportHook lockHook("xoSystem.dll", "AcquireSRWLockExclusive", &lockWhenAllowed);
    const ImportHook resetHook("xoSystem.dll", "ResetEvent", &closeBeforeReset);
    ASSERT_TRUE(lockHook.isInstalled() && resetHook.isInstalled());
    closedMeanwhile = &mServer;
    ASSERT_TRUE(mServer.listenUtf8(mName));
    EXPECT_TRUE(!mServer.waitForConnection(mPeer, kPatienceMs) && mServer.getResult() == P::ResultCanceled);
    ::SetEvent(mayClose);
    lateCloser.join();
    lateCloserId = 0;
    EXPECT_FALSE(mServer.isListening());
    EXPECT_TRUE(connect()) << "the next one listens";
}

DWORD sizeOfBuffers = 0;
std::wstring descriptorOfInstances;
HANDLE WINAPI noteInstance(const wchar_t* name, DWORD mode, DWORD kind, DWORD most, DWORD out, DWORD in, DWORD limit,
                           SECURITY_ATTRIBUTES* security) {
    sizeOfBuffers = out == in ? in : 0;
    platform::LocalMemory<wchar_t> text;
    ::ConvertSecurityDescriptorToStringSecurityDescriptorW(security->lpSecurityDescriptor, SDDL_REVISION_1,
                                                           DACL_SECURITY_INFORMATION, text.put(), nullptr);
    descriptorOfInstances = text.get() ? text.get() : L"";
    return ImportHook::behind(&noteInstance)(name, mode, kind, most, out, in, limit, security);
}

TEST_F(Pipe, IsMadeAsItsServerWasSetUp) {
    ASSERT_TRUE(connect());
    const std::string user = mPeer.getPeerUser();
    const ImportHook hook("xoSystem.dll", "CreateNamedPipeW", &noteInstance);
    const struct {
        xoNamedPipeServer::Access access;
        std::string descriptor;
        std::uint32_t bytes;
        std::string usedDescriptor;
        DWORD usedBytes;
    } rows[] = {{xoNamedPipeServer::AccessSameUser, "", 1, "D:P(A;;GA;;;" + user + ")", 4096},
                {xoNamedPipeServer::AccessLocalUsers, "", 5000,
                 "D:P(D;;GA;;;NU)(A;;GA;;;" + user + ")(A;;0x12019b;;;IU)", 5000},
                {xoNamedPipeServer::AccessLocalUsers, "D:P(A;;GA;;;BA)", 0xFFFFFFFF, "D:P(A;;GA;;;BA)", 1 << 20}};
    for (const auto& row : rows) {
        mServer.setAccess(row.access);
        mServer.setSecurityDescriptor(row.descriptor);
        mServer.setBufferBytes(row.bytes);
        mServer.close();
        mClient.close();
        mPeer.close();
        ASSERT_TRUE(connect()) << row.usedDescriptor;
        EXPECT_EQ(sizeOfBuffers, row.usedBytes);
        EXPECT_EQ(std::filesystem::path(descriptorOfInstances).u8string(), row.usedDescriptor);
    }
}

// What Windows says of the client, and whether the thread took on its identity.
DWORD ownTokenError = 0, clientTokenError = 0, impersonationError = 0;
int impersonations = 0;
bool isElevated = false;

BOOL failWith(DWORD error) { return ::SetLastError(error), FALSE; }
BOOL WINAPI openThreadToken(HANDLE thread, DWORD access, BOOL asSelf, HANDLE* token) {
    if (access == TOKEN_IMPERSONATE) return failWith(ownTokenError);
    if (clientTokenError != ERROR_SUCCESS) return failWith(clientTokenError);
    return ImportHook::behind(&openThreadToken)(thread, access, asSelf, token);
}
BOOL WINAPI impersonate(HANDLE pipe) {
    ++impersonations;
    if (impersonationError != ERROR_SUCCESS) return failWith(impersonationError);
    return ImportHook::behind(&impersonate)(pipe);
}
BOOL WINAPI tokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS kind, void* information, DWORD size, DWORD* used) {
    const BOOL isDone = ImportHook::behind(&tokenInformation)(token, kind, information, size, used);
    if (isDone && kind == TokenElevation) static_cast<TOKEN_ELEVATION*>(information)->TokenIsElevated = isElevated;
    return isDone;
}

TEST_F(Pipe, KnowsItsClientByTheIdentityOfTheConnection) {
    const ImportHook tokenHook("xoSystem.dll", "OpenThreadToken", &openThreadToken);
    const ImportHook impersonateHook("xoSystem.dll", "ImpersonateNamedPipeClient", &impersonate);
    const ImportHook informationHook("xoSystem.dll", "GetTokenInformation", &tokenInformation);
    ASSERT_TRUE(tokenHook.isInstalled() && impersonateHook.isInstalled() && informationHook.isInstalled());
    const struct {
        DWORD ownTokenError, impersonationError, clientTokenError;
        bool isKnown, isFinal;
        const char* what;
    } rows[] = {
        {ERROR_NO_TOKEN, 0, 0, true, true, "an ordinary client"},
        {ERROR_NO_TOKEN, ERROR_CANNOT_IMPERSONATE, 0, true, false, "nothing read yet: by the process number"},
        {ERROR_NO_TOKEN, 0, ERROR_CANT_OPEN_ANONYMOUS, false, true, "an anonymous client"},
        {ERROR_ACCESS_DENIED, 0, 0, false, true, "the thread's own identity could not be restored"},
    };
    for (const auto& row : rows) {
        for (const bool elevated : {true, false}) {
            ASSERT_TRUE(connect() && mClient.writeMessage("x") && mPeer.waitForData(kPatienceMs));
            ownTokenError = row.ownTokenError;
            impersonationError = row.impersonationError;
            clientTokenError = row.clientTokenError;
            isElevated = elevated;
            impersonations = 0;
            EXPECT_EQ(mPeer.isPeerElevated(), elevated && row.isKnown) << row.what;
            EXPECT_EQ(mPeer.getPeerUser().empty(), !row.isKnown) << row.what;
            EXPECT_EQ(impersonations, row.ownTokenError != ERROR_NO_TOKEN ? 0 : row.isFinal ? 1 : 2) << row.what;
            EXPECT_EQ(mClient.isPeerElevated(), elevated) << "of the server's process";
        }
    }
}

TEST_F(Pipe, LeavesNothingBehind) {
    ASSERT_TRUE(connect());
    const int before = openHandles();
    for (int i = 0; i < 200; ++i) {
        ASSERT_TRUE(connect());
        EXPECT_TRUE(mClient.writeMessage("x") && !mClient.connectUtf8("", 0));
    }
    ASSERT_TRUE(connect());
    EXPECT_EQ(openHandles(), before);
}

TEST_F(Pipe, TrustsOnlyItsOwnUserAndTheSystem) {
    ASSERT_TRUE(mServer.listenUtf8(mName));
    const auto tellEveryone = +[](HANDLE, int, DWORD, PSID* owner, PSID*, ACL**, ACL**, void** descriptor) -> DWORD {
        static SID everyone{SID_REVISION, 1, {{0, 0, 0, 0, 0, 1}}, {0}};
        return *owner = &everyone, *descriptor = nullptr, ERROR_SUCCESS;
    };
    const ImportHook hook("xoSystem.dll", "GetSecurityInfo", tellEveryone);
    ASSERT_TRUE(hook.isInstalled());
    EXPECT_TRUE(!mClient.connectUtf8(mName, 0) && mClient.getReadResult() == P::ResultRefused);
    EXPECT_THAT(takeLines(), ElementsAre("2()xoNamedPipe does not trust the owner of \"" + mName + "\"",
                                         "0(NamedPipe)cannot connect to \"" + mName + "\": Refused"));
    mClient.setServerTrust(P::TrustAnyone);
    EXPECT_TRUE(mClient.connectUtf8(mName, kPatienceMs));
}

}  // namespace xo::tests
