// Writes a stack trace, one line per frame, from what DebugHelp finds out.
#include "fault/stackTrace.h"

#include "fault/debugHelp.h"
#include "fault/faultText.h"
#include "fault/guardedCall.h"
#include "fault/loadedModule.h"
#include "platform/slimLock.h"
#include "platform/symbolName.h"
#include "platform/wideText.h"

namespace xo::fault {
namespace {

constexpr DWORD kLockTimeoutMs = 10000;  // how long a thread waits for the traces of others

platform::SlimLock lock;

bool isBroken XO_GUARDED_BY(lock) = false;  // DbgHelp has faulted: its state is unknown, and it is not used again

// DbgHelp does not demangle the names ("_Z...") of functions that GCC or clang has compiled.
std::string readableName(const std::string& name) {
    return name.compare(0, 2, "_Z") == 0 ? platform::demangled(name.c_str()) : name;
}

// A return address is that of the instruction after the call, which may belong to the next line or the next function.
// So the byte before it is looked up.
void appendFrame(std::string& text, DebugHelp& source, std::uint64_t address, bool isReturnAddress) {
    const std::uint64_t inside = address - (isReturnAddress ? 1 : 0);
    const DebugHelp::Symbol symbol = source.symbolAt(inside);
    text += "\n\t# ";
    if (symbol.isUnconfident) text += "(unconfident) ";
    text += readableName(symbol.name);
    text += " @0x";
    appendHex(text, symbol.name.empty() ? address : symbol.address);
    text += " in ";
    // The source line if it is known, else the module.
    const DebugHelp::Line line = source.lineAt(inside);
    if (line.file.empty()) {
        text += platform::toUtf8(moduleFile(moduleAt(inside)));
        return;
    }
    text += line.file;
    text += " line: ";
    text += std::to_string(line.number);
}

STACKFRAME64 firstFrame(const CONTEXT& context) {
    STACKFRAME64 frame{};
    frame.AddrPC = {context.Rip, 0, AddrModeFlat};
    frame.AddrFrame = {context.Rbp, 0, AddrModeFlat};
    frame.AddrStack = {context.Rsp, 0, AddrModeFlat};
    return frame;
}

// Whether the address is in no module and no known function: the thread has called an invalid pointer.
bool isNowhere(const CONTEXT& context) {
    DWORD64 base = 0;
    return !moduleAt(context.Rip) && !::RtlLookupFunctionEntry(context.Rip, &base, nullptr);
}

// Such an address has no unwind information, but the call has left its return address on top of the stack.
void returnFromNowhere(CONTEXT& context) {
    if (!DebugHelp::read(context.Rsp, &context.Rip, sizeof context.Rip)) context.Rip = 0;
    context.Rsp += sizeof context.Rip;
}

struct Trace {
    std::string& text;
    CONTEXT context;  // a copy, because StackWalk64 changes it
    int mostFrames;
    DebugHelp help;
};

void appendFrames(Trace& trace) {
    bool isReturnAddress = false;
    if (isNowhere(trace.context)) {
        appendFrame(trace.text, trace.help, trace.context.Rip, /*isReturnAddress=*/false);
        returnFromNowhere(trace.context);
        isReturnAddress = true;
    }
    STACKFRAME64 frame = firstFrame(trace.context);
    for (int i = 0; i < trace.mostFrames && trace.help.walk(frame, trace.context); ++i) {
        appendFrame(trace.text, trace.help, frame.AddrPC.Offset, isReturnAddress);
        isReturnAddress = true;
    }
}

void walkStack(void* argument) {
    Trace& trace = *static_cast<Trace*>(argument);
    try {
        const std::string_view failure = trace.help.open();
        trace.text += failure;
        if (failure.empty()) appendFrames(trace);
    } catch (...) {  // such as std::bad_alloc: the trace ends here
    }
}

// False when a fault has ended this walk or an earlier one.
bool tryWalkStack(Trace& trace) XO_REQUIRES(lock) {
    if (isBroken) return false;
    const bool isWhole = callSilently(&walkStack, &trace);
    isBroken = !trace.help.close();
    return isWhole;
}

}  // namespace

void appendStackTrace(std::string& text, const CONTEXT& context, int mostFrames) {
    Trace trace{text, context, mostFrames, {}};
    bool isWhole = false;
    // With a limit, because this report must be written even if another thread does not finish its trace.
    if (lock.tryLock(kLockTimeoutMs)) {
        isWhole = tryWalkStack(trace);
        lock.unlock();
    }
    if (!isWhole) text += "\n\tFail to walk the stack";
}

}  // namespace xo::fault
