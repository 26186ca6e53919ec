// A device that calls a signal each time a number of bytes has been written.
#include "xoSystem/xoIoDeviceSignaler.h"
#include "stream/deviceMessage.h"

namespace xo {

std::uint64_t xoIoDeviceSignaler::readBytes(char* buffer, std::uint64_t size) {
    if (mDevice) return mDevice->readBytes(buffer, size);
    mError = true;
    return 0;
}

std::uint64_t xoIoDeviceSignaler::writeBytes(const char* buffer, std::uint64_t size) {
    mCount += size;
    // Before the bytes go to the device: the signal sees what was written by the calls before this one.
    if (mCount >= mThreshold && mSignal) signal();
    return mDevice ? mDevice->writeBytes(buffer, size) : size;
}

void xoIoDeviceSignaler::signal() {
    // The signal is removed while it runs, so that it may write to this object, and put back also after an exception.
    struct Pause {
        explicit Pause(xoIoDeviceSignaler& s) : signaler(s), signal(s.mSignal) { signaler.mSignal = nullptr; }
        ~Pause() {
            signaler.mSignal = signal;
            signaler.mCount = 0;  // also after an exception, so that the next write does not signal again
        }
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

        xoIoDeviceSignaler& signaler;
        Signal* const signal;
    };
    const Pause pause(*this);
    (*pause.signal)(mDevice);
}

bool xoIoDeviceSignaler::hasError() const { return mError || (mDevice && mDevice->hasError()); }

bool xoIoDeviceSignaler::atEnd() const { return !mDevice || mDevice->atEnd(); }

// Both messages name the byte counter, as the header says.
bool xoIoDeviceSignaler::seekg(std::int64_t /*offset*/, SeekStart /*start*/) {
    stream::report("xoIoDeviceByteCounter seekg is not supported");
    mError = true;
    return false;
}

bool xoIoDeviceSignaler::seekp(std::int64_t /*offset*/, SeekStart /*start*/) {
    stream::report("xoIoDeviceByteCounter seekp is not supported");
    mError = true;
    return false;
}

std::uint64_t xoIoDeviceSignaler::tellg() { return mDevice ? mDevice->tellg() : 0; }

std::uint64_t xoIoDeviceSignaler::tellp() { return mDevice ? mDevice->tellp() : 0; }

bool xoIoDeviceSignaler::beginDelegation(xoIoDevice* device) {
    clearDelegation();
    mDevice = device;
    mError = false;
    return true;
}

bool xoIoDeviceSignaler::endDelegation() {
    clearDelegation();  // first, so that only the flag of this object counts and not the device's
    return !hasError();
}

void xoIoDeviceSignaler::clearDelegation() { mDevice = nullptr; }

}  // namespace xo
