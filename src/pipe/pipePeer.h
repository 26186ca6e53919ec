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
    bool isFinal = true;      // false: only found by the process number, ask again later
};

// The client of an end that a server has accepted. The thread impersonates the client meanwhile.
//
// Windows refuses that until something was read from the pipe. Until then the user is that of the process with the
// client's number, and the answer is not final. A client may also connect anonymously; its user is unknown then.
// https://learn.microsoft.com/windows/win32/api/namedpipeapi/nf-namedpipeapi-impersonatenamedpipeclient
Peer findClient(HANDLE pipe);

// The server of a client's end. Its user is the owner of the pipe, which needs no right to open the process.
Peer findServer(HANDLE pipe);

}  // namespace xo::pipe

#endif
