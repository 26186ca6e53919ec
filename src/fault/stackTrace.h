// The stack of a faulting thread as text.
#ifndef XO_FAULT_STACKTRACE_H
#define XO_FAULT_STACKTRACE_H

#include <string>

#include "platform/windows.h"

namespace xo::fault {

// Appends a line for each frame of the calling thread, from the place that the context names outwards, but for at most
// mostFrames; and a line that says why there is no trace, or no more of it. Threads take turns. No fault comes out of
// it.
void appendStackTrace(std::string& text, const CONTEXT& context, int mostFrames);

}  // namespace xo::fault

#endif
