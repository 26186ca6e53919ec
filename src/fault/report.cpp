#include "fault/report.h"

#include <cstdint>

#include "fault/faultText.h"
#include "fault/guardedCall.h"
#include "xoSystem/xoLog.h"

namespace xo::fault {
namespace {

constexpr int kDeepest = 2;  // a report, and one of a fault in sending it
thread_local int depth = 0;

class Depth {
public:
    Depth() { ++depth; }
    ~Depth() { --depth; }
    Depth(const Depth&) = delete;
    Depth& operator=(const Depth&) = delete;
};

using Sink = void (*)(void* text);

void sendToSystem(void* text) {
    try {
        xoLogObject(xoLogCritical, nullptr, nullptr, "xoSystem") << *static_cast<std::string*>(text);
    } catch (...) {  // out of memory
    }
}

void sendToLog(void* text) {
    xoLog* const log = xoLog::editPtr();
    if (!log) return;
    try {
        xoLogObject(xoLogCritical, nullptr, log) << *static_cast<std::string*>(text);
    } catch (...) {  // out of memory
    }
}

void send(Sink sink, const std::string& text) {
    std::uint32_t faultCode = 0;
    if (!callSilently(sink, const_cast<std::string*>(&text), &faultCode)) emitReport(describeFault(faultCode), {});
}

}  // namespace

void emitReport(std::string_view prefix, std::string_view text) {
    if (depth == kDeepest) return;
    const Depth deeper;
    try {
        const std::string whole = std::string(prefix).append(text);
        send(&sendToSystem, whole);
        send(&sendToLog, whole);
    } catch (...) {  // out of memory
    }
}

void emitReport(const std::string& text) { emitReport(text, {}); }

bool isReporting() { return depth != 0; }

}  // namespace xo::fault
