// A price list that one process has and others ask for. Here a thread plays the server; it could be another program.
#include <iostream>
#include <map>
#include <string>
#include <thread>

#include "xoSystem/xoDataStream.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoNamedPipe.h"
#include "xoSystem/xoSystemUtils.h"

namespace {

using xo::xoDataStream;
using xo::xoNamedPipe;
using xo::xoNamedPipeServer;

constexpr unsigned kPatienceMs = 30000;

// Answers questions until the client leaves. What it cannot read or write ends the connection, not the server.
void serve(xoNamedPipe& peer) {
    const std::map<std::string, int> prices = {{"oak", 40}, {"pine", 25}};
    std::string name;
    while (peer.readMessage(name)) {
        const auto found = prices.find(name);
        if (!peer.writeMessage(found == prices.end() ? "unknown" : std::to_string(found->second))) return;
    }
}

void serveAll(xoNamedPipeServer& server) {
    xoNamedPipe peer;
    while (server.waitForConnection(peer)) {
        peer.setTimeLimits(kPatienceMs, kPatienceMs);
        serve(peer);
    }
}

bool ask(const std::string& pipeName) {
    xoNamedPipe pipe;
    pipe.setTimeLimits(kPatienceMs, kPatienceMs);
    if (!pipe.connectUtf8(pipeName, kPatienceMs)) return false;
    for (const char* const wood : {"oak", "pine", "cork"}) {
        std::string price;
        if (!pipe.writeMessage(wood) || !pipe.readMessage(price)) return false;
        std::cout << wood << ": " << price << '\n';
    }
    return pipe.close();
}

// The same pipe as a device: values in a fixed layout. Reading sends what was written before.
bool exchangeValues(const std::string& pipeName) {
    xoNamedPipeServer server;
    xoNamedPipe client, peer;
    if (!server.listenUtf8(pipeName) || !client.connectUtf8(pipeName, kPatienceMs)) return false;
    if (!server.waitForConnection(peer, kPatienceMs)) return false;
    xoDataStream out(&client, xoDataStream::EndiannessLittle);
    out << 7 << 2.5 << std::string("metres");
    if (!client.flush()) return false;
    xoDataStream in(&peer, xoDataStream::EndiannessLittle);
    int count = 0;
    double length = 0;
    std::string unit;
    in >> count >> length >> unit;
    std::cout << count << " pieces of " << length << ' ' << unit << '\n';
    return in.isOk();
}

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeFull);
    const std::string name = "prices-" + xo::xoSystemUtils::CreateUuid();  // of this run alone
    bool good = !xoNamedPipe().connectUtf8(name, 0, xoNamedPipe::ConnectIfServing);
    std::cout << "nobody serves yet: " << std::boolalpha << good << '\n';

    xoNamedPipeServer server;
    if (!server.listenUtf8(name)) return 1;
    std::thread serving([&server] { serveAll(server); });
    good = ask(name) && good;
    server.close();  // ends the loop of the other thread
    serving.join();

    good = exchangeValues(name + "-2") && good;
    xo::terminateXoSystem();
    return good ? 0 : 1;
}
