// INI text: what is read, the warnings about it, what is written, a merging save and an update, against a reader and a
// writer of our own. An input is one file, then a byte 1E, then the file that is merged into it.
#include <regex>

#include "fuzz.h"
#include "treeModel.h"
#include "xoSystem/xoIniFile.h"
#include "xoSystem/xoLog.h"

namespace xo::fuzz {
namespace {

using Lines = std::vector<std::string>;

std::string trimmed(const std::string& text) {
    constexpr char kSpaces[] = " \t\n\v\f\r";
    const std::size_t first = text.find_first_not_of(kSpaces);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(kSpaces) - first + 1);
}

std::string unescaped(std::string text) {
    const std::pair<const char*, char> codes[] = {
        {"\\\"", '"'}, {"\\t", '\t'}, {"\\r", '\r'}, {"\\n", '\n'}, {"\\\\", '\\'}};
    for (const auto& [code, meaning] : codes)
        for (std::size_t at = 0; (at = text.find(code, at)) != std::string::npos; ++at) text.replace(at, 2, 1, meaning);
    return text;
}

std::string integerText(const std::string& text) {
    const bool isNegative = text.find('-') != std::string::npos;
    std::string digits = text.substr(text.find_first_of("0123456789"));
    const unsigned base = digits.compare(0, 2, "0x") == 0 || digits.compare(0, 2, "0X") == 0 ? 16
                          : digits[0] == '0'                                                 ? 8
                                                                                             : 10;
    if (base == 16) digits.erase(0, 2);
    const std::uint64_t most = (std::uint64_t{1} << 63) - (isNegative ? 0 : 1);
    std::uint64_t value = 0;
    for (const char c : digits) {
        const unsigned digit = static_cast<unsigned>(std::stoi(std::string(1, c), nullptr, 16));
        value = value > (most - digit) / base ? most : value * base + digit;
    }
    return (isNegative && value != 0 ? "-" : "") + std::to_string(value);
}

Node typed(const std::string& text) {
    static const std::regex integer("[ \\t\\n\\v\\f\\r]*[+-]?(0[xX][0-9a-fA-F]+|0[0-7]*|[1-9][0-9]*)");
    static const std::regex real("[ \\t\\n\\v\\f\\r]*[+-]?([0-9]+\\.?[0-9]*|\\.[0-9]+)([eE][+-]?[0-9]+)?");
    std::string lower = text;
    for (char& c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    Node node;
    if (lower == "true" || lower == "false") {
        node.text = "4:" + lower;
    } else if (std::regex_match(text, integer)) {
        node.text = "1:" + integerText(text);
    } else if (std::regex_match(text, real)) {
        std::ostringstream printed;
        printed << std::strtod(text.c_str(), nullptr);
        node.text = "2:" + printed.str();
    } else {
        return Node::ofText(text);
    }
    return node;
}

bool isHeader(const std::string& line) { return line.size() >= 2 && line.front() == '[' && line.back() == ']'; }

// Returns the warnings. The paths are those of the lines, empty for a line without a key.
Lines readModel(std::string text, Node& map, Lines* paths = nullptr) {
    Lines log;
    if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) text.erase(0, 3);
    std::istringstream in(text);
    std::string prefix, line;
    for (int number = 0; std::getline(in, line); ++number) {
        const std::string whole = trimmed(line);
        const auto warn = [&](const char* what) {
            log.push_back(what + std::to_string(number) + ") " + whole + " in Ini file");
        };
        const std::size_t equals = line.find('=');
        const std::string key = trimmed(line.substr(0, equals));
        const bool isKey = equals != std::string::npos && !isHeader(whole) && whole[0] != ';' && !key.empty();
        if (paths) paths->push_back(isKey ? prefix + key : "");
        if (isHeader(whole)) {
            prefix = whole.substr(1, whole.size() - 2) + '/';
            if (prefix == "General/") prefix.clear();
        } else if (whole.empty() || whole[0] == ';') {
        } else if (equals == std::string::npos) {
            warn("Invalid line (");
        } else if (key.empty()) {
            warn("Invalid key at line (");
        } else if (const std::string path = prefix + key; find(map, path, '/')) {
            warn("Duplicated key at line (");
        } else {
            std::string value = trimmed(line.substr(equals + 1));
            if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
                value = value.substr(1, value.size() - 2);
            create(map, path, '/') = typed(unescaped(value));
        }
    }
    return log;
}

std::string keyLine(const std::string& key, const Node& value) {
    std::string text;
    for (const char c : value.toString()) {
        const std::size_t code = std::string("\\\n\r\t\"").find(c);
        text += value.kind == Node::Text && code != std::string::npos ? std::string("\\") + "\\nrt\""[code]
                                                                      : std::string(1, c);
    }
    if (value.kind == Node::Text && value.text.find('"') != std::string::npos) text = '"' + text + '"';
    return key + '=' + text + '\n';
}

std::string leafLines(const Node& map) {
    Node leaves;
    flatten(map, "", '/', leaves);
    std::string text;
    for (const auto& [key, value] : leaves.entries) text += keyLine(key, value);
    return text;
}

std::string writeModel(const Node& map) {
    std::string top = "[General]\n", sections;
    for (const auto& [key, value] : map.entries) {
        if (value.kind != Node::Map) {
            top += keyLine(key, value);
        } else if (key == "General") {
            top += leafLines(value);
        } else {
            sections += "\n[" + key + "]\n" + leafLines(value);
        }
    }
    return top + sections;
}

void overlay(Node& result, const Node& map) {
    Node leaves;
    flatten(map, "", '/', leaves);
    for (const auto& [path, value] : leaves.entries) {
        std::string place = path;
        while (place.compare(0, 8, "General/") == 0) place.erase(0, 8);
        create(result, place, '/') = value;
    }
}

// Loads through the library and the model, and wants the same.
xoVariant::xoVariantMapImpl load(const std::string& bytes) {
    Lines log;
    const auto collect = [](const std::string& line, xoLogType, const std::string&, void* lines) {
        static_cast<Lines*>(lines)->push_back(line);
    };
    writeScratch("a.ini", bytes);
    xoVariant::xoVariantMapImpl map;
    xoLog::edit().installCustomHandler(collect, &log);
    const bool isLoaded = LoadIniFile(scratchFile("a.ini"), map);
    xoLog::edit().installCustomHandler(nullptr, nullptr);
    require(isLoaded, "not loaded");

    Node model;
    model.kind = Node::Map;
    require(log == readModel(bytes, model), log.size(), " warnings, the first: ", log.empty() ? "-" : log.front());
    require(Node::of(map).show() == model.show(), "read ", Node::of(map).show(), "\nnot  ", model.show());
    return map;
}

void save(const xoVariant::xoVariantMapImpl& map, bool merge, const Node& model) {
    require(SaveIniFile(scratchFile("a.ini"), map, merge), "not saved");
    const std::string saved = readScratch("a.ini"), expected = writeModel(model);
    require(saved == expected, "wrote ", saved, "\nnot   ", expected);
}

// Whether a line of any section can have the path: all of its ends are read as keys.
bool isPlain(const std::string& path) {
    for (std::size_t begin = 0;; begin = path.find('/', begin) + 1) {
        const std::string key = path.substr(begin);
        if (key.empty() || key != trimmed(key) || key.find_first_of("=\n") != std::string::npos) return false;
        if (key[0] == ';' || key[0] == '[') return false;
        if (key.find('/') == std::string::npos) return true;
    }
}

// Whether the path or what is above it is a leaf.
bool isGiven(const Node& leaves, const std::string& path) {
    for (const auto& [given, value] : leaves.entries)
        if (path == given || path.compare(0, given.size() + 1, given + '/') == 0) return true;
    return false;
}

Lines linesOf(const std::string& text) {
    Lines lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

// The lines of other paths stay, in their order. The last one may get a line end.
void checkOtherLines(const std::string& before, const std::string& after, const Node& leaves) {
    Node map;
    map.kind = Node::Map;
    Lines paths;
    readModel(before, map, &paths);
    const Lines oldLines = linesOf(before), newLines = linesOf(after);
    auto at = newLines.begin();
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (isGiven(leaves, paths[i])) continue;
        const std::string& line = oldLines[i];
        while (at != newLines.end() && *at != line && !(i + 1 == oldLines.size() && *at == line + '\r')) ++at;
        require(at != newLines.end(), "lost the line ", line);
        ++at;
    }
}

// As it comes back when it has been written.
Node written(const Node& value) {
    Node map;
    map.kind = Node::Map;
    readModel(keyLine("k", value), map);
    return map.entries["k"];
}

void update(const std::string& file, const xoVariant::xoVariantMapImpl& given) {
    Node values, leaves, expected;
    values.kind = leaves.kind = expected.kind = Node::Map;
    overlay(values, Node::of(given));
    flatten(values, "", '/', leaves);
    readModel(file, expected);
    for (const auto& [path, value] : leaves.entries) {
        const Node* const old = find(expected, path, '/');
        if (!old || old->show() != value.show()) create(expected, path, '/') = written(value);
    }

    writeScratch("a.ini", file);
    const bool isUpdated = UpdateIniFile(scratchFile("a.ini"), given);
    const std::string after = readScratch("a.ini");
    if (!isUpdated) {
        bool isAnyOdd = false;
        for (const auto& entry : leaves.entries) isAnyOdd = isAnyOdd || !isPlain(entry.first);
        require(isAnyOdd, "not updated");
        require(after == file, "changed nevertheless");
        return;
    }
    checkOtherLines(file, after, leaves);
    require(UpdateIniFile(scratchFile("a.ini"), given) && readScratch("a.ini") == after, "changed twice");
    const std::string actual = Node::of(load(after)).show();
    require(actual == expected.show(), "updated to ", actual, "\nnot        ", expected.show());
}

void check(const std::string& input) {
    Bytes bytes(input);
    const std::string file = bytes.until('\x1E');
    const auto given = load(bytes.rest());
    const auto kept = load(file);
    update(file, given);

    writeScratch("a.ini", file);
    Node both;
    both.kind = Node::Map;
    overlay(both, Node::of(kept));
    overlay(both, Node::of(given));
    save(given, true, both);
    load(readScratch("a.ini"));
    save(kept, false, Node::of(kept));
}

std::string generate(Random& random) {
    static const std::vector<std::string_view> keys = {"a",         "b", "a/b", "/",        "c d", "General",
                                                       "General/a", " ", "",    "\xC3\xA9", "x\\n"};
    static const std::vector<std::string_view> values = {"true",
                                                         "FALSE",
                                                         "12",
                                                         "-0x1F",
                                                         "017",
                                                         "08",
                                                         "0.5",
                                                         "1e3",
                                                         "1e999",
                                                         ".5",
                                                         "5.",
                                                         "1e",
                                                         "99999999999999999999",
                                                         "\"",
                                                         "\\",
                                                         "\\n",
                                                         "\\t",
                                                         "\\\"",
                                                         "text",
                                                         " ",
                                                         "\t",
                                                         "=",
                                                         ";",
                                                         "\"12\"",
                                                         "\" x\"",
                                                         "\"a \"",
                                                         "\" \"",
                                                         "-",
                                                         "+",
                                                         "0x",
                                                         "123456789",
                                                         "1e-400"};
    static const std::vector<std::string_view> ends = {"\n", "\n", "\n", "\r\n", "\x1E", ""};
    std::string text = random.oneIn(9) ? "\xEF\xBB\xBF" : "";
    for (std::size_t i = random.below(12); i != 0; --i) {
        switch (random.below(6)) {
            case 0: (text += '[').append(random.pick(keys)) += ']'; break;
            case 1: text.append(random.pick({"; note", "no key", "[", "#x"})); break;
            default: text.append(random.pick(keys)).append(random.pick({"=", " = ", "="})) += random.join(values, 3);
        }
        text.append(random.pick(ends));
    }
    return text;
}

}  // namespace

const Target kIni = {"ini", 1000, &generate, &check};

}  // namespace xo::fuzz
