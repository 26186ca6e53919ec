// The only source with structured exception handling.
#include "platform/structuredCall.h"

// libstdc++ defines __try as a macro; undefine it so that __try below is the keyword of structured exception handling.
// https://learn.microsoft.com/en-us/cpp/cpp/structured-exception-handling-c-cpp
#undef __try

namespace xo::platform {
namespace {

// One callReleasing under way. They form a list, because code that abandons frames cannot run their __finally blocks.
struct ReleasingCall {
    Function run;
    Function release;
    void* argument;
    ReleasingCall* outer;
};

thread_local ReleasingCall* innermost = nullptr;

// Leaves the list before it releases: a fault in release must not make it run twice.
void end(const ReleasingCall& call) {
    innermost = call.outer;
    call.release(call.argument);
}

// Not inlined: clang catches faults only of functions that are called in a __try block, not of instructions in the
// block itself.
__declspec(noinline) void callNotInlined(const ReleasingCall& call) { call.run(call.argument); }
__declspec(noinline) bool callNotInlined(bool (*body)(void*), void* argument) { return body(argument); }

}  // namespace

void callReleasing(Function run, Function release, void* argument) {
    // On this frame, so that its address shows whether an abandoned part of the stack contains it.
    ReleasingCall call{run, release, argument, innermost};
    innermost = &call;
    __try {
        callNotInlined(call);
    } __finally {
        end(call);
    }
}

void releaseCallsBetween(std::uintptr_t low, std::uintptr_t high) {
    // A fiber has a stack of its own: calls on the stack that the thread came from are not in the range.
    for (;;) {
        const auto address = reinterpret_cast<std::uintptr_t>(innermost);
        if (!innermost || address < low || address >= high) return;
        end(*innermost);
    }
}

bool callFiltered(bool (*body)(void*), void* argument, long (*filter)(const EXCEPTION_POINTERS&, void*),
                  void* filterArgument) {
    __try {
        return callNotInlined(body, argument);
    } __except (filter(*GetExceptionInformation(), filterArgument)) {
        return false;
    }
}

}  // namespace xo::platform
