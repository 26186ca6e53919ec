// A plug-in of a host, built several times, each time with a function of another name to fault in.
#include "platform/windows.h"

namespace {

__declspec(noinline) void XO_PLUGIN_FUNCTION() {
    *static_cast<volatile int*>(nullptr) = 1;
    ::SetLastError(0);  // no jump instead of the call
}

}  // namespace

extern "C" __declspec(dllexport) void faultInPlugin() {
    XO_PLUGIN_FUNCTION();
    ::SetLastError(0);
}
