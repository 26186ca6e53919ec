// The standard handles of a child: what the host has chosen for them, and the opened handles.
#ifndef XO_PROCESS_REDIRECTION_H
#define XO_PROCESS_REDIRECTION_H

#include <string>

#include "platform/handle.h"
#include "xoSystem/xoProcess.h"

namespace xo::process {

// The value behind xoProcess::Input. Shared and never changed, so that a running child keeps its choice when the host
// sets another one.
struct InputChoice {
    enum class Kind { None, Null, Inherit, Pipe, File, Text, Device };

    Kind kind = Kind::None;
    std::string text;              // the path of a File, the bytes of a Text
    xoIoDevice* device = nullptr;  // of a Device, which the host owns; null is refused
};

// The value behind xoProcess::Output.
struct OutputChoice {
    enum class Kind { None, Null, Inherit, Pipe, Merged, File, Text, Lines, Device };

    Kind kind = Kind::None;
    std::string path;                // of a File
    bool append = false;             // of a File
    std::uint64_t maxBytes = 0;      // of a Text
    xoProcess::LineHandler handler;  // of Lines; an empty one is refused
    xoIoDevice* device = nullptr;    // of a Device
};

// The choices for one start.
struct Redirection {
    std::shared_ptr<const InputChoice> input;  // null in any of the three means None
    std::shared_ptr<const OutputChoice> output;
    std::shared_ptr<const OutputChoice> errorOutput;
};

// The opened handles of one start: the child's end of each standard handle, and this process's end where it is a pipe.
struct StandardHandles {
    platform::FileHandle input, output, error;           // not inheritable yet; error is empty when merged
    platform::FileHandle ourInput, ourOutput, ourError;  // for overlapped operations
    bool isMerged = false;                               // the error output is a second use of `output`
    bool hasConsole = false;                             // one of them is this process's console
};

// Opens what the choices need. Returns ERROR_SUCCESS, or why the start must fail. A file or pipe that cannot be opened
// is logged.
DWORD openStandardHandles(const Redirection& wanted, StandardHandles& handles);

}  // namespace xo::process

#endif
