// What the firmware tells of the machine: the tables of SMBIOS, https://www.dmtf.org/standards/smbios
#ifndef XO_SYSINFO_FIRMWARE_H
#define XO_SYSINFO_FIRMWARE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace xo::sysinfo {

// Unknown texts are empty: many machines have "To be filled by O.E.M." there.
struct Machine {
    std::string manufacturer, product, board, serial;
    std::string biosVendor, biosVersion, biosDate;  // the date as "2023-04-01"

    struct Module {
        std::uint64_t bytes = 0;
        std::uint32_t mtPerSecond = 0;  // millions of transfers; 0 unknown
        std::string kind, slot;         // "DDR5"
    };
    std::vector<Module> modules;  // those that are there
};

// Of the tables as GetSystemFirmwareTable gives them for "RSMB". Tables that are cut short tell less.
Machine readMachine(std::string_view firmwareTables);

// Empty where the system does not give them.
std::string firmwareTables();

}  // namespace xo::sysinfo

#endif
