// What is known of the process at the other end of a pipe.
#ifndef XO_PIPE_PIPEPEER_H
#define XO_PIPE_PIPEPEER_H

#include <string>

#include "platform/windows.h"

namespace xo::pipe {

struct Peer {
    DWORD processId = 0;
    std::string user;
    bool isElevated = false;
};

// Of the client of an accepted end.
Peer findClient(HANDLE pipe);

// Of the server of a client's end.
Peer findServer(HANDLE pipe);

}  // namespace xo::pipe

#endif
