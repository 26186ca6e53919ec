#include "fault/stackTrace.h"

#include <cstdlib>
#include <memory>

#include "fault/debugHelp.h"
#include "fault/faultText.h"
#include "fault/guardedCall.h"
#include "fault/loadedModule.h"
#include "platform/slimLock.h"
#include "platform/wideText.h"

#if defined(__GNUC__)
#    include <cxxabi.h>
#endif

namespace xo::fault {
namespace {

constexpr DWORD kPatienceMs = 10000;  // for the traces of other threads

platform::SlimLock lock;

bool isProcessEnding() {
    using Ask = BOOLEAN(WINAPI*)();
    const HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
    if (!ntdll) return false;
    const auto ask =
        reinterpret_cast<Ask>(reinterpret_cast<void*>(::GetProcAddress(ntdll, "RtlDllShutdownInProgress")));
    return ask != nullptr && ask();
}

// Threads that were killed at the end of the process may have held any lock; then nothing is given back.
struct Session {
    ~Session() {
        if (isProcessEnding()) help.abandon();
        releaseDebugHelp();
    }

    DebugHelp help;
    bool isBroken = false;  // DbgHelp has faulted
};
Session session XO_GUARDED_BY(lock);

// Names that Microsoft's compiler decorated come back plain from DbgHelp.
std::string readableName(std::string name) {
#if defined(__GNUC__)
    if (name.compare(0, 2, "_Z") != 0) return name;
    const std::unique_ptr<char, decltype(&std::free)> plain(
        abi::__cxa_demangle(name.c_str(), nullptr, nullptr, nullptr), &std::free);
    if (plain) return plain.get();
#endif
    return name;
}

void appendFrame(std::string& text, DebugHelp& help, std::uint64_t address) {
    const DebugHelp::Symbol symbol = help.symbolAt(address);
    text += "\n\t# ";
    if (symbol.isUnconfident) text += "(unconfident) ";
    text += readableName(symbol.name);
    text += " @0x";
    appendHex(text, symbol.address);
    text += " in ";
    const DebugHelp::Line line = help.lineAt(address);
    if (line.file.empty()) {
        text += platform::toUtf8(moduleFile(moduleAt(address)));
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

// A call through a null pointer: nothing can be unwound there, but the way back is the latest thing on the stack.
void returnFromNowhere(CONTEXT& context) {
    context.Rip = *reinterpret_cast<const DWORD64*>(context.Rsp);
    context.Rsp += sizeof(DWORD64);
}

struct Trace {
    std::string& text;
    CONTEXT context;  // a walk changes it
    int mostFrames;
};

void appendFrames(Trace& trace, DebugHelp& help) {
    if (trace.context.Rip == 0) {
        appendFrame(trace.text, help, 0);
        returnFromNowhere(trace.context);
    }
    STACKFRAME64 frame = firstFrame(trace.context);
    for (int i = 0; i < trace.mostFrames && help.walk(frame, trace.context); ++i) {
        // A return address stands behind its call, maybe on the next line or in the next function.
        const bool isReturnAddress = i != 0;
        appendFrame(trace.text, help, frame.AddrPC.Offset - (isReturnAddress ? 1 : 0));
    }
}

void walkStack(Trace& trace) XO_REQUIRES(lock) {
    DebugHelp& help = session.help;
    const std::string_view failure = help.open();
    trace.text += failure;
    if (!failure.empty()) return;
    appendFrames(trace, help);
    help.endTrace();
}

void tryWalkStack(void* trace) XO_REQUIRES(lock) {
    try {
        walkStack(*static_cast<Trace*>(trace));
    } catch (...) {  // out of memory: what there is of the trace stays
    }
}

}  // namespace

void appendStackTrace(std::string& text, const CONTEXT& context, int mostFrames) {
    const std::size_t length = text.size();
    Trace trace{text, context, mostFrames};
    bool isWhole = false;
    if (lock.tryLock(kPatienceMs)) {
        isWhole = !session.isBroken && callQuietly(&tryWalkStack, &trace);
        session.isBroken = !isWhole;
        lock.unlock();
    }
    if (isWhole) return;
    text.resize(length);
    text += "\n\tFail to walk the stack";
}

void releaseDebugHelp() {
    if (!lock.tryLock()) return;  // a thread is at it
    session.help.close();
    lock.unlock();
}

}  // namespace xo::fault
