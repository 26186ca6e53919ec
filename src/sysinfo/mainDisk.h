// The physical disk that holds the system drive.
#ifndef XO_SYSINFO_MAINDISK_H
#define XO_SYSINFO_MAINDISK_H

#include <optional>
#include <string>

namespace xo::sysinfo {

// "\\.\PHYSICALDRIVE0", for instance; empty when it cannot be determined. May take up to 10 seconds.
std::string findMainDisk();

// The two ways to find it, each for a drive such as "C:"; empty when that way fails. diskFromManagementService needs a
// thread that has not initialised COM, and may take more than two minutes.
std::string diskFromManagementService(const std::wstring& drive);
std::string diskFromVolume(const std::wstring& drive);

// "C:", for instance. Empty when the folder of Windows has no drive letter.
std::wstring systemDrive();

// The number of the disk that holds a volume, which is given as a device without a separator at its end: "\\.\C:".
std::optional<unsigned> diskNumberOf(const std::wstring& volumeDevice);

}  // namespace xo::sysinfo

#endif
