// The stack of a faulting thread as text.
#ifndef XO_FAULT_STACKTRACE_H
#define XO_FAULT_STACKTRACE_H

#include <string>

#include "platform/windows.h"

namespace xo::fault {

// Appends a line for each frame of the calling thread, from the place that the context names outwards, but for at most
// mostFrames; or a line that says why there is no trace. Threads take turns. No fault comes out of it.
void appendStackTrace(std::string& text, const CONTEXT& context, int mostFrames);

// Gives back what earlier traces left for later ones: DbgHelp and the program databases it has read. Safe at any time.
void releaseDebugHelp();

}  // namespace xo::fault

#endif
