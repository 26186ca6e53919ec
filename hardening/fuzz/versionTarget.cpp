// Version texts against a reader of one number at a time. An input is two texts with a byte 1E between them.
#include <algorithm>

#include "fuzz.h"
#include "xoSystem/xoStringUtils.h"

namespace xo::fuzz {
namespace {

// Whether the text is numbers of 32 bits between dots; an empty place is 0.
bool readVersion(const std::string& text, std::vector<std::uint64_t>& numbers) {
    std::istringstream in(text);
    for (std::string piece; std::getline(in, piece, '.');) {
        xoStringUtils::trim(piece);
        if (piece.find('\0') != std::string::npos) return false;
        char* end = nullptr;
        const long long value = std::strtoll(piece.c_str(), &end, 0);
        if (*end != '\0' || value < 0 || value > 0xFFFFFFFF) return false;
        numbers.push_back(static_cast<std::uint64_t>(value));
    }
    return true;
}

int compareVersions(const std::string& a, const std::string& b, std::size_t most) {
    std::vector<std::uint64_t> first, second;
    if (!readVersion(a, first) || !readVersion(b, second)) return xoStringUtils::SoftwareVersionInvalid;
    second.resize((std::min)(second.size(), most));
    first.resize(second.size());
    if (second.empty()) return xoStringUtils::SoftwareVersionInvalid;
    return first == second  ? xoStringUtils::SoftwareVersionEqual
           : first < second ? xoStringUtils::SoftwareVersionOlder
                            : xoStringUtils::SoftwareVersionNewer;
}

void checkVersions(const std::string& input) {
    Bytes bytes(input);
    const std::string a = bytes.until('\x1E');
    const std::string b = bytes.rest();
    for (const std::size_t most : {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{3}, SIZE_MAX}) {
        const int result = xoStringUtils::compareSoftwareVersion(a, b, most);
        const int expected = compareVersions(a, b, most);
        require(result == expected, '"', a, "\" with \"", b, "\" is ", result, ", not ", expected);
    }
}

std::string generateVersions(Random& random) {
    static const std::vector<std::string_view> pieces = {
        "0", "1", "2", "10", "010", "0x1F", "08", "4294967295", "4294967296",         "-1", "+3", ".",
        ".", ".", ".", ".",  " ",   "\t",   "a",  "0x",         "9223372036854775808"};
    return random.join(pieces, 8) + '\x1E' + random.join(pieces, 8);
}

}  // namespace

const Target kVersions = {"versions", 200000, &generateVersions, &checkVersions};

}  // namespace xo::fuzz
