// Asks another process to close.
#ifndef XO_PROCESS_CLOSEREQUEST_H
#define XO_PROCESS_CLOSEREQUEST_H

#include "platform/windows.h"

namespace xo::process {

// Posts WM_CLOSE to each top-level window of the process, and to its main thread. The caller must hold a handle
// of the process: Windows does not reuse its identifier meanwhile.
void requestClose(DWORD processId, DWORD mainThreadId);

}  // namespace xo::process

#endif
