// Sends numbers to a server and awaits its answer to each, with a connection for each thread, until it is killed:
// pipeTalker pipe board cell
// On the board each thread counts the numbers that were answered.
#include <cstdlib>
#include <memory>
#include <string>

#include "soak/soakBoard.h"
#include "xoSystem/xoNamedPipe.h"

int main(int count, char** arguments) {
    if (count != 4) return 2;
    const std::string name = arguments[1], boardName = arguments[2];
    const xo::tests::SoakBoard board(std::wstring(boardName.begin(), boardName.end()));
    const std::size_t first = std::stoul(arguments[3]);
    xo::xoNamedPipe pipes[xo::tests::SoakBoard::kThreads];
    board.workForEver(first, [&](xo::tests::SoakCell& mine) {
        const auto cell = static_cast<std::size_t>(&mine - &board.cell(0));
        xo::xoNamedPipe& pipe = pipes[cell - first];
        if (!pipe.isConnected() && !pipe.connectUtf8(name, 10000)) return;
        const std::int64_t number = mine.done + 1;
        mine.held = number;
        std::string answer;
        const std::string question = std::to_string(cell) + " " + std::to_string(number);
        if (!pipe.writeMessage(question + std::string(5000, 'x')) || !pipe.readMessage(answer))
            pipe.close();
        else if (answer == question)
            mine.done = number;
        mine.held = 0;
    });
}
