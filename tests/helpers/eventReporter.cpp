// Reports to the event log of the system: one DEBUG line, which is dropped, and one event.
#include "xoSystem/xoLog.h"

int main() {
    xo::xoLogObject(xo::xoLogDebug, nullptr, nullptr, "xoSystem test") << "a debug line";
    xo::xoLogObject(xo::xoLogCritical, nullptr, nullptr, "xoSystem test") << "an event for real";
    return 0;
}
