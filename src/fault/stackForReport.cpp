// Decides by the stack that is left where a report is written.
#include "fault/stackForReport.h"

#include <cstddef>

#include "platform/ownStack.h"

namespace xo::fault {
namespace {

constexpr std::size_t kStackForReport = std::size_t{256} * 1024;  // for DbgHelp, which reads program databases
constexpr std::size_t kOwnStack = std::size_t{1024} * 1024;  // as most threads have; only touched pages need memory

struct SilentCall {
    Function function;
    void* argument;
};

void run(void* argument) {
    const SilentCall& call = *static_cast<const SilentCall*>(argument);
    callSilently(call.function, call.argument);
}

}  // namespace

bool hasStackForReport() { return platform::stackLeft() >= kStackForReport; }

void callWithEnoughStack(Function function, void* argument) {
    SilentCall call{function, argument};
    if (!hasStackForReport() && platform::callOnOwnStack(kOwnStack, &run, &call)) return;
    run(&call);
}

}  // namespace xo::fault
