// Which physical disk the system drive lies on.
#ifndef XO_SYSINFO_MAINDISK_H
#define XO_SYSINFO_MAINDISK_H

#include <string>

namespace xo::sysinfo {

// "\\.\PHYSICALDRIVE0", or empty when nobody knows. May take up to 10 seconds.
std::string findMainDisk();

// The two ways to find out, each giving the disk of a drive such as "C:". The first one wants a thread that has not
// initialised COM, and takes as long as the management service takes.
std::string diskFromManagementService(const std::wstring& drive);
std::string diskFromVolume(const std::wstring& drive);

}  // namespace xo::sysinfo

#endif
