// Command lines: any text is split or refused, and what it was split into comes back when it is quoted and split again.
#include "fuzz.h"
#include "xoSystem/xoProcess.h"
#include "xoSystem/xoStringUtils.h"

namespace xo::fuzz {
namespace {

// As the C runtime's start-up code reads it: a quote is one behind an odd number of backslashes.
std::string quoted(const std::string& argument) {
    std::string text = "\"";
    std::size_t backslashes = 0;
    for (const char c : argument) {
        if (c == '"') text.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        text += c;
    }
    return text.append(backslashes, '\\') + '"';
}

std::vector<std::string> split(const std::string& line) {
    std::vector<std::string> arguments = {"before"};
    const bool isSplit = xoProcess::SplitCommandLine(line, arguments);
    const bool isBlank = line.find_first_not_of(" \t") == std::string::npos;
    const bool isText = xoStringUtils::IsUtf8String(line) && line.find('\0') == std::string::npos;
    require(isText || !isSplit, "took what is no text");
    require(!isBlank || !isSplit, "took a blank line");
    require(isSplit || isBlank || !isText || line.find_first_not_of(" \t\n\v\f\r") == std::string::npos,
            "refused a line");
    require(isSplit != arguments.empty(), arguments.size(), " arguments");
    return arguments;
}

void check(const std::string& line) {
    const std::vector<std::string> arguments = split(line);
    // A program's name knows no backslashes in front of quotes, so it cannot be quoted when it holds one.
    if (arguments.empty() || arguments[0].find('"') != std::string::npos) return;
    std::string again = '"' + arguments[0] + '"';
    for (std::size_t i = 1; i < arguments.size(); ++i) again += ' ' + quoted(arguments[i]);
    const std::vector<std::string> second = split(again);
    require(second == arguments, again, " has ", second.size(), " arguments, not ", arguments.size());
}

std::string generate(Random& random) {
    static const std::vector<std::string_view> pieces = {"a",    "bc",    " ",         " ",        "\t",
                                                         "\"",   "\"\"",  "\"\"\"",    "\\",       "\\\\",
                                                         "\\\"", "\" \"", "C:\\dir\\", "\xC3\xA9", "\xF0\x9F\x98\x80",
                                                         "\n",   "\xFF",  "/x=\"y z\""};
    return random.join(pieces, 12);
}

}  // namespace

const Target kCommandLine = {"commandLine", 50000, &generate, &check};

}  // namespace xo::fuzz
