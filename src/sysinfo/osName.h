// What the system is called.
#ifndef XO_SYSINFO_OSNAME_H
#define XO_SYSINFO_OSNAME_H

#include <string>

namespace xo::sysinfo {

// "Windows 11 Pro": the registry goes on calling it 10.
std::string osName(std::string registryName, unsigned build, bool isServer);

}  // namespace xo::sysinfo

#endif
