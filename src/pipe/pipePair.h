// A pipe with both ends in this process, one of them for a child. It is a named pipe, because the ends of an anonymous
// one do not support overlapped operations.
#ifndef XO_PIPE_PIPEPAIR_H
#define XO_PIPE_PIPEPAIR_H

#include "platform/handle.h"

namespace xo::pipe {

struct PipePair {
    platform::FileHandle ours;    // for overlapped operations
    platform::FileHandle theirs;  // for synchronous ones, which most programs use on a standard handle
    DWORD error = ERROR_SUCCESS;  // if not ERROR_SUCCESS, at least one end is missing
};

// Nobody else can take the child's end: the name is random, only processes of this user have access, and the one
// instance is connected when the function returns. Neither end is inheritable.
PipePair makePair(bool isReadByUs);

}  // namespace xo::pipe

#endif
