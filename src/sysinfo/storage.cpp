// The parts of the report that ask drivers: graphics, volumes and disks.
#include <algorithm>
#include <array>
#include <optional>

#include "platform/openFile.h"
#include "platform/quietErrors.h"
#include "platform/wideText.h"
#include "sysinfo/graphics.h"
#include "sysinfo/mainDisk.h"
#include "sysinfo/recordBytes.h"
#include "sysinfo/reportParts.h"
#include "xoSystem/xoStringUtils.h"

#include <winioctl.h>

namespace xo::sysinfo {
namespace {

using Map = xoVariant::xoVariantMapImpl;

struct VolumePolicy {
    using Type = HANDLE;
    static Type none() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(Type search) noexcept { ::FindVolumeClose(search); }
};
using VolumeSearch = platform::Owned<VolumePolicy>;

constexpr std::size_t kVolumeName = 64;  // "\\?\Volume{8b0ab1c4-33d7-4e0c-9b4f-6f0f6d1ad1c2}\" has 49

// The kind by the path where the volume is mounted. Null for a volume that the report leaves out.
const char* volumeKind(const std::wstring& path) {
    switch (::GetDriveTypeW(path.c_str())) {
        case DRIVE_FIXED: return "fixed";
        case DRIVE_REMOVABLE: return "removable";
        case DRIVE_CDROM: return "optical";
        case DRIVE_RAMDISK: return "ram";
        default: return nullptr;  // a network drive, or unknown
    }
}

// The first drive or folder where the volume is mounted; empty when it is mounted nowhere. The system returns all of
// them, each with its NUL. Network drives are not volumes of this machine and do not occur.
std::wstring mountedAt(const wchar_t* volume) {
    std::wstring paths(MAX_PATH, L'\0');
    DWORD size = 0;
    while (!::GetVolumePathNamesForVolumeNameW(volume, paths.data(), static_cast<DWORD>(paths.size()), &size)) {
        const DWORD error = ::GetLastError();
        // The second condition ends the loop if the system does not ask for a larger buffer than it got.
        if (error != ERROR_MORE_DATA || size <= paths.size()) return {};
        paths.resize(size);
    }
    return paths.substr(0, paths.find(L'\0'));
}

// "1A2B-3C4D", as the command dir shows it.
std::string serialText(DWORD serial) {
    char text[16];
    const std::string digits = (std::snprintf(text, sizeof text, "%08lX", serial), text);
    return digits.substr(0, 4) + "-" + digits.substr(4);
}

// The volume is a name that ends with a separator, as FindFirstVolumeW returns it.
void reportVolume(Section section, std::wstring volume, const std::wstring& path, const char* kind, bool withIdentity) {
    wchar_t label[MAX_PATH + 1] = L"", fileSystem[MAX_PATH + 1] = L"";
    DWORD serial = 0;
    ULARGE_INTEGER total{}, free{};
    section.set("path", platform::toUtf8(path));
    section.set("kind", kind);
    if (::GetVolumeInformationW(path.c_str(), label, MAX_PATH + 1, &serial, nullptr, nullptr, fileSystem,
                                MAX_PATH + 1)) {
        section.set("fileSystem", platform::toUtf8(fileSystem));
        if (withIdentity) section.set("label", platform::toUtf8(label));
        if (withIdentity && serial != 0) section.set("serial", serialText(serial));
    }
    // Where users have quotas, the total is that of this user, and the free bytes are those of the volume.
    if (::GetDiskFreeSpaceExW(path.c_str(), nullptr, &total, &free)) {
        section.setNumber("totalBytes", total.QuadPart);
        section.setAnyNumber("freeBytes", static_cast<std::int64_t>(free.QuadPart));
    }
    volume.pop_back();  // with its separator the name means the root folder, without it the device
    if (const auto disk = diskNumberOf(volume)) section.setAnyNumber("disk", *disk);
}

// The index is STORAGE_BUS_TYPE. https://learn.microsoft.com/windows/win32/api/winioctl/ne-winioctl-storage_bus_type
constexpr const char* kBuses[] = {
    "",    "SCSI", "ATAPI", "ATA", "IEEE 1394", "SSA",         "Fibre Channel",  "USB",  "RAID", "iSCSI",
    "SAS", "SATA", "SD",    "MMC", "Virtual",   "File backed", "Storage Spaces", "NVMe", "SCM",  "UFS"};

// The driver's descriptor for a property, as bytes; empty when the query fails.
std::string queryStorage(const platform::FileHandle& disk, STORAGE_PROPERTY_ID property) {
    STORAGE_PROPERTY_QUERY query{};
    query.PropertyId = property;
    query.QueryType = PropertyStandardQuery;
    // Texts of unknown length follow the fixed part of the descriptor. What does not fit is cut off, and is not read
    // then.
    std::string answer(4096, '\0');
    DWORD size = 0;
    const bool isDone = ::DeviceIoControl(disk.get(), IOCTL_STORAGE_QUERY_PROPERTY, &query, sizeof query, answer.data(),
                                          static_cast<DWORD>(answer.size()), &size, /*lpOverlapped=*/nullptr) != 0;
    answer.resize(isDone ? (std::min)(std::size_t{size}, answer.size()) : 0);
    return answer;
}

// The text whose offset is in the field at offsetAt; the offset 0 means that there is none.
std::string descriptorText(const RecordBytes& descriptor, std::size_t offsetAt) {
    const auto offset = descriptor.number<std::uint32_t>(offsetAt);
    std::string text(offset == 0 ? std::string_view() : descriptor.text(offset));
    if (!xoStringUtils::IsUtf8String(text)) text = platform::fromNative(text);
    xoStringUtils::trimAndRemoveConsecutiveSpaces(text);
    return xoStringUtils::MakePrintable(text);
}

// https://learn.microsoft.com/windows/win32/api/winioctl/ns-winioctl-storage_device_descriptor
void reportDevice(Section& section, const platform::FileHandle& disk, bool isMadeUp, bool withIdentity) {
    // Offsets in the descriptor: removable 10, vendor 12, product 16, serial number 24, bus 28.
    const std::string answer = queryStorage(disk, StorageDeviceProperty);
    const RecordBytes descriptor(answer);
    if (descriptor.size() == 0) return;
    section.setFlag("removable", descriptor.byte(10) != 0);
    // A newer system may report a bus that is not in the list.
    if (const auto bus = descriptor.number<std::uint32_t>(28); bus < std::size(kBuses)) section.set("bus", kBuses[bus]);
    if (isMadeUp) return;
    const std::string vendor = descriptorText(descriptor, 12), product = descriptorText(descriptor, 16);
    section.set("model", vendor.empty() || product.empty() ? vendor + product : vendor + " " + product);
    if (withIdentity) section.set("serial", descriptorText(descriptor, 24));
}

// No value when the driver does not answer, as a card reader without a card.
std::optional<std::uint64_t> diskBytes(const platform::FileHandle& disk) {
    DISK_GEOMETRY_EX geometry{};
    DWORD size = 0;
    if (!::DeviceIoControl(disk.get(), IOCTL_DISK_GET_DRIVE_GEOMETRY_EX, nullptr, 0, &geometry, sizeof geometry, &size,
                           /*lpOverlapped=*/nullptr))
        return std::nullopt;
    return static_cast<std::uint64_t>(geometry.DiskSize.QuadPart);
}

// Queries need no access rights to the device, and opening it without any needs no administrator. Owns nothing when
// there is no such disk.
platform::FileHandle openDisk(unsigned number) {
    return platform::openFile(LR"(\\.\PhysicalDrive)" + std::to_wstring(number), /*access=*/0,
                              FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING, /*flags=*/0);
}

}  // namespace

Map reportGraphics() {
    Map map;
    const auto adapters = readAdapters();
    if (!adapters) return map;
    std::size_t number = 0;
    for (const DirectXDeviceInfo& adapter : *adapters) {
        Section one = Section(map).below(number++);
        one.set("name", adapter.name);
        one.setNumber("vendorId", adapter.vendorId);
        one.setNumber("deviceId", adapter.deviceId);
        one.setNumber("dedicatedBytes", adapter.dedicatedVideoBytes);
        one.setNumber("sharedBytes", adapter.sharedSystemBytes);
        one.set("driver", adapter.driverVersion);
        one.setFlag("software", adapter.isSoftware);
    }
    return map;
}

Map reportVolumes(bool withIdentity) {
    const platform::QuietErrors quiet;
    Map map;
    wchar_t volume[kVolumeName] = L"";
    std::size_t number = 0;
    const VolumeSearch search(::FindFirstVolumeW(volume, kVolumeName));
    if (!search) return map;
    do {
        const std::wstring path = mountedAt(volume);
        // Asked once: a drive may be removed at any moment.
        const char* const kind = path.empty() ? nullptr : volumeKind(path);
        if (kind) reportVolume(Section(map).below(number++), volume, path, kind, withIdentity);
    } while (::FindNextVolumeW(search.get(), volume, kVolumeName));
    return map;
}

Map reportDisks(bool withIdentity) {
    // The numbers have gaps where disks were removed, so a missing disk does not end the search; 64 is far more than a
    // desktop machine has.
    constexpr unsigned kDisks = 64;
    const platform::QuietErrors quiet;
    const bool isMadeUp = !wineVersion().empty();
    const auto mainDisk = diskNumberOf(LR"(\\.\)" + systemDrive());
    Map map;
    for (unsigned number = 0; number < kDisks; ++number) {
        const platform::FileHandle disk = openDisk(number);
        if (!disk) continue;
        Section one = Section(map).below(number);
        one.set("device", R"(\\.\PHYSICALDRIVE)" + std::to_string(number));
        reportDevice(one, disk, isMadeUp, withIdentity);
        if (isMadeUp) continue;
        one.setNumber("bytes", diskBytes(disk).value_or(0));
        const std::string penalty = queryStorage(disk, StorageDeviceSeekPenaltyProperty);
        // A drive that has to move a head reports a seek penalty:
        // https://learn.microsoft.com/windows/win32/api/winioctl/ns-winioctl-device_seek_penalty_descriptor
        if (penalty.size() > 8) one.set("kind", RecordBytes(penalty).byte(8) != 0 ? "hdd" : "ssd");
        if (mainDisk) one.setFlag("main", *mainDisk == number);
    }
    return map;
}

}  // namespace xo::sysinfo
