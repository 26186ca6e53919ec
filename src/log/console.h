// Standard output as a sink of log lines.
#ifndef XO_LOG_CONSOLE_H
#define XO_LOG_CONSOLE_H

#include <string>

namespace xo::log {

// Writes the line and a line end to std::cout and flushes it. The line end is appended in the line's own buffer, and
// removed again.
void writeLineToConsole(std::string& line);

}  // namespace xo::log

#endif
