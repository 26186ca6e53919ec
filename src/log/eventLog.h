// The Windows event log as a sink of log lines.
#ifndef XO_LOG_EVENTLOG_H
#define XO_LOG_EVENTLOG_H

#include <string>

#include "xoSystem/xoLog.h"

namespace xo::log {

// Reports one event, under the source "xoLog" if the name is empty. Does nothing for a DEBUG line, and when the source
// cannot be registered.
void reportEvent(const std::string& message, xoLogType type, const std::string& sourceName);

}  // namespace xo::log

#endif
