// The graphics adapters. Their drivers may not answer, so they are asked by an errand.
#ifndef XO_SYSINFO_GRAPHICS_H
#define XO_SYSINFO_GRAPHICS_H

#include <optional>
#include <vector>

#include "sysinfo/errand.h"
#include "xoSystem/xoDirectXDeviceInfo.h"

namespace xo::sysinfo {

// The adapters in the order of the system, for which the first one drives the primary display. No value when DXGI is
// not available. Call it on an errand's thread only: it may never return.
std::optional<std::vector<DirectXDeviceInfo>> readAdapters();

// Shared by the report and DirectXDeviceInfo::GetAdapters, since both ask the same drivers.
Lane& graphicsLane();

}  // namespace xo::sysinfo

#endif
