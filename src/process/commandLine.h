// Command lines: quoted so that the program's own splitter gives back each argument, or fit for the command
// interpreter.
#ifndef XO_PROCESS_COMMANDLINE_H
#define XO_PROCESS_COMMANDLINE_H

#include <string>
#include <string_view>
#include <vector>

#include "platform/windows.h"

namespace xo::process {

struct Command {
    std::wstring application;  // the file to run, as CreateProcessW takes it
    std::wstring line;
    DWORD error = ERROR_SUCCESS;  // why the two are empty
};

// Whether the text reaches a child, or the splitter, unchanged: it is UTF-8 and has no NUL inside.
bool isPlainText(std::string_view text);

// Whether Windows would hand this file to the command interpreter. It ignores dots and blanks at the end of a name, and
// so does this.
bool isBatchFile(std::wstring_view path);

// A batch file must come with its absolute path: the interpreter would search for it. The environment is the child's;
// empty stands for that of this process.
Command makeCommand(const std::string& program, const std::vector<std::string>& arguments,
                    const std::vector<std::string>& environment);

}  // namespace xo::process

#endif
