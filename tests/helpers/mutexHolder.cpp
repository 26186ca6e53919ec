// Takes the system mutex named by its argument and holds it until it is killed; with the name of a soak's board and a
// first cell, takes and releases it until then: mutexHolder name [board cell]
#include <string>

#include "soak/soakBoard.h"
#include "xoSystem/xoMutex.h"

int main(int count, char** arguments) XO_NO_THREAD_SAFETY_ANALYSIS {
    xo::xoMutexSystem mutex(arguments[1]);
    if (count == 4) {
        const std::string name = arguments[2];
        const xo::tests::SoakBoard board(std::wstring(name.begin(), name.end()));
        board.workForEver(std::stoul(arguments[3]), [&](xo::tests::SoakCell& mine) XO_NO_THREAD_SAFETY_ANALYSIS {
            mutex.lock();
            board.enter(mine, true);
            const std::int64_t before = board.total();
            ::SwitchToThread();
            board.total() = before + 1;
            board.leave(mine);
            mutex.unlock();
            ++mine.done;
        });
    }
    mutex.lock();
    ::Sleep(60000);
    return 0;
}
