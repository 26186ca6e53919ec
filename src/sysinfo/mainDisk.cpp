// Finds the disk of the system drive: by a query of the volume, or by the management service where that fails.
#include "sysinfo/mainDisk.h"

#include <memory>

#include "platform/openFile.h"
#include "sysinfo/errand.h"

#include <winioctl.h>

namespace xo::sysinfo {
namespace {

// Promised for getMainHDDDevice in the public header.
constexpr DWORD kServiceLimitMs = 10'000;

// Asks on a new thread: the caller's thread may have initialised COM with another concurrency model, which cannot be
// changed, and a thread that gets no answer in time can be abandoned.
// https://learn.microsoft.com/windows/win32/api/combaseapi/nf-combaseapi-coinitializeex
std::string askManagementService(const std::wstring& drive) {
    static Lane lane(L"xoSystem main disk");
    const auto disk = std::make_shared<std::string>();
    const Deadline deadline(kServiceLimitMs);
    Errand errand(lane, deadline, [drive, disk] { *disk = diskFromManagementService(drive); });
    return errand.wait(deadline) ? *disk : std::string();
}

}  // namespace

std::wstring systemDrive() {
    wchar_t folder[MAX_PATH];
    const UINT length = ::GetSystemWindowsDirectoryW(folder, MAX_PATH);
    if (length < 2 || length > MAX_PATH || folder[1] != L':') return {};
    return {folder, 2};
}

std::optional<unsigned> diskNumberOf(const std::wstring& volumeDevice) {
    // A query needs no access rights, so this works without an administrator's rights.
    // https://learn.microsoft.com/windows/win32/api/winioctl/ni-winioctl-ioctl_volume_get_volume_disk_extents
    const platform::FileHandle volume =
        platform::openFile(volumeDevice, /*access=*/0, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING, /*flags=*/0);
    if (!volume) return std::nullopt;
    struct {
        VOLUME_DISK_EXTENTS extents;
        DISK_EXTENT more[31];  // a volume may lie on several disks; the first one counts
    } answer{};
    DWORD size = 0;
    if (!::DeviceIoControl(volume.get(), IOCTL_VOLUME_GET_VOLUME_DISK_EXTENTS, nullptr, 0, &answer, sizeof answer,
                           &size,
                           /*lpOverlapped=*/nullptr) ||
        answer.extents.NumberOfDiskExtents == 0)
        return std::nullopt;
    return answer.extents.Extents[0].DiskNumber;
}

std::string diskFromVolume(const std::wstring& drive) {
    const auto number = diskNumberOf(LR"(\\.\)" + drive);
    return number ? R"(\\.\PHYSICALDRIVE)" + std::to_string(*number) : std::string();
}

// The volume answers at once, the management service only after seconds. On Wine a volume yields no disk.
std::string findMainDisk() {
    const std::wstring drive = systemDrive();
    if (drive.empty()) return {};
    std::string disk = diskFromVolume(drive);
    if (disk.empty()) disk = askManagementService(drive);
    return disk;
}

}  // namespace xo::sysinfo
