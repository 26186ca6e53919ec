#include "process/commandLine.h"

#include <algorithm>
#include <iterator>

#include "platform/handle.h"
#include "platform/wideText.h"
#include "text/ascii.h"
#include "text/utf8Checks.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoProcess.h"

#include <shellapi.h>

namespace xo {
namespace process {
namespace {

using Arguments = std::vector<std::string>;

// Without the NUL behind it.
constexpr std::size_t kLongestLine = 32766;
constexpr std::size_t kLongestInterpreterLine = 8191;

// Whether the text reaches a child, or the splitter, unchanged.
bool isPlainText(std::string_view text) { return text.find('\0') == std::string_view::npos && text::isUtf8(text); }

// A batch file sees its arguments as they stand on the line, where quotes guard all but these: a quote ends the guard,
// a percent sign is replaced by a variable before anything else is looked at, a line break ends the line. No way of
// writing them is safe in every batch file.
bool isSafeForBatch(std::string_view text) { return text.find_first_of("\"%\r\n") == std::string_view::npos; }

bool equalsIgnoringCase(std::wstring_view a, std::wstring_view b) {
    return ::CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) ==
           CSTR_EQUAL;
}

bool endsWith(std::wstring_view text, std::wstring_view end) {
    return text.size() >= end.size() && equalsIgnoringCase(text.substr(text.size() - end.size()), end);
}

bool isInterpreter(const std::wstring& path) {
    return equalsIgnoringCase(path.substr(path.find_last_of(LR"(\/)") + 1), L"cmd.exe");
}

// No escape exists in the first word of a line; a path holds no quotes.
std::wstring quotedProgram(const std::wstring& path) { return L'"' + path + L'"'; }

// Backslashes are themselves, except in front of a quote: there each is written twice, and one more makes the quote an
// ordinary character. The closing quote counts too.
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
    if (line.size() > longest) return refused(ERROR_FILENAME_EXCED_RANGE);  // as CreateProcessW calls it
    return {std::move(application), std::move(line)};
}

Command plainCommand(const std::wstring& path, const Arguments& arguments) {
    std::wstring line = quotedProgram(path);
    for (const std::string& argument : arguments) appendQuoted(line, platform::toWide(argument));
    return checked(platform::toApiPath(path), std::move(line), kLongestLine);  // Wine takes no program beyond 260
}

// The interpreter takes off the first and the last quote behind /c and reads the rest as it stands.
Command interpreted(const std::wstring& interpreter, const std::wstring& switches, const std::wstring& command) {
    return checked(platform::toApiPath(interpreter), quotedProgram(interpreter) + switches + L" \"" + command + L"\"",
                   kLongestInterpreterLine);
}

// From the system folder, not from COMSPEC: the environment does not choose what runs here.
std::wstring systemInterpreter() {
    return platform::readWide([](wchar_t* buffer, DWORD size) { return ::GetSystemDirectoryW(buffer, size); }) +
           L"\\cmd.exe";
}

Command batchCommand(const std::string& program, const Arguments& arguments) {
    if (!isSafeForBatch(program) || !std::all_of(arguments.begin(), arguments.end(), isSafeForBatch))
        return refused(ERROR_INVALID_PARAMETER);
    std::wstring command = quotedProgram(platform::toWide(program));
    for (const std::string& argument : arguments) command += L" \"" + platform::toWide(argument) + L'"';
    return interpreted(systemInterpreter(), L" /c", command);
}

bool isSwitch(const std::string& argument) { return argument.rfind('/', 0) == 0; }

bool beginsCommand(const std::string& argument) {
    return text::equalIgnoringCase(argument, "/c") || text::equalIgnoringCase(argument, "/k");
}

// Where the command begins among the arguments of the interpreter: behind "/c" or "/k", with only switches before. 0
// when there is none.
std::size_t findCommand(const Arguments& arguments) {
    for (std::size_t i = 0; i < arguments.size() && isSwitch(arguments[i]); ++i) {
        if (beginsCommand(arguments[i])) return i + 1;
    }
    return 0;
}

// Quoted switches the interpreter would take for a command.
Command interpreterCommand(const std::wstring& interpreter, const Arguments& arguments, std::size_t commandBegin) {
    std::wstring parts[2];
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::wstring& part = parts[i < commandBegin ? 0 : 1];
        if (i != commandBegin) part += L' ';
        part += platform::toWide(arguments[i]);
    }
    return interpreted(interpreter, parts[0], parts[1]);
}

}  // namespace

bool isBatchFile(std::wstring_view path) {
    const std::wstring_view name = path.substr(0, path.find_last_not_of(L". ") + 1);
    return endsWith(name, L".bat") || endsWith(name, L".cmd");
}

Command makeCommand(const std::string& program, const Arguments& arguments) {
    if (!isPlainText(program) || !std::all_of(arguments.begin(), arguments.end(), isPlainText))
        return refused(ERROR_INVALID_PARAMETER);
    if (program.empty()) return refused(ERROR_FILE_NOT_FOUND);
    if (program.find('"') != std::string::npos) return refused(ERROR_INVALID_NAME);

    const std::wstring path = platform::toWide(program);
    if (isBatchFile(path)) return batchCommand(program, arguments);
    const std::size_t commandBegin = isInterpreter(path) ? findCommand(arguments) : 0;
    if (commandBegin != 0) return interpreterCommand(path, arguments, commandBegin);
    return plainCommand(path, arguments);
}

}  // namespace process

bool xoProcess::SplitCommandLine(const std::string& commandLine, std::vector<std::string>& arguments) {
    arguments.clear();
    // An empty line would be split into the path of this very program.
    const bool isBlank = commandLine.find_first_not_of(" \t") == std::string::npos;
    int count = 0;
    wchar_t** const words = isBlank || !process::isPlainText(commandLine)
                                ? nullptr
                                : ::CommandLineToArgvW(platform::toWide(commandLine).c_str(), &count);
    const platform::LocalMemory<void> owner(static_cast<void*>(words));
    if (!words) {
        xoLogObject(xoLogCritical) << "Invalid command line : " << commandLine;
        return false;
    }
    std::transform(words, words + count, std::back_inserter(arguments), &platform::toUtf8);
    return true;
}

}  // namespace xo
