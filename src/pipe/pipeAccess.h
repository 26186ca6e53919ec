// Gives a connection to an xoNamedPipe.
#ifndef XO_PIPE_PIPEACCESS_H
#define XO_PIPE_PIPEACCESS_H

#include "platform/handle.h"
#include "xoSystem/xoNamedPipe.h"

namespace xo::pipe {

struct PipeAccess {
    // An end that a server has accepted. What the pipe held is closed.
    static void attachAccepted(xoNamedPipe& pipe, platform::FileHandle handle, std::uint32_t bufferBytes);

    // One end of a pair, which is either read or written.
    enum class Direction { Read, Write };
    static void attachOneWay(xoNamedPipe& pipe, platform::FileHandle handle, Direction direction);
};

}  // namespace xo::pipe

#endif
