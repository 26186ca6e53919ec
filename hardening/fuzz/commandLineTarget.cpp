// Command lines: any text is split or refused as the documented rules say, and what it was split into comes back when
// it is quoted and split again.
#include <algorithm>

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

constexpr char kBlanks[] = " \t";

// The words of the line; none when it has two quotes in a row inside a quoted stretch, of which the rules say nothing.
std::vector<std::string> splitModel(std::string_view line) {
    const auto skipBlanks = [&] { line.remove_prefix((std::min)(line.find_first_not_of(kBlanks), line.size())); };
    const bool isProgramQuoted = line[0] == '"';  // it ends at the next quote, else at a blank; backslashes are plain
    if (isProgramQuoted) line.remove_prefix(1);
    std::size_t end = (std::min)(isProgramQuoted ? line.find('"') : line.find_first_of(kBlanks), line.size());
    std::vector<std::string> words = {std::string(line.substr(0, end))};
    line.remove_prefix((std::min)(end + 1, line.size()));
    for (skipBlanks(); !line.empty(); skipBlanks()) {
        std::string word;
        bool isQuoted = false;
        while (!line.empty() && (isQuoted || (line[0] != ' ' && line[0] != '\t'))) {
            const std::size_t backslashes = (std::min)(line.find_first_not_of('\\'), line.size());
            line.remove_prefix(backslashes);
            const bool beforeQuote = !line.empty() && line[0] == '"';
            word.append(beforeQuote ? backslashes / 2 : backslashes, '\\');
            if (beforeQuote && backslashes % 2 == 0) {
                if (isQuoted && line.substr(0, 2) == "\"\"") return {};
                isQuoted = !isQuoted;
            } else if (beforeQuote || backslashes == 0) {
                word += line[0];
            } else {
                continue;
            }
            line.remove_prefix(1);
        }
        words.push_back(word);
    }
    return words;
}

std::vector<std::string> split(const std::string& line) {
    std::vector<std::string> arguments = {"before"};
    const bool isSplit = xoProcess::SplitCommandLine(line, arguments);
    const bool isBlank = line.find_first_not_of(kBlanks) == std::string::npos;
    const bool isText = xoStringUtils::IsUtf8String(line) && line.find('\0') == std::string::npos;
    require(isSplit == (isText && !isBlank), isSplit ? "took" : "refused", " the line ", line);
    require(isSplit != arguments.empty(), arguments.size(), " arguments");
    const std::vector<std::string> words = isSplit ? splitModel(line) : arguments;
    require(words.empty() || words == arguments, arguments.size(), " arguments, not ", words.size());
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

const Target kCommandLine = {"commandLine", 200000, &generate, &check};

}  // namespace xo::fuzz
