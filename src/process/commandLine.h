// Command lines: quoted so that the program's own splitter returns each argument unchanged, or in the form that the
// command interpreter needs.
#ifndef XO_PROCESS_COMMANDLINE_H
#define XO_PROCESS_COMMANDLINE_H

#include <string>
#include <string_view>
#include <vector>

#include "platform/windows.h"

namespace xo::process {

struct Command {
    std::wstring application;     // the file to run, as CreateProcessW takes it
    std::wstring line;            // the program and the arguments, quoted
    DWORD error = ERROR_SUCCESS;  // if not ERROR_SUCCESS, the reason why both texts are empty
};

// Whether the text can be passed to Windows unchanged: it is UTF-8 and has no NUL inside.
bool isPlainText(std::string_view text);

// Whether Windows runs this file through the command interpreter. Dots and blanks at the end of a name are ignored, as
// Windows ignores them.
bool isBatchFile(std::wstring_view path);

// The command for a program, a batch file or the command interpreter. The path of a batch file must be absolute,
// because the interpreter searches PATH for a relative one. The environment is the child's, which decides what the
// interpreter would replace in a path; an empty one means that of this process.
Command makeCommand(const std::string& program, const std::vector<std::string>& arguments,
                    const std::vector<std::string>& environment);

}  // namespace xo::process

#endif
