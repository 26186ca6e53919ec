// Determines the process at the other end of a pipe, and its user.
#ifndef XO_PIPE_PIPEPEER_H
#define XO_PIPE_PIPEPEER_H

#include <string>

#include "platform/windows.h"

namespace xo::pipe {

struct Peer {
    DWORD processId = 0;      // 0 unknown; may be another process by now, since Windows reuses numbers
    std::string user;         // its security identifier as text; empty when unknown
    bool isElevated = false;  // false also when unknown
};

// The client of an end that a server has accepted. The thread impersonates the client meanwhile.
Peer findClient(HANDLE pipe);

// The server of a client's end. Its user is the owner of the pipe, which needs no right to open the process.
Peer findServer(HANDLE pipe);

}  // namespace xo::pipe

#endif
