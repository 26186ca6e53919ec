#include "fault/stackRoom.h"

#include <cstddef>

#include "platform/ownStack.h"

namespace xo::fault {
namespace {

constexpr std::size_t kRoomOfReport = std::size_t{256} * 1024;  // DbgHelp reads program databases on it
constexpr std::size_t kOwnStack = std::size_t{1024} * 1024;

struct QuietCall {
    Function function;
    void* argument;
};

void run(void* argument) {
    const QuietCall& call = *static_cast<const QuietCall*>(argument);
    callQuietly(call.function, call.argument);
}

}  // namespace

bool hasStackRoom() { return platform::stackLeft() >= kRoomOfReport; }

void callWithRoom(Function function, void* argument) {
    QuietCall call{function, argument};
    if (!hasStackRoom() && platform::callOnOwnStack(kOwnStack, &run, &call)) return;
    run(&call);
}

}  // namespace xo::fault
