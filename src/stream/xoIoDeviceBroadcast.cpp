// A device that writes the same bytes to several others, which the caller owns.
#include <algorithm>

#include "stream/deviceMessage.h"
#include "xoSystem/xoIoDeviceBroadcast.h"

namespace xo {

xoIoDeviceBroadcast::xoIoDeviceBroadcast(const std::vector<xoIoDevice*>& devices) : mDevices(devices) {
    mDevices.erase(std::remove(mDevices.begin(), mDevices.end(), nullptr), mDevices.end());
}

std::uint64_t xoIoDeviceBroadcast::readBytes(char* /*buffer*/, std::uint64_t /*size*/) {
    stream::report("xoIoDeviceBroadcast readBytes is not supported");
    mError = true;
    return 0;
}

// Stops at the first device that fails. The devices before it have the bytes, those behind it have not. After an
// earlier error of this object the bytes still go to the devices, but the result is 0.
std::uint64_t xoIoDeviceBroadcast::writeBytes(const char* buffer, std::uint64_t size) {
    for (xoIoDevice* const device : mDevices) {
        if (device->writeBytes(buffer, size) >= size && !device->hasError()) continue;
        mError = true;
        return 0;
    }
    return hasError() ? 0 : size;
}

bool xoIoDeviceBroadcast::hasError() const {
    return mError ||
           std::any_of(mDevices.begin(), mDevices.end(), [](const xoIoDevice* device) { return device->hasError(); });
}

bool xoIoDeviceBroadcast::atEnd() const {
    stream::report("xoIoDeviceBroadcast atEnd is not supported");
    return false;
}

bool xoIoDeviceBroadcast::seekg(std::int64_t /*offset*/, SeekStart /*start*/) {
    stream::report("xoIoDeviceBroadcast seekg is not supported");
    mError = true;
    return false;
}

bool xoIoDeviceBroadcast::seekp(std::int64_t offset, SeekStart start) {
    // All devices move even if one fails, so that those that work stay at one position.
    for (xoIoDevice* const device : mDevices)
        if (!device->seekp(offset, start)) mError = true;
    return !mError;  // so false also after an earlier error
}

std::uint64_t xoIoDeviceBroadcast::tellg() {
    stream::report("xoIoDeviceBroadcast tellg is not supported");
    mError = true;
    return 0;
}

// This device has a position only if all devices have the same one. Otherwise that is an error.
std::uint64_t xoIoDeviceBroadcast::tellp() {
    if (mDevices.empty()) return 0;
    const std::uint64_t position = mDevices.front()->tellp();
    for (std::size_t i = 1; i < mDevices.size(); ++i) {
        if (mDevices[i]->tellp() == position) continue;
        mError = true;
        return 0;
    }
    return position;
}

}  // namespace xo
