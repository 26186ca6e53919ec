// The graphics adapters, and what else is asked in the same way: on a thread that may be left behind.
#ifndef XO_SYSINFO_GRAPHICS_H
#define XO_SYSINFO_GRAPHICS_H

#include <optional>
#include <vector>

#include "sysinfo/errand.h"
#include "xoSystem/xoDirectXDeviceInfo.h"

namespace xo::sysinfo {

// No value when DirectX cannot be asked.
std::optional<std::vector<DirectXDeviceInfo>> readAdapters();

// The one that the questions for adapters share.
Lane& graphicsLane();

}  // namespace xo::sysinfo

#endif
