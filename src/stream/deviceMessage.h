// Lines that devices write to the log.
#ifndef XO_STREAM_DEVICEMESSAGE_H
#define XO_STREAM_DEVICEMESSAGE_H

#include <exception>
#include <string_view>

#include "xoSystem/xoLog.h"

namespace xo::stream {

// Writes a line for which write(line) streams the text; it is called only if the log takes lines of the type. Without a
// log nothing is written, where a log object would print to standard output, which belongs to the host. Devices do not
// throw, so the line is lost when memory runs out.
template <class Write>
void writeLine(xoLogType type, const char* qualifier, Write write) noexcept {
    xoLog* const log = xoLog::editPtr();
    if (!log || !log->isLogTypeEnabled(type)) return;
    try {
        xoLogObject line(type, qualifier, log);
        write(line);
    } catch (const std::exception&) {
    }
}

// Writes a CRITICAL line: the message, and a path behind it.
void report(std::string_view message, std::string_view path = {}) noexcept;

}  // namespace xo::stream

#endif
