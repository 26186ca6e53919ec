// A server and a client of a pipe with a name of the test's own, and a log.
#ifndef XO_TESTS_PIPE_PIPEFIXTURE_H
#define XO_TESTS_PIPE_PIPEFIXTURE_H

#include <thread>

#include "log/logFixture.h"
#include "support/child.h"
#include "xoSystem/xoNamedPipe.h"

namespace xo::tests {

class Pipe : public LogTest {
protected:
    using P = xoNamedPipe;

    Pipe() {
        log().setLogTypeEnabled(xoLogDebug, true);
        for (xoNamedPipe* pipe : {&mClient, &mPeer}) pipe->setTimeLimits(kPatienceMs, kPatienceMs);
    }

    // Connects the client, and the peer behind the server.
    bool connect() {
        return (mServer.isListening() || mServer.listenUtf8(mName)) && mClient.connectUtf8(mName, kPatienceMs) &&
               mServer.waitForConnection(mPeer, kPatienceMs);
    }
    // Accepts another process as the peer.
    bool accept(const Child& child) { return child.isStarted() && mServer.waitForConnection(mPeer, kPatienceMs); }
    std::wstring arguments(const std::wstring& task) const {
        return task + L" " + std::wstring(mName.begin(), mName.end());
    }

    static std::string readAll(xoNamedPipe& pipe, std::size_t size) {
        std::string bytes(size, '\0');
        bytes.resize(pipe.readBytes(bytes.data(), size));
        return bytes;
    }
    static std::string pattern(std::size_t size) {
        std::string bytes(size, '\0');
        for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7 + i / 251);
        return bytes;
    }

    static constexpr unsigned kPatienceMs = 30000;

    const std::string mName = "xo-test-" + std::to_string(::GetCurrentProcessId());
    xoNamedPipeServer mServer;
    xoNamedPipe mClient, mPeer;
};

}  // namespace xo::tests

#endif
