#include "log/releasingCall.h"

#include "platform/windows.h"

// libstdc++ calls its own macro so; the frame below wants the compiler's word.
#undef __try

namespace xo::log {
namespace {

// A fault in the very function that holds the __try would pass by it.
__declspec(noinline) void call(Function run, void* argument) { run(argument); }

}  // namespace

void callReleasing(Function run, Function release, void* argument) {
    __try {
        call(run, argument);
    } __finally {
        if (AbnormalTermination()) release(argument);
    }
}

}  // namespace xo::log
