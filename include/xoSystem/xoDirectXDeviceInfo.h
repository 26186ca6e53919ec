// DirectXDeviceInfo: the graphics adapters of the machine, as DirectX counts them.
//
//     std::vector<xo::DirectXDeviceInfo> adapters;
//     if (xo::DirectXDeviceInfo::GetAdapters(adapters) && !adapters.empty() &&
//         adapters[0].dedicatedVideoBytes < kNeededBytes)
//         useLess();
//
// The function may be called from any thread; each call asks anew. It asks on a thread of its own, because a driver may
// not answer: see the limit of time. Nothing throws except std::bad_alloc.
#ifndef XOSYSTEM_XODIRECTXDEVICEINFO_H
#define XOSYSTEM_XODIRECTXDEVICEINFO_H

#include <cstdint>
#include <string>
#include <vector>

#include "xoSystem/xoExport.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

// A plain value. What is not known is 0 or empty.
struct XOSYSTEM_API DirectXDeviceInfo {
    std::string name;           // for people
    std::string driverVersion;  // "31.0.15.3623"

    // The numbers by which the PCI bus knows it; NVIDIA's vendor number is 0x10DE.
    std::uint32_t vendorId = 0;
    std::uint32_t deviceId = 0;
    std::uint32_t subSystemId = 0;
    std::uint32_t revision = 0;

    std::uint64_t dedicatedVideoBytes = 0;   // memory of the adapter's own
    std::uint64_t dedicatedSystemBytes = 0;  // of the machine's memory, kept for the adapter
    std::uint64_t sharedSystemBytes = 0;     // of the machine's memory, as much as the adapter may use
    std::uint64_t luid = 0;                  // tells adapters apart until the next start of the system
    bool isSoftware = false;                 // it is the processor that draws
    bool isRemote = false;                   // of a remote desktop
    std::vector<std::string> outputs;        // "\\.\DISPLAY1": the displays that it drives

    // Replaces the list by all adapters, the one with the primary display first. False, with an empty list, when
    // DirectX cannot be asked or does not answer in time. What has not answered is left behind on its thread, with the
    // library kept loaded; until it ends, further calls fail at once. A limit of 0 asks nothing.
    static bool GetAdapters(std::vector<DirectXDeviceInfo>& adapters, unsigned timeoutMs = 5000);
};

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
