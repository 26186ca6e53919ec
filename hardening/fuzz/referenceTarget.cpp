// References of documents: whatever they hold, what is looked for is a plain path below a known root.
#include "fuzz.h"
#include "xref/reference.h"

namespace xo::fuzz {
namespace {

std::string generate(Random& random) {
    static const std::vector<std::string_view> pieces = {"file:",     "/",
                                                         "//",        "\\",
                                                         "\\\\",      "?",
                                                         ".",         "..",
                                                         "C:",        "d:\\",
                                                         "server",    "share",
                                                         "UNC",       "%2f",
                                                         "%5C",       "%2e",
                                                         "%00",       "%",
                                                         "%7C",       "NUL",
                                                         "con",       "COM1",
                                                         "lpt9.x",    "a",
                                                         "oak.png",   "b c",
                                                         ":",         "*",
                                                         "\xC3\xA9",  "\xFF",
                                                         "localhost", "|",
                                                         " ",         "\t",
                                                         "CONIN$",    "//?/",
                                                         "\\\\.\\",   std::string_view("\0", 1)};
    return random.join(pieces, 9);
}

bool isDevice(std::string name) {
    name = name.substr(0, name.find('.'));
    while (!name.empty() && name.back() == ' ') name.pop_back();
    for (char& c : name)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    const bool isPort = name.size() == 4 && (name.substr(0, 3) == "COM" || name.substr(0, 3) == "LPT");
    return name == "NUL" || name == "CON" || name == "PRN" || name == "AUX" || name == "CONIN$" || name == "CONOUT$" ||
           (isPort && name[3] >= '0' && name[3] <= '9');
}

void requireName(const std::string& name) {
    require(!name.empty() && name != "." && name != ".." && !isDevice(name), "is no name: ", name);
    for (const char c : name)
        require(static_cast<unsigned char>(c) >= 0x20 && std::string("<>:\"/\\|?*").find(c) == std::string::npos,
                "has a character that no name has: ", name);
}

void check(const std::string& input) {
    using Kind = xref::Reference::Kind;
    const xref::Reference reference = xref::readReference(input);
    require(reference.names.empty() == (reference.kind == Kind::Nowhere), "names without a kind");
    if (reference.kind == Kind::Nowhere) return;
    for (const std::string& name : reference.names) requireName(name);
    require(reference.leavesFolders == 0 || reference.kind == Kind::Relative, "only a relative one leaves folders");
    const std::string& root = reference.root;
    if (reference.kind == Kind::Drive) {
        require(root.size() == 3 && root.substr(1) == ":/", "the root of a drive: ", root);
    } else if (reference.kind == Kind::Share) {
        const std::size_t middle = root.find('/', 2);
        require(root.substr(0, 2) == "//" && root.back() == '/' && middle < root.size() - 1, "of a share: ", root);
        requireName(root.substr(2, middle - 2));
        requireName(root.substr(middle + 1, root.size() - middle - 2));
    } else {
        require(root.empty(), "a root: ", root);
    }
    // What was understood is understood the same once more.
    std::string again = root;
    if (reference.kind == Kind::Rooted) again = "/";
    for (std::size_t i = 0; i != reference.leavesFolders; ++i) again += "../";
    again += xref::joinNames(reference.names);
    const bool isTrimmed = again.front() == ' ' || again.back() == ' ';  // a URL may hold blanks at its ends
    const bool isUrl = again.size() >= 5 && again[4] == ':';
    if (isTrimmed || isUrl) return;
    const xref::Reference second = xref::readReference(again);
    require(second.kind == reference.kind && second.names == reference.names && second.root == root,
            "not stable: ", again);
}

}  // namespace

const Target kReferences = {"references", 100000, &generate, &check};

}  // namespace xo::fuzz
