#include "log/eventLog.h"

#include <algorithm>

#include "platform/wideText.h"
#include "platform/windows.h"

namespace xo::log {
namespace {

constexpr std::size_t kMostBytes = 16384;  // of one insertion string, safely below the system's own limit
constexpr DWORD kEventId = 1;

WORD eventType(xoLogType type) {
    switch (static_cast<int>(type)) {
        case xoLogWarning: return EVENTLOG_WARNING_TYPE;
        case xoLogCritical: return EVENTLOG_ERROR_TYPE;
        default: return EVENTLOG_INFORMATION_TYPE;
    }
}

}  // namespace

void reportEvent(const std::string& message, xoLogType type, const std::string& sourceName) {
    if (type == xoLogDebug) return;
    std::string text = platform::toNative(message, kMostBytes);
    std::replace(text.begin(), text.end(), '\0', ' ');  // a NUL would end the event's text
    const std::string source = sourceName.empty() ? "xoLog" : platform::toNative(sourceName);

    const HANDLE log = ::RegisterEventSourceA(/*lpUNCServerName=*/nullptr, source.c_str());
    if (!log) return;
    const char* const strings[] = {text.c_str()};
    ::ReportEventA(log, eventType(type), /*wCategory=*/0, kEventId, /*lpUserSid=*/nullptr, /*wNumStrings=*/1,
                   /*dwDataSize=*/0, const_cast<const char**>(strings), /*lpRawData=*/nullptr);
    ::DeregisterEventSource(log);
}

}  // namespace xo::log
