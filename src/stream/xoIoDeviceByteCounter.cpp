// A device that counts the bytes on their way to another one, or counts them only when there is none.
#include <algorithm>

#include "stream/deviceMessage.h"
#include "xoSystem/xoIoDeviceByteCounter.h"

namespace xo {
namespace {

// Unsigned addition wraps, where a signed one would be undefined. The comparison with 0 is a signed one.
std::uint64_t movedNotBelowZero(std::uint64_t position, std::int64_t offset) {
    const auto moved = static_cast<std::int64_t>(position + static_cast<std::uint64_t>(offset));
    return static_cast<std::uint64_t>((std::max)(moved, std::int64_t{0}));
}

}  // namespace

std::uint64_t xoIoDeviceByteCounter::readBytes(char* buffer, std::uint64_t size) {
    if (!mDevice) {  // nothing to read from is an error, while writes are only counted then
        mError = true;
        return 0;
    }
    const std::uint64_t got = mDevice->readBytes(buffer, size);
    mReadBytes += got;
    return got;
}

std::uint64_t xoIoDeviceByteCounter::writeBytes(const char* buffer, std::uint64_t size) {
    // Counts what was asked for, also when the device takes less.
    mWritePosition += size;
    return mDevice ? mDevice->writeBytes(buffer, size) : size;
}

bool xoIoDeviceByteCounter::hasError() const { return mError || (mDevice && mDevice->hasError()); }

bool xoIoDeviceByteCounter::atEnd() const { return !mDevice || mDevice->atEnd(); }

bool xoIoDeviceByteCounter::seekg(std::int64_t /*offset*/, SeekStart /*start*/) {
    stream::report("xoIoDeviceByteCounter seekg is not supported");
    mError = true;
    return false;
}

bool xoIoDeviceByteCounter::seekp(std::int64_t offset, SeekStart start) {
    updateWriteEnd();  // a seek back must not make the end smaller
    switch (start) {
        // The position is set before the error is looked at, and stays set when the device refuses.
        case SeekFromBegin: mWritePosition = static_cast<std::uint64_t>(offset); break;
        case SeekFromCurrent: mWritePosition = movedNotBelowZero(mWritePosition, offset); break;
        case SeekFromEnd: mWritePosition = movedNotBelowZero(mWriteEnd, offset); break;
    }
    if (hasError()) return false;
    return !mDevice || mDevice->seekp(offset, start);
}

std::uint64_t xoIoDeviceByteCounter::tellg() { return mReadBytes; }

std::uint64_t xoIoDeviceByteCounter::tellp() { return mWritePosition; }

bool xoIoDeviceByteCounter::beginDelegation(xoIoDevice* device) {
    clearDelegation();
    mDevice = device;
    mError = false;
    mWritePosition = 0;
    mWriteEnd = 0;
    mReadBytes = 0;
    return true;
}

bool xoIoDeviceByteCounter::endDelegation() {
    updateWriteEnd();
    clearDelegation();  // before hasError(), so that only the flag of this object counts
    return !hasError();
}

void xoIoDeviceByteCounter::clearDelegation() { mDevice = nullptr; }

}  // namespace xo
