#include "stream/deviceMessage.h"

#include "xoSystem/xoLog.h"

namespace xo::stream {

void report(const char* message) {
    if (xoLog* const log = xoLog::editPtr()) xoLogObject(xoLogCritical, /*qualifier=*/nullptr, log) << message;
}

}  // namespace xo::stream
