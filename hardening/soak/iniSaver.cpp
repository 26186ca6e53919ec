// Saves INI files, one for each thread, until it is killed: iniSaver folder board cell
// All keys of a file have the number of its save.
#include <filesystem>

#include "soak/soakBoard.h"
// CommandLineToArgvW
#include <shellapi.h>

#include "xoSystem/xoIniFile.h"

int main() {
    int count = 0;
    wchar_t** const arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (count != 4) return 2;
    const std::filesystem::path folder = arguments[1];
    const xo::tests::SoakBoard board(arguments[2]);
    board.workForEver(std::stoul(arguments[3]), [&](xo::tests::SoakCell& mine) {
        const std::int64_t number = mine.done + 1;
        xo::xoVariant::xoVariantMapImpl values;
        for (int key = 0; key < 1000; ++key) values["key" + std::to_string(key)] = number;
        const auto cell = &mine - &board.cell(0);
        if (xo::SaveIniFile((folder / (std::to_string(cell) + ".ini")).u8string(), values)) mine.done = number;
    });
}
