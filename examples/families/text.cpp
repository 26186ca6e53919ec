// Titles that people typed become names of files: cleaned, valid on Windows, without duplicates, in the order in which
// people expect to find them.
#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include "xoSystem/xoInit.h"
#include "xoSystem/xoStringUtils.h"

namespace {

using Text = xo::xoStringUtils;

// "  Trip 10:  Ålesund; Trip 2: Oslo " gives "Trip 2_ Oslo" and "Trip 10_ Ålesund".
std::vector<std::string> fileNames(const std::string& typed) {
    std::vector<std::string> names = Text::Split(typed, ';', /*skipEmpty=*/true);
    for (std::string& name : names) {
        Text::trimAndRemoveConsecutiveSpaces(name);
        Text::GenerateValidFileName(name);
    }
    std::sort(names.begin(), names.end(), &Text::UTF8NaturalSortFunctionCaseInsensitive);
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

// A program of the version "2.10.1" opens files of the versions up to "2.10", whatever stands behind that.
bool canOpen(const std::string& program, const std::string& file) {
    const auto result = Text::compareSoftwareVersion(program, file, /*maxComponents=*/2);
    return (result & (Text::SoftwareVersionEqual | Text::SoftwareVersionNewer)) != 0;
}

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeBasic);
    const std::string typed = "  Trip 10:  \xC3\x85lesund;Trip 2: Oslo ; aux;Trip 2: Oslo;";

    for (const std::string& name : fileNames(typed))
        std::cout << name << ".txt  (" << Text::CountUtf8Char(name) << " characters, " << name.size() << " bytes)\n";

    for (const char* const file : {"2.9", "2.10.7", "2.11"})
        std::cout << "2.10.1 opens " << file << ": " << (canOpen("2.10.1", file) ? "yes" : "no") << '\n';

    // The sum in the user's own way of writing, and the bytes of a key for a support call.
    std::string key;
    if (!Text::FromHex("c0ffee", 6, key)) return 1;
    std::string hex;
    Text::ToHex(key.data(), key.size(), hex);
    std::cout << "total " << Text::roundNumber(1234.5678, 2, ',') << ", key " << hex << '\n';
    Text::SecureClear(key);

    xo::terminateXoSystem();
    return key.empty() ? 0 : 1;
}
