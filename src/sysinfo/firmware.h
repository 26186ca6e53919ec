// The description of the machine by its firmware: the tables of SMBIOS, https://www.dmtf.org/standards/smbios
#ifndef XO_SYSINFO_FIRMWARE_H
#define XO_SYSINFO_FIRMWARE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace xo::sysinfo {

// Unknown texts are empty, and so are placeholders such as "To be filled by O.E.M.", which many machines have.
struct Machine {
    std::string manufacturer, product, board, serial;
    std::string biosVendor, biosVersion, biosDate;  // the date as "2023-04-01"

    struct Module {
        std::uint64_t bytes = 0;
        std::uint32_t mtPerSecond = 0;  // millions of transfers; 0 unknown
        std::string kind, slot;         // "DDR5"
    };
    std::vector<Module> modules;  // without the empty slots
};

// Reads the tables as GetSystemFirmwareTable returns them for "RSMB". They may be cut short or broken: reading ends at
// the first broken table, and the values behind it stay unknown.
Machine readMachine(std::string_view firmwareTables);

// The tables of this machine; empty when the system has none.
std::string firmwareTables();

}  // namespace xo::sysinfo

#endif
