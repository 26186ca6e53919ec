// A pipe whose two ends this process has, one of them for a child. The functions of Windows for anonymous pipes make no
// end that is used with overlapped operations.
#ifndef XO_PIPE_PIPEPAIR_H
#define XO_PIPE_PIPEPAIR_H

#include "platform/handle.h"

namespace xo::pipe {

struct PipePair {
    platform::FileHandle ours;    // for overlapped operations
    platform::FileHandle theirs;  // for simple ones, as most programs expect of a standard handle
    DWORD error = ERROR_SUCCESS;  // why there are none
};

// Only processes of this user could open the pipe, and there is no second instance to open. Neither end is inheritable.
PipePair makePair(bool isReadByUs);

}  // namespace xo::pipe

#endif
