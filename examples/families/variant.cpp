// Settings in three layers: what the program brings, what the file of the user says, and what this run has changed.
// Only the changes are saved, and whatever else the file holds stays in it.
#include <cstdint>
#include <fstream>
#include <iostream>
#include <string>

#include "xoSystem/xoIniFile.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoVariant.h"

namespace {

using Settings = xo::xoVariant::xoVariantMapImpl;

bool writeUserFile(const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    file << "; mine\nlanguage=nb\n[window]\nwidth=1024\nfull screen=TRUE\n";
    return static_cast<bool>(file.flush());
}

// A value of another type than its default counts as absent: a typing error in the file does no harm.
xo::xoVariant valueOf(const Settings& settings, const char* path, const xo::xoVariant& otherwise) {
    xo::xoVariant value;
    return settings.getValuePath(path, otherwise, '/').convertLosslessTo(otherwise.getType(), value) ? value
                                                                                                     : otherwise;
}

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeBasic);
    const std::string path = "user.ini";
    Settings settings;
    if (!writeUserFile(path) || !xo::LoadIniFile(path, settings)) return 1;

    std::cout << "language    " << valueOf(settings, "language", "en").toString() << '\n'
              << "width       " << valueOf(settings, "window/width", 800).toInteger() << '\n'
              << "height      " << valueOf(settings, "window/height", 600).toInteger() << '\n'
              << "full screen " << valueOf(settings, "window/full screen", false).toString() << '\n'
              << "zoom        " << valueOf(settings, "language", 1.5).toReal() << '\n';

    Settings changes;
    changes.editValuePath("window/width") = 1280;
    changes.editValuePath("recent/1") = "C:/data/\xC3\xA5r 2020.csv";
    if (!xo::SaveIniFile(path, changes, /*merge=*/true)) return 1;
    std::cout << '\n' << std::ifstream(path, std::ios::binary).rdbuf();

    // A list of records, as a table of them comes from a file.
    xo::xoVariant rows(xo::xoVariant::LIST);
    for (const char* const cell : {"12", "0.5", "12,5", "north"})
        rows.editList().push_back(xo::xoVariant::BuildFromString(cell));
    std::cout << '\n';
    for (const xo::xoVariant& cell : rows.getList())
        std::cout << cell.getTypeAsString() << ' ' << cell.toString() << '\n';

    xo::terminateXoSystem();
    return 0;
}
