// Standard output as a sink of log lines, and a status line below them where it is a console.
#ifndef XO_LOG_CONSOLE_H
#define XO_LOG_CONSOLE_H

#include <string>

#include "platform/windows.h"

namespace xo::log {

// Writes the line and a line end to std::cout and flushes it. The line end is appended in the line's own buffer, and
// removed again.
void writeLineToConsole(std::string& line);

// Writes the line and a line end to a console, above the status line.
void writeConsoleLine(HANDLE console, const std::string& line);

// A line at the bottom of a console, such as a progress bar. There is one in the process at a time. The functions above
// write their lines above it; other output to the console may overwrite it.
struct StatusLine {
    const void* owner;    // identifies the user of the line; never dereferenced
    HANDLE console;       // where it is shown; not owned
    std::string text;     // no control characters, and shorter than the console is wide
    std::size_t columns;  // that the text takes at most
};

// Shows the text in place of the owner's last one. False when another owner has the line. An unchanged text is not
// written again.
bool setStatusLine(const StatusLine& line);

// Removes the owner's line, and writes lastLine with a line end in its place if it is not empty. False, with nothing
// written, when the owner does not have the line. Throws nothing: without memory the line is given up, but the screen
// keeps it.
bool endStatusLine(const void* owner, const std::string& lastLine = {});

}  // namespace xo::log

#endif
