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
    std::wstring application;  // the file to run, as CreateProcessW takes it
    std::wstring line;
    DWORD error = ERROR_SUCCESS;  // why the two are empty
};

// Whether the text reaches a child, or the splitter, unchanged: it is UTF-8 and has no NUL inside.
bool isPlainText(std::string_view text);

// Whether Windows runs this file through the command interpreter. Dots and blanks at the end of a name are ignored, as
// Windows ignores them.
bool isBatchFile(std::wstring_view path);

// The path of a batch file must be absolute, because the interpreter searches for a relative one. The environment is
// that of the child; empty stands for that of this process.
Command makeCommand(const std::string& program, const std::vector<std::string>& arguments,
                    const std::vector<std::string>& environment);

}  // namespace xo::process

#endif
