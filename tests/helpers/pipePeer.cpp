// The other process of a pipe: pipePeer task name. It connects to the pipe of that name and
//   echo      sends each message back until the end
//   flood     writes until nobody takes it any more
//   die       sends the length of a message of 1 MB and half of it, and kills itself
//   announce  sends the length of a message of 4 GB - 1, and waits for the end
//   half      sends the length of a message of 8 bytes and four of them, and leaves
//   serve     makes the pipe instead, and sends "served" to each client that comes
#include <string>

#include "platform/windows.h"
#include "xoSystem/xoNamedPipe.h"

namespace {

int serve(const std::string& name) {
    xo::xoNamedPipeServer server;
    if (!server.listenUtf8(name)) return 3;
    xo::xoNamedPipe peer;
    while (server.waitForConnection(peer)) peer.writeMessage("served");
    return 0;
}

void echo(xo::xoNamedPipe& pipe) {
    std::string message;
    while (pipe.readMessage(message)) pipe.writeMessage(message);
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) return 2;
    const std::string task = arguments[1];
    if (task == "serve") return serve(arguments[2]);
    xo::xoNamedPipe pipe;
    if (!pipe.connectUtf8(arguments[2], 20000)) return 4;
    const std::string block(1 << 16, 'f');
    if (task == "echo") echo(pipe);
    if (task == "flood")
        while (pipe.writeBytes(block.data(), block.size()) != 0) continue;
    if (task == "die") {
        pipe.writeBytes("\0\0\x10\0", 4);
        for (int i = 0; i < 8; ++i) pipe.writeBytes(block.data(), block.size());
        ::TerminateProcess(::GetCurrentProcess(), 5);
    }
    if (task == "announce") {
        pipe.writeBytes("\xFF\xFF\xFF\xFF", 4);
        pipe.waitForData();
    }
    if (task == "half") pipe.writeBytes("\x08\0\0\0half", 8);
    return 0;
}
