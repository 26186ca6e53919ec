// Writes lines to the Windows event log.
#include "log/eventLog.h"

#include <algorithm>

#include "platform/handle.h"
#include "platform/wideText.h"

namespace xo::log {
namespace {

// https://learn.microsoft.com/en-us/windows/win32/api/winbase/nf-winbase-reporteventa limits an insertion string to
// 31,839 characters.
constexpr std::size_t kMaxTextBytes = 16384;
constexpr DWORD kEventId = 1;  // the library has no message file, so the number selects no text

// An event source is closed by a function of its own, not by CloseHandle.
struct EventSourcePolicy {
    using Type = HANDLE;
    static Type none() noexcept { return nullptr; }
    static void close(Type source) noexcept { ::DeregisterEventSource(source); }
};
using EventSource = platform::Owned<EventSourcePolicy>;

// The type may be any number that a host has cast.
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
    std::string text = platform::toNative(message, kMaxTextBytes);
    std::replace(text.begin(), text.end(), '\0', ' ');  // a NUL would end the event's text
    const std::string name = sourceName.empty() ? "xoLog" : platform::toNative(sourceName);

    const EventSource source(::RegisterEventSourceA(/*lpUNCServerName=*/nullptr, name.c_str()));
    if (!source) return;
    const char* const strings[] = {text.c_str()};
    ::ReportEventA(source.get(), eventType(type), /*wCategory=*/0, kEventId, /*lpUserSid=*/nullptr, /*wNumStrings=*/1,
                   /*dwDataSize=*/0, const_cast<const char**>(strings), /*lpRawData=*/nullptr);
}

}  // namespace xo::log
