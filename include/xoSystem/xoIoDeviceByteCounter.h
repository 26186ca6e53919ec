// xoIoDeviceByteCounter: counts the bytes that pass to and from another device.
//
//     xo::xoIoDeviceByteCounter counter;
//     counter.beginDelegation(&file);
//     counter << "goes through the counter into the file";
//     const bool ok = counter.good() && counter.endDelegation();
//     xo::xoLogObject(xo::xoLogInfo) << counter.getWrittenBytes() << " bytes";
#ifndef XOSYSTEM_XOIODEVICEBYTECOUNTER_H
#define XOSYSTEM_XOIODEVICEBYTECOUNTER_H

#include <cstdint>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoIoDeviceDelegable.h"

namespace xo {

// Without a device it accepts and counts writes; a read raises the error flag. The state stays in the class: a counter
// is cheap to create, and each write changes a count.
class XOSYSTEM_API xoIoDeviceByteCounter : public xoIoDeviceDelegable {
public:
    xoIoDeviceByteCounter() : xoIoDeviceDelegable(DelegableFlagReadWrite, 770) {}

    // The bytes read since the delegation began, and the highest write position since then.
    std::uint64_t getReadBytes() const { return mReadBytes; }
    std::uint64_t getWrittenBytes() const { return upToDateWriteEnd(); }

    std::uint64_t readBytes(char* buffer, std::uint64_t size) override;

    // Counts the bytes, also those that the device then does not take.
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override;
    bool hasError() const override;  // its own flag, or the device's
    bool atEnd() const override;     // the device's; true without one

    // Not supported: logs, raises the error flag, returns false.
    bool seekg(std::int64_t offset, SeekStart start) override;

    // Moves its own write position, where the end is the highest position so far, and then the device's. Returns what
    // the device returns, true without one and false after an error; its own position has moved in every case. The
    // position is limited to 0 from below, except that a negative offset from the begin is taken as an unsigned number.
    bool seekp(std::int64_t offset, SeekStart start) override;

    std::uint64_t tellg() override;  // the bytes read
    std::uint64_t tellp() override;  // its own write position

    // Starts all counts from 0. They stay readable after the end.
    bool beginDelegation(xoIoDevice* device) override;
    bool endDelegation() override;
    void clearDelegation() override;

private:
    std::uint64_t upToDateWriteEnd() const { return mWritePosition > mWriteEnd ? mWritePosition : mWriteEnd; }
    void updateWriteEnd() { mWriteEnd = upToDateWriteEnd(); }

    std::uint64_t mWritePosition = 0;
    std::uint64_t mWriteEnd = 0;  // the highest write position before the last seek
    std::uint64_t mReadBytes = 0;
    xoIoDevice* mDevice = nullptr;  // null when not delegating
    bool mError = false;
};

}  // namespace xo

#endif
