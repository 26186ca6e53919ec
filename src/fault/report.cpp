// Sends reports to the event log and to the library's log, each under a guard of its own: a broken log must neither end
// the process nor keep the report from the other one.
#include "fault/report.h"

#include <cstdint>

#include "fault/faultText.h"
#include "fault/guardedCall.h"
#include "xoSystem/xoLog.h"

namespace xo::fault {
namespace {

constexpr int kDeepest = 2;  // a report, and a second one about a fault in sending it; no third one
thread_local int depth = 0;  // the number of reports that this thread is sending

// Counts a report while it exists. A fault cannot skip the destructor: the sinks are called by callSilently.
class Depth {
public:
    Depth() { ++depth; }
    ~Depth() { --depth; }
    Depth(const Depth&) = delete;
    Depth& operator=(const Depth&) = delete;
};

// The argument is a std::string, the text.
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
