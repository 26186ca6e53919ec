// The rules for names of files: https://learn.microsoft.com/windows/win32/fileio/naming-a-file
#include "text/fileNames.h"

#include "text/ascii.h"

namespace xo::text {
namespace {

// A decimal digit, or one of the superscripts that Windows counts as such here.
bool isPortNumber(std::string_view text) {
    if (text.size() == 1) return text[0] >= '0' && text[0] <= '9';
    return text == "\xC2\xB9" || text == "\xC2\xB2" || text == "\xC2\xB3";
}

// Without regard to case, as the file system compares names.
bool isDevice(std::string_view stem) {
    for (const std::string_view device : {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"}) {
        if (equalIgnoringCase(stem, device)) return true;
    }
    const std::string_view port = stem.substr(0, 3);
    if (!equalIgnoringCase(port, "COM") && !equalIgnoringCase(port, "LPT")) return false;
    return isPortNumber(stem.substr(3));
}

}  // namespace

bool mayStandInFileName(char c) {
    return static_cast<unsigned char>(c) >= 0x20 && std::string_view("<>:\"/\\|?*").find(c) == std::string_view::npos;
}

std::string_view deviceStem(std::string_view name) {
    name = name.substr(0, name.find('.'));
    return name.substr(0, name.find_last_not_of(' ') + 1);
}

bool isDeviceName(std::string_view name) { return isDevice(deviceStem(name)); }

}  // namespace xo::text
