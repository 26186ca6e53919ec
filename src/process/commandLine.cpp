// Arguments to a command line, for programs, batch files and the command interpreter, and back.
#include "process/commandLine.h"

#include <algorithm>
#include <iterator>

#include "platform/handle.h"
#include "platform/ordinalText.h"
#include "platform/systemFolder.h"
#include "platform/wideText.h"
#include "text/utf8Checks.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoProcess.h"

#include <shellapi.h>

namespace xo {
namespace process {
namespace {

using Arguments = std::vector<std::string>;

// In UTF-16 units, without the terminating NUL.
// https://learn.microsoft.com/windows/win32/api/processthreadsapi/nf-processthreadsapi-createprocessw
// https://learn.microsoft.com/troubleshoot/windows-client/shell-experience/command-line-string-limitation
constexpr std::size_t kLongestLine = 32766;
constexpr std::size_t kLongestInterpreterLine = 8191;

// A batch file sees its arguments exactly as they are on the line, where quotes protect all characters but these: a
// quote ends the protection, a percent sign may begin a variable, which is replaced before anything else is looked at,
// and a line break ends the line. No way of writing them is safe in every batch file.
bool isSafeForBatch(std::string_view text) { return text.find_first_of("\"%\r\n") == std::string_view::npos; }

bool endsWith(std::wstring_view text, std::wstring_view end) {
    return text.size() >= end.size() && platform::equalsIgnoringCase(text.substr(text.size() - end.size()), end);
}

bool isInterpreter(const std::wstring& path) {
    return platform::equalsIgnoringCase(path.substr(path.find_last_of(LR"(\/)") + 1), L"cmd.exe");
}

// Without escapes: the first word of a command line has none, and a path contains no quotes.
std::wstring quotedProgram(const std::wstring& path) { return L'"' + path + L'"'; }

// A backslash is an ordinary character, except in front of a quote, the closing one included. There each backslash is
// doubled, and one more makes the quote an ordinary character.
// https://learn.microsoft.com/cpp/c-language/parsing-c-command-line-arguments
void appendQuoted(std::wstring& line, std::wstring_view argument) {
    line += L" \"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'"') line.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        line += c;
    }
    line.append(backslashes, L'\\');
    line += L'"';
}

Command refused(DWORD error) { return {{}, {}, error}; }

Command checked(std::wstring application, std::wstring line, std::size_t longest) {
    if (line.size() > longest) return refused(ERROR_FILENAME_EXCED_RANGE);  // the code of CreateProcessW
    return {std::move(application), std::move(line)};
}

Command plainCommand(const std::wstring& path, const Arguments& arguments) {
    std::wstring line = quotedProgram(path);
    for (const std::string& argument : arguments) appendQuoted(line, platform::toWide(argument));
    return checked(platform::toApiPath(path), std::move(line),
                   kLongestLine);  // Wine starts no program with a longer path
}

// The interpreter removes the first and the last quote behind "/c" and reads the rest unchanged. With exactly these two
// it does so only if "/s" stands before; without it, the text between them may be taken for the name of a file.
// https://learn.microsoft.com/windows-server/administration/windows-commands/cmd
Command interpreted(const std::wstring& interpreter, const std::wstring& switches, const std::wstring& command) {
    return checked(platform::toApiPath(interpreter), quotedProgram(interpreter) + switches + L" \"" + command + L"\"",
                   kLongestInterpreterLine);
}

// From the system folder, not from COMSPEC, so that the environment does not decide which program runs.
std::wstring systemInterpreter() { return platform::systemFolder() + L"\\cmd.exe"; }

// Variables that the interpreter computes, or adds to an environment without them. Windows computes the last two.
constexpr const wchar_t* kBuiltInVariables[] = {
    L"CD",   L"CMDCMDLINE", L"CMDEXTVERSION", L"COMSPEC", L"DATE", L"ERRORLEVEL", L"HIGHESTNUMANODENUMBER",
    L"PATH", L"PATHEXT",    L"PROMPT",        L"RANDOM",  L"TIME", L"__APPDIR__", L"__CD__",
};

// Whether the interpreter would replace "%name%". Names that begin with "=" are the interpreter's own.
bool isVariable(const std::wstring& name, const Arguments& environment) {
    const auto isName = [&](std::wstring_view other) { return platform::equalsIgnoringCase(name, other); };
    if (name.rfind(L'=', 0) == 0 || std::any_of(std::begin(kBuiltInVariables), std::end(kBuiltInVariables), isName))
        return true;
    // An empty list means that the child inherits the environment of this process.
    if (environment.empty()) return ::GetEnvironmentVariableW(name.c_str(), /*lpBuffer=*/nullptr, /*nSize=*/0) != 0;
    return std::any_of(environment.begin(), environment.end(), [&](const std::string& entry) {
        // From 1 on, because entries such as "=C:=C:\folder" have names that begin with "=".
        return isName(platform::toWide(std::string_view(entry).substr(0, entry.find('=', 1))));
    });
}

// On a command line, unlike inside a batch file, the interpreter keeps "%name%" when there is no variable of that name,
// and a percent sign that no other one follows. A colon ends a name too.
bool hasVariable(const std::wstring& path, const Arguments& environment) {
    std::size_t begin = path.find(L'%');
    while (begin != std::wstring::npos) {
        const std::size_t end = path.find(L'%', ++begin);
        if (end == std::wstring::npos) return false;
        const std::wstring text = path.substr(begin, end - begin);
        if (isVariable(text.substr(0, text.find(L':')), environment)) return true;
        begin = end;
    }
    return false;
}

// Refuses what the interpreter would change or execute, instead of running the batch file with other arguments.
Command batchCommand(const std::wstring& path, const Arguments& arguments, const Arguments& environment) {
    if (path.size() >= MAX_PATH) return refused(ERROR_FILENAME_EXCED_RANGE);  // the interpreter would not find it
    if (path.find_first_of(L"\r\n") != std::wstring::npos || hasVariable(path, environment) ||
        !std::all_of(arguments.begin(), arguments.end(), isSafeForBatch))
        return refused(ERROR_INVALID_PARAMETER);
    std::wstring command = quotedProgram(path);
    for (const std::string& argument : arguments) command += L" \"" + platform::toWide(argument) + L'"';
    return interpreted(systemInterpreter(), L" /c", command);
}

// "/r" is an older name of "/c".
bool beginsCommand(char letter) { return std::string_view("cCkKrR").find(letter) != std::string_view::npos; }

// Where the interpreter's command begins: behind "/c", "/k" or "/r", with only switches before. Switches need no blank
// between them, nor does the command behind its switch: "/d/c", "/cdir".
struct CommandPlace {
    std::size_t argument;
    std::size_t offset;  // 0 when there is no command
};

CommandPlace findCommand(const Arguments& arguments) {
    for (std::size_t i = 0; i < arguments.size() && arguments[i].rfind('/', 0) == 0; ++i) {
        const std::string& text = arguments[i];
        for (std::size_t slash = 0; slash + 1 < text.size(); slash = (std::min)(text.find('/', slash + 1), text.size()))
            if (beginsCommand(text[slash + 1])) return {i, slash + 2};
    }
    return {0, 0};
}

// Passes the arguments without quotes: the interpreter would take a quoted switch for a command.
Command interpreterCommand(const std::wstring& interpreter, const Arguments& arguments, CommandPlace place) {
    std::wstring switches = L" /s";
    for (std::size_t i = 0; i < place.argument; ++i) switches += L' ' + platform::toWide(arguments[i]);
    const std::string_view last = arguments[place.argument];
    switches += L' ' + platform::toWide(last.substr(0, place.offset));

    std::wstring command = platform::toWide(last.substr(place.offset));
    for (std::size_t i = place.argument + 1; i < arguments.size(); ++i) {
        if (!command.empty()) command += L' ';
        command += platform::toWide(arguments[i]);
    }
    return interpreted(interpreter, switches, command);
}

}  // namespace

bool isPlainText(std::string_view text) { return text.find('\0') == std::string_view::npos && text::isUtf8(text); }

// Windows ignores dots and blanks at the end of a file name, so that "a.bat. " runs a.bat.
bool isBatchFile(std::wstring_view path) {
    const std::wstring_view name = path.substr(0, path.find_last_not_of(L". ") + 1);
    return endsWith(name, L".bat") || endsWith(name, L".cmd");
}

Command makeCommand(const std::string& program, const Arguments& arguments, const Arguments& environment) {
    if (!isPlainText(program) || !std::all_of(arguments.begin(), arguments.end(), isPlainText))
        return refused(ERROR_INVALID_PARAMETER);
    if (program.empty()) return refused(ERROR_FILE_NOT_FOUND);
    // No file name contains a quote, and one would end the first word of the line early.
    if (program.find('"') != std::string::npos) return refused(ERROR_INVALID_NAME);

    const std::wstring path = platform::toWide(program);
    if (isBatchFile(path)) return batchCommand(path, arguments, environment);
    const CommandPlace command = isInterpreter(path) ? findCommand(arguments) : CommandPlace{0, 0};
    return command.offset != 0 ? interpreterCommand(path, arguments, command) : plainCommand(path, arguments);
}

}  // namespace process

bool xoProcess::SplitCommandLine(const std::string& commandLine, std::vector<std::string>& arguments) {
    // CommandLineToArgvW returns the path of this program for an empty line.
    const bool isBlank = commandLine.find_first_not_of(" \t") == std::string::npos;
    int count = 0;
    const platform::LocalMemory<wchar_t*> words(
        isBlank || !process::isPlainText(commandLine)
            ? nullptr
            : ::CommandLineToArgvW(platform::toWide(commandLine).c_str(), &count));
    if (!words) xoLogObject(xoLogCritical) << "Invalid command line : " << commandLine;

    std::vector<std::string> split;  // not the output itself, which may hold the line
    std::transform(words.get(), words.get() + count, std::back_inserter(split), &platform::toUtf8);
    arguments = std::move(split);
    return static_cast<bool>(words);
}

}  // namespace xo
