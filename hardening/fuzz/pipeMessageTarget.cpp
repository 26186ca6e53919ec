// Messages of a pipe over any bytes, sent in any pieces: each message that is complete arrives whole, one that is not
// leaves the target alone and can go on, and one beyond the maximum ends the reading. An input is the number of pieces,
// a size for each, and the bytes.
#include <atomic>

#include "fuzz.h"
#include "platform/windows.h"
#include "xoSystem/xoNamedPipe.h"

namespace xo::fuzz {
namespace {

constexpr std::uint32_t kLongest = 40;

// The two ends of one connection.
struct Connection {
    Connection() {
        static std::atomic<int> count{0};
        const std::string name = "xo-fuzz-" + std::to_string(::GetCurrentProcessId()) + "-" + std::to_string(++count);
        xoNamedPipeServer server;
        server.setBacklog(1);
        require(server.listenUtf8(name) && sender.connectUtf8(name, 10000) && server.waitForConnection(receiver, 10000),
                "no connection");
        receiver.setTimeLimits(0, 0);
        receiver.setMaxMessageBytes(kLongest);
    }

    xoNamedPipe sender, receiver;
};

// The same bytes, read the slow way.
class Model {
public:
    void add(const std::string& bytes) { mBytes += bytes; }

    // What reading a message gives, and the message.
    xoNamedPipe::Result next(bool isClosed, std::string& message) {
        if (mIsTooLong) return xoNamedPipe::ResultTooLong;
        std::uint64_t length = 0;
        for (std::size_t i = 4; i-- > 0 && mBytes.size() >= 4;)
            length = length * 256 + static_cast<unsigned char>(mBytes[i]);
        if (mBytes.size() >= 4 && length > kLongest) {
            mIsTooLong = true;
            return xoNamedPipe::ResultTooLong;
        }
        if (mBytes.size() < 4 || mBytes.size() - 4 < length)
            return isClosed ? xoNamedPipe::ResultEnd : xoNamedPipe::ResultTimeout;
        message = mBytes.substr(4, static_cast<std::size_t>(length));
        mBytes.erase(0, 4 + static_cast<std::size_t>(length));
        return xoNamedPipe::ResultOk;
    }

private:
    std::string mBytes;
    bool mIsTooLong = false;
};

// Reads as long as there are messages.
void receive(xoNamedPipe& receiver, Model& model, bool isClosed) {
    for (;;) {
        std::string message = "old", expected = "old";
        const xoNamedPipe::Result result = model.next(isClosed, expected);
        const bool isRead = receiver.readMessage(message);
        require(receiver.getReadResult() == result, "result ", receiver.getReadResult(), " instead of ", result);
        require(isRead == (result == xoNamedPipe::ResultOk) && message == expected, "another message");
        require(receiver.hasError() == (result == xoNamedPipe::ResultTooLong), "the error flag");
        if (!isRead) return;
    }
}

void check(const std::string& input) {
    Bytes bytes(input);
    std::vector<std::size_t> sizes(bytes.byte() % 8);
    for (std::size_t& size : sizes) size = bytes.byte();
    const std::string content = bytes.rest().substr(0, 4096);

    Connection connection;
    Model model;
    std::size_t at = 0;
    sizes.push_back(content.size());
    for (const std::size_t size : sizes) {
        const std::string piece = content.substr(at, size);
        at += piece.size();
        connection.sender << piece;
        require(connection.sender.flush(), "not sent");
        model.add(piece);
        receive(connection.receiver, model, false);
    }
    require(connection.sender.close(), "not closed");
    receive(connection.receiver, model, true);
}

std::string generate(Random& random) {
    std::string input(1, static_cast<char>(random.below(8)));
    for (int i = 0; i < input[0]; ++i) input += static_cast<char>(random.below(30));
    for (std::size_t i = random.below(6); i != 0; --i) {
        const std::size_t size = random.below(kLongest + 2);
        input += static_cast<char>(random.oneIn(20) ? random.next() : size);
        input += random.oneIn(20) ? static_cast<char>(random.next()) : '\0';
        input += std::string(2, random.oneIn(20) ? '\xFF' : '\0');
        for (std::size_t k = random.oneIn(10) ? random.below(size + 1) : size; k != 0; --k)
            input += static_cast<char>(random.next());
    }
    return input;
}

}  // namespace

const Target kPipeMessages = {"pipeMessages", 300, &generate, &check};

}  // namespace xo::fuzz
