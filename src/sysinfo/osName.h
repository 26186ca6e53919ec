// The name of the system.
#ifndef XO_SYSINFO_OSNAME_H
#define XO_SYSINFO_OSNAME_H

#include <string>

namespace xo::sysinfo {

// "Windows 11 Pro". The registry has "Windows 10 Pro" for it; the build number
// decides. Names of servers and of other systems are returned unchanged.
std::string osName(std::string registryName, unsigned build, bool isServer);

}  // namespace xo::sysinfo

#endif
