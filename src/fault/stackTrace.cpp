#include "fault/stackTrace.h"

#include <cstdlib>
#include <memory>
#include <utility>

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
        reinterpret_cast<Ask>(reinterpret_cast<void (*)()>(::GetProcAddress(ntdll, "RtlDllShutdownInProgress")));
    return ask != nullptr && ask();
}

DebugHelp* help XO_GUARDED_BY(lock) = nullptr;
bool isBroken XO_GUARDED_BY(lock) = false;  // a fault inside DbgHelp has left it in no known state, for good

// At the end of a process its other threads are gone, with whatever locks they held, and the system takes all back.
struct Unloading {
    ~Unloading() {
        if (!isProcessEnding()) releaseDebugHelp();
    }
};
const Unloading unloading;

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

void appendFrame(std::string& text, DebugHelp& source, std::uint64_t address) {
    const DebugHelp::Symbol symbol = source.symbolAt(address);
    text += "\n\t# ";
    if (symbol.isUnconfident) text += "(unconfident) ";
    text += readableName(symbol.name);
    text += " @0x";
    appendHex(text, symbol.address);
    text += " in ";
    const DebugHelp::Line line = source.lineAt(address);
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

// No function that the system knows of: a call through a wild pointer led there.
bool isNowhere(const CONTEXT& context) {
    DWORD64 base = 0;
    return !moduleAt(context.Rip) && !::RtlLookupFunctionEntry(context.Rip, &base, nullptr);
}

// Nothing can be unwound there, but the way back is the latest thing on the stack.
void returnFromNowhere(CONTEXT& context) {
    if (!DebugHelp::read(context.Rsp, &context.Rip, sizeof context.Rip)) context.Rip = 0;
    context.Rsp += sizeof context.Rip;
}

struct Trace {
    std::string& text;
    CONTEXT context;  // a walk changes it
    int mostFrames;
};

void appendFrames(Trace& trace, DebugHelp& source) {
    bool isReturnAddress = false;
    if (isNowhere(trace.context)) {
        appendFrame(trace.text, source, trace.context.Rip);
        returnFromNowhere(trace.context);
        isReturnAddress = true;
    }
    STACKFRAME64 frame = firstFrame(trace.context);
    for (int i = 0; i < trace.mostFrames && source.walk(frame, trace.context); ++i) {
        // A return address stands behind its call, maybe on the next line or in the next function.
        appendFrame(trace.text, source, frame.AddrPC.Offset - (isReturnAddress ? 1 : 0));
        isReturnAddress = true;
    }
}

void walkStack(Trace& trace) XO_REQUIRES(lock) {
    if (!help) help = new DebugHelp();
    const std::string_view failure = help->open();
    trace.text += failure;
    if (!failure.empty()) return;
    appendFrames(trace, *help);
    help->endTrace();
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
        isWhole = !isBroken && callQuietly(&tryWalkStack, &trace);
        isBroken = !isWhole;
        lock.unlock();
    }
    if (isWhole) return;
    text.resize(length);
    text += "\n\tFail to walk the stack";
}

void releaseDebugHelp() {
    if (!lock.tryLock()) return;  // a thread is at it
    if (!isBroken) delete std::exchange(help, nullptr);
    lock.unlock();
}

}  // namespace xo::fault
