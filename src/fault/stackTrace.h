// The stack of a faulting thread as text.
#ifndef XO_FAULT_STACKTRACE_H
#define XO_FAULT_STACKTRACE_H

#include <string>

#include "platform/windows.h"

namespace xo::fault {

// Appends a line for each frame of the calling thread, from the context's instruction outwards, for at most mostFrames
// frames. A last line says why the trace is missing or incomplete, if it is. One thread at a time writes a trace;
// others wait for up to 10 seconds. Faults in it are handled.
void appendStackTrace(std::string& text, const CONTEXT& context, int mostFrames);

}  // namespace xo::fault

#endif
