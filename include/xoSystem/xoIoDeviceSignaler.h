// xoIoDeviceSignaler: calls a function each time that about a given number of bytes has been written, for instance to
// insert a mark or to begin a new file.
//
//     xo::xoIoDeviceSignaler::Signal mark = [](xo::xoIoDevice* device) { if (device) *device << kMark; };
//     xo::xoIoDeviceSignaler signaler(&mark, /*threshold=*/65536);
//     signaler.beginDelegation(&file);
#ifndef XOSYSTEM_XOIODEVICESIGNALER_H
#define XOSYSTEM_XOIODEVICESIGNALER_H

#include <cstddef>
#include <cstdint>
#include <functional>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoIoDeviceBase.h"

namespace xo {

// The state stays in the class: each write changes the count.
class XOSYSTEM_API xoIoDeviceSignaler : public xoIoDevice {
public:
    // Gets the attached device, which may be null.
    using Signal = std::function<void(xoIoDevice*)>;

    // The signal is not owned and may be null. The threshold is a number of bytes; with 0 each write signals.
    xoIoDeviceSignaler(Signal* signal, std::size_t threshold) : mSignal(signal), mThreshold(threshold) {}

    // Takes effect at the next write. With null nothing is called, and the count goes on, so that a signal set later
    // may be called by the first write. Called by the signal itself it has no lasting effect.
    void setSignal(Signal* signal) { mSignal = signal; }

    // The device's; without one it raises the error flag and returns 0.
    std::uint64_t readBytes(char* buffer, std::uint64_t size) override;

    // Adds the size to the count. When the count has reached the threshold, the signal is called, and the count
    // restarts at 0; writes that the signal itself makes to this object do not call it again. Then the bytes are passed
    // on; without a device they are accepted.
    //
    // An exception of the signal passes through, and the bytes are not written. A signal that is an empty function
    // throws std::bad_function_call.
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override;
    bool hasError() const override;  // its own flag, or the device's
    bool atEnd() const override;     // the device's; true without one

    // Not supported: log, raise the error flag, return false. The messages name the byte counter.
    bool seekg(std::int64_t offset, SeekStart start) override;
    bool seekp(std::int64_t offset, SeekStart start) override;

    // The device's; 0 without one.
    std::uint64_t tellg() override;
    std::uint64_t tellp() override;

    // As in xoIoDeviceDelegable. The count is kept.
    virtual bool beginDelegation(xoIoDevice* device);
    virtual bool endDelegation();
    virtual void clearDelegation();

private:
    void signal();

    Signal* mSignal;
    xoIoDevice* mDevice = nullptr;  // null when not delegating
    std::uint64_t mThreshold;
    std::uint64_t mCount = 0;
    bool mError = false;
};

}  // namespace xo

#endif
