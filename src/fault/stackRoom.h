// Room to work in for a thread that has run out of stack.
#ifndef XO_FAULT_STACKROOM_H
#define XO_FAULT_STACKROOM_H

#include "fault/guardedCall.h"

namespace xo::fault {

// Whether the calling thread has stack enough left for a report.
bool hasStackRoom();

// Calls the function quietly: here when there is room, otherwise on a stack made for this call. It is the same thread
// there, so that the locks it holds stay open to it. Where not even that stack can be had, the function gets what is
// left of this one.
void callWithRoom(Function function, void* argument);

}  // namespace xo::fault

#endif
