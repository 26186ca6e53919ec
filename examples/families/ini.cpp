// A program keeps the place of its window in a settings file that its user edits as well. It changes its own keys and
// nothing else: the user's comments, order and spelling stay.
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
    file << "; mine\n"
            "language = nb\n"
            "\n"
            "[window]\n"
            "; as wide as my screen\n"
            "width  = 0x780\n"
            "height = 1080\n"
            "\n"
            "[colours]\n"
            "back = white\n";
    return static_cast<bool>(file.flush());
}

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeBasic);
    const std::string path = "settings.ini";
    Settings settings;
    if (!writeUserFile(path) || !xo::LoadIniFile(path, settings)) return 1;

    const std::int64_t width = settings.getValuePath("window/width", 800, '/').toInteger();
    const std::int64_t height = settings.getValuePath("window/height", 600, '/').toInteger();
    std::cout << "The window was " << width << " by " << height << ".\n\n";

    Settings changes;
    changes.editValuePath("window/width") = width;  // the same number: its line stays as it is
    changes.editValuePath("window/height") = 900;
    changes.editValuePath("window/is full screen") = false;
    changes.editValuePath("recent/1") = "C:/data/\xC3\xA5r 2020.csv";
    if (!xo::UpdateIniFile(path, changes)) return 1;
    std::cout << std::ifstream(path, std::ios::binary).rdbuf();

    xo::terminateXoSystem();
    return 0;
}
