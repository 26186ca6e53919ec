// Reads the tables of SMBIOS. Offsets and values are those of the standard: https://www.dmtf.org/standards/smbios
#include "sysinfo/firmware.h"

#include <algorithm>
#include <iterator>

#include "platform/wideText.h"
#include "platform/windows.h"
#include "sysinfo/recordBytes.h"
#include "text/ascii.h"
#include "xoSystem/xoStringUtils.h"

namespace xo::sysinfo {
namespace {

// Texts that makers of boards leave where no real one was entered, in lower case without blanks and dots, as
// isPlaceholder compares them.
constexpr std::string_view kPlaceholders[] = {"tobefilledbyoem",
                                              "defaultstring",
                                              "systemmanufacturer",
                                              "systemproductname",
                                              "systemserialnumber",
                                              "notspecified",
                                              "notapplicable",
                                              "none",
                                              "n/a",
                                              "unknown",
                                              "oem",
                                              "invalid",
                                              "undefined",
                                              "0",
                                              "00000000",
                                              "123456789",
                                              "baseboardproduct",
                                              "systemname"};

bool isPlaceholder(const std::string& text) {
    std::string plain;
    std::copy_if(text.begin(), text.end(), std::back_inserter(plain), [](char c) { return c != ' ' && c != '.'; });
    return std::any_of(std::begin(kPlaceholders), std::end(kPlaceholders),
                       [&](std::string_view each) { return text::equalIgnoringCase(plain, each); });
}

// The standard allows ASCII only, but firmware contains other bytes: what is not UTF-8 is read in the native code page.
// Empty for a placeholder.
std::string cleaned(std::string_view bytes) {
    std::string text(bytes);
    if (!xoStringUtils::IsUtf8String(text)) text = platform::fromNative(text);
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; };
    text.erase(std::remove_if(text.begin(), text.end(), isControl), text.end());
    xoStringUtils::trimAndRemoveConsecutiveSpaces(text);
    return isPlaceholder(text) ? std::string() : text;
}

// One structure of the standard: a formatted area, whose first byte is the type and whose second is its length, and
// behind it the texts. A field refers to a text by its number, from 1 on.
class Table {
public:
    // Cuts the table off the bytes; an empty one when it is cut short.
    static Table take(std::string_view& bytes) {
        Table table;
        const RecordBytes head(bytes);
        const std::size_t length = head.byte(1);
        // Two NULs end the texts, also where there are none. The search begins behind the fields, which may hold NULs.
        const std::size_t end = bytes.find(std::string_view("\0\0", 2), length);
        if (length >= kHead && length <= bytes.size() && end != std::string_view::npos) {
            table.mFields = RecordBytes(bytes.substr(0, length));
            table.mTexts = bytes.substr(length, end + 1 - length);
            bytes.remove_prefix(end + 2);
        } else {
            // Without its length nothing behind a broken table can be found.
            bytes = {};
        }
        return table;
    }

    bool isWhole() const { return mFields.size() != 0; }
    unsigned type() const { return mFields.byte(0); }
    const RecordBytes& fields() const { return mFields; }

    // Empty for the number 0, which means no text, and for a number beyond the last text.
    std::string text(std::size_t field) const {
        std::string_view rest = mTexts;
        for (unsigned number = mFields.byte(field); number > 0; --number) {
            const std::string_view one = rest.substr(0, rest.find('\0'));
            if (one.empty()) break;
            if (number == 1) return cleaned(one);
            rest.remove_prefix((std::min)(one.size() + 1, rest.size()));
        }
        return {};
    }

private:
    static constexpr std::size_t kHead = 4;  // type, length, and a handle of 2 bytes

    RecordBytes mFields{{}};
    std::string_view mTexts;  // each with its NUL
};

// "04/01/2023" as "2023-04-01"; anything else as it is.
std::string isoDate(const std::string& date) {
    const std::string_view pattern = "dd/dd/dddd";
    const bool isDate = std::equal(date.begin(), date.end(), pattern.begin(), pattern.end(), [](char c, char wanted) {
        return wanted == 'd' ? c >= '0' && c <= '9' : c == wanted;
    });
    return isDate ? date.substr(6) + "-" + date.substr(0, 2) + "-" + date.substr(3, 2) : date;
}

// The memory types of the standard (structure 17, offset 0x12). Empty for older or unknown ones.
const char* memoryKind(unsigned type) {
    switch (type) {
        case 0x0F: return "SDRAM";
        case 0x12: return "DDR";
        case 0x13: return "DDR2";
        case 0x18: return "DDR3";
        case 0x1A: return "DDR4";
        case 0x1B: return "LPDDR";
        case 0x1C: return "LPDDR2";
        case 0x1D: return "LPDDR3";
        case 0x1E: return "LPDDR4";
        case 0x20: return "HBM";
        case 0x21: return "HBM2";
        case 0x22: return "DDR5";
        case 0x23: return "LPDDR5";
        case 0x24: return "HBM3";
        default: return "";
    }
}

// The size field (0x0C) has megabytes, or kilobytes if its top bit is set. A size that does not fit 15 bits is in the
// extended field (0x1C), in megabytes. 0 for an empty slot and for an unknown size.
std::uint64_t moduleBytes(const RecordBytes& fields) {
    constexpr unsigned kUnknown = 0xFFFF, kIsFurtherOn = 0x7FFF, kIsInKilobytes = 0x8000;
    const unsigned size = fields.number<std::uint16_t>(0x0C);
    if (size == kUnknown) return 0;
    if (size == kIsFurtherOn) return std::uint64_t{fields.number<std::uint32_t>(0x1C) & 0x7FFFFFFF} << 20;
    return (size & kIsInKilobytes) != 0 ? std::uint64_t{size & kIsFurtherOn} << 10 : std::uint64_t{size} << 20;
}

// The configured speed (0x20), or else the highest possible one (0x15). Each has an extended field for speeds that do
// not fit 16 bits. Fields that an older table lacks read as 0, which means unknown.
std::uint32_t moduleSpeed(const RecordBytes& fields) {
    constexpr unsigned kIsFurtherOn = 0xFFFF;
    const std::pair<std::size_t, std::size_t> places[] = {{0x20, 0x58}, {0x15, 0x54}};
    for (const auto& [place, furtherOn] : places) {
        const unsigned speed = fields.number<std::uint16_t>(place);
        const std::uint32_t whole = speed == kIsFurtherOn ? fields.number<std::uint32_t>(furtherOn) : speed;
        if (whole != 0) return whole;
    }
    return 0;
}

// Takes what a machine needs from the structures for the BIOS, the system, the board and a memory device.
void add(const Table& table, Machine& machine) {
    switch (table.type()) {
        case 0:  // BIOS information
            machine.biosVendor = table.text(0x04);
            machine.biosVersion = table.text(0x05);
            machine.biosDate = isoDate(table.text(0x08));
            break;
        case 1:  // system information
            machine.manufacturer = table.text(0x04);
            machine.product = table.text(0x05);
            machine.serial = table.text(0x07);
            break;
        case 2:  // baseboard information
            // A machine may have several boards. The first one counts.
            if (machine.board.empty()) machine.board = table.text(0x05);
            break;
        case 17: {  // memory device: a slot, which may be empty
            const std::uint64_t bytes = moduleBytes(table.fields());
            if (bytes != 0)
                machine.modules.push_back(
                    {bytes, moduleSpeed(table.fields()), memoryKind(table.fields().byte(0x12)), table.text(0x10)});
            break;
        }
        default: break;
    }
}

}  // namespace

Machine readMachine(std::string_view firmwareTables) {
    constexpr std::size_t kHead = 8;  // of Windows, not of the standard: versions, and at 4 the length of the tables
    constexpr unsigned kEnd = 127;    // the type of the structure behind the last one
    Machine machine;
    std::string_view rest = RecordBytes(firmwareTables).from(kHead);
    rest = rest.substr(0, RecordBytes(firmwareTables).number<std::uint32_t>(4));
    while (!rest.empty()) {
        const Table table = Table::take(rest);
        if (!table.isWhole() || table.type() == kEnd) break;
        add(table, machine);
    }
    return machine;
}

std::string firmwareTables() {
    constexpr DWORD kProvider = 'R' << 24 | 'S' << 16 | 'M' << 8 | 'B';
    // The first call returns the size, 0 when there are no tables.
    std::string tables(::GetSystemFirmwareTable(kProvider, 0, nullptr, 0), '\0');
    // A size beyond the buffer's means that nothing was written:
    // https://learn.microsoft.com/windows/win32/api/sysinfoapi/nf-sysinfoapi-getsystemfirmwaretable
    const UINT size = ::GetSystemFirmwareTable(kProvider, 0, tables.data(), static_cast<DWORD>(tables.size()));
    tables.resize(size <= tables.size() ? size : 0);
    return tables;
}

}  // namespace xo::sysinfo
