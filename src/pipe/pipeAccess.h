// Passes a connection to an xoNamedPipe, whose own functions only connect by name.
#ifndef XO_PIPE_PIPEACCESS_H
#define XO_PIPE_PIPEACCESS_H

#include "platform/handle.h"
#include "xoSystem/xoNamedPipe.h"

namespace xo::pipe {

struct PipeAccess {
    // Attaches an end that a server has accepted. A connection that the pipe already has is closed.
    static void attachAccepted(xoNamedPipe& pipe, platform::FileHandle handle, std::uint32_t bufferBytes);

    // Attaches one end of a PipePair, which is either read or written, to a pipe that is not connected.
    enum class Direction { Read, Write };
    static void attachOneWay(xoNamedPipe& pipe, platform::FileHandle handle, Direction direction);
};

}  // namespace xo::pipe

#endif
