// What a child has as its standard handles.
#ifndef XO_PROCESS_REDIRECTION_H
#define XO_PROCESS_REDIRECTION_H

#include <string>

#include "platform/handle.h"
#include "xoSystem/xoProcess.h"

namespace xo::process {

struct InputChoice {
    enum class Kind { None, Null, Inherit, Pipe, File, Text, Device };

    Kind kind = Kind::None;
    std::string text;              // the path of a File, the bytes of a Text
    xoIoDevice* device = nullptr;  // of a Device
};

struct OutputChoice {
    enum class Kind { None, Null, Inherit, Pipe, Merged, File, Text, Lines, Device };

    Kind kind = Kind::None;
    std::string path;                // of a File
    bool append = false;             // of a File
    std::uint64_t maxBytes = 0;      // of a Text
    xoProcess::LineHandler handler;  // of Lines
    xoIoDevice* device = nullptr;    // of a Device
};

struct Redirection {
    std::shared_ptr<const InputChoice> input;  // null: None, here and below
    std::shared_ptr<const OutputChoice> output;
    std::shared_ptr<const OutputChoice> errorOutput;
};

// The handles of a start: of each standard handle the child's end, and that of this process where there is a pipe.
struct StandardHandles {
    platform::FileHandle input, output, error;           // not inheritable yet; error is none when it is merged
    platform::FileHandle ourInput, ourOutput, ourError;  // for overlapped operations
    bool isMerged = false;
    bool hasConsole = false;  // one of them is this process's console
};

// ERROR_SUCCESS, or why the start must fail. A file or pipe that cannot be opened is logged.
DWORD openStandardHandles(const Redirection& wanted, StandardHandles& handles);

}  // namespace xo::process

#endif
