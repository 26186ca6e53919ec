// Standard output as a sink of log lines, and a status line below them where it is a console.
#ifndef XO_LOG_CONSOLE_H
#define XO_LOG_CONSOLE_H

#include <string>

#include "platform/windows.h"

namespace xo::log {

// Writes the line and a line end to std::cout and flushes it. The line end is appended in the line's own buffer, and
// removed again.
void writeLineToConsole(std::string& line);

// Writes the line and a line end to a console, above its status line.
void writeConsoleLine(HANDLE console, const std::string& line);

// A line at the bottom of a console. writeLineToConsole() writes its lines above it. There is one at a time; what else
// is written to the console does not know of it.
struct StatusLine {
    const void* owner;    // tells the users of the line apart
    HANDLE console;       // which it is on
    std::string text;     // no control characters, and shorter than the console is wide
    std::size_t columns;  // that it takes, or more
};

// Shows the text in place of the owner's last one. False when another owner has the line. A text that is there already
// is not written again.
bool setStatusLine(const StatusLine& line);

// Takes the owner's line away, and leaves this one in its place, if it is not empty, with a line end. False when it
// does not have the line; then nothing is written.
bool endStatusLine(const void* owner, const std::string& lastLine = {});

}  // namespace xo::log

#endif
