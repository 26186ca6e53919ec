#include <algorithm>

#include "stream/deviceMessage.h"
#include "xoSystem/xoIoDeviceBroadcast.h"

namespace xo {

struct xoIoDeviceBroadcast::Private {
    std::vector<xoIoDevice*> devices;  // none of them null
    bool hasError = false;
};

xoIoDeviceBroadcast::xoIoDeviceBroadcast(const std::vector<xoIoDevice*>& devices) : mPrivate(new Private{devices}) {
    auto& own = mPrivate->devices;
    own.erase(std::remove(own.begin(), own.end(), nullptr), own.end());
}

xoIoDeviceBroadcast::~xoIoDeviceBroadcast() = default;

xoIoDeviceBroadcast::xoIoDeviceBroadcast(const xoIoDeviceBroadcast& other)
    : xoIoDevice(other), mPrivate(new Private(*other.mPrivate)) {}

xoIoDeviceBroadcast& xoIoDeviceBroadcast::operator=(const xoIoDeviceBroadcast& other) {
    *mPrivate = *other.mPrivate;
    return *this;
}

std::uint64_t xoIoDeviceBroadcast::readBytes(char* /*buffer*/, std::uint64_t /*size*/) {
    stream::report("xoIoDeviceBroadcast readBytes is not supported");
    mPrivate->hasError = true;
    return 0;
}

std::uint64_t xoIoDeviceBroadcast::writeBytes(const char* buffer, std::uint64_t size) {
    for (xoIoDevice* const device : mPrivate->devices) {
        if (device->writeBytes(buffer, size) >= size && !device->hasError()) continue;
        mPrivate->hasError = true;
        return 0;
    }
    return hasError() ? 0 : size;
}

bool xoIoDeviceBroadcast::hasError() const {
    return mPrivate->hasError || std::any_of(mPrivate->devices.begin(), mPrivate->devices.end(),
                                             [](const xoIoDevice* device) { return device->hasError(); });
}

bool xoIoDeviceBroadcast::atEnd() const {
    stream::report("xoIoDeviceBroadcast atEnd is not supported");
    return false;
}

bool xoIoDeviceBroadcast::seekg(std::int64_t /*offset*/, SeekStart /*start*/) {
    stream::report("xoIoDeviceBroadcast seekg is not supported");
    mPrivate->hasError = true;
    return false;
}

bool xoIoDeviceBroadcast::seekp(std::int64_t offset, SeekStart start) {
    for (xoIoDevice* const device : mPrivate->devices)
        if (!device->seekp(offset, start)) mPrivate->hasError = true;
    return !mPrivate->hasError;
}

std::uint64_t xoIoDeviceBroadcast::tellg() {
    stream::report("xoIoDeviceBroadcast tellg is not supported");
    mPrivate->hasError = true;
    return 0;
}

std::uint64_t xoIoDeviceBroadcast::tellp() {
    const std::vector<xoIoDevice*>& devices = mPrivate->devices;
    const std::uint64_t position = devices.empty() ? 0 : devices.front()->tellp();
    for (std::size_t i = 1; i < devices.size(); ++i) {
        if (devices[i]->tellp() == position) continue;
        mPrivate->hasError = true;
        return 0;
    }
    return position;
}

}  // namespace xo
