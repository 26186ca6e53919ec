// The builds of Windows 11 begin with 22000:
// https://learn.microsoft.com/windows/release-health/windows11-release-information
#include "sysinfo/osName.h"

#include <string_view>

namespace xo::sysinfo {

std::string osName(std::string registryName, unsigned build, bool isServer) {
    constexpr unsigned kFirstBuildOf11 = 22000;
    constexpr std::string_view kTen = "Windows 10";
    if (!isServer && build >= kFirstBuildOf11 && registryName.compare(0, kTen.size(), kTen) == 0)
        registryName.replace(0, kTen.size(), "Windows 11");
    return registryName;
}

}  // namespace xo::sysinfo
