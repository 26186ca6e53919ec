// Standard output as a sink of lines.
#ifndef XO_LOG_CONSOLE_H
#define XO_LOG_CONSOLE_H

#include <string>

namespace xo::log {

// Writes the line and a line end, flushed. Takes the line to use its room.
void writeLineToConsole(std::string& line);

}  // namespace xo::log

#endif
