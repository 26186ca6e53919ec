#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

#include "stream/deviceMessage.h"
#include "xoSystem/xoIoDeviceWriteStreamModifier.h"

namespace xo {
namespace {

constexpr std::size_t kPendingRoom = 0x500000;
constexpr std::size_t kBlock = 0x100000;
constexpr std::uint64_t kThreshold = kBlock * 21 / 10;

}  // namespace

// The block is not filled: memory costs when it is touched, and a short stream touches little of it.
xoIoDeviceWriteStreamModifier::xoIoDeviceWriteStreamModifier(xoIoDeviceDelegable* modifier)
    : xoIoDeviceDelegable(DelegableFlagWrite, 769),
      mModifier(modifier),
      mOutput(new char[kBlock]),
      mThreshold(kThreshold) {
    mPending.reserve(kPendingRoom);
}

xoIoDeviceWriteStreamModifier::~xoIoDeviceWriteStreamModifier() = default;

std::uint64_t xoIoDeviceWriteStreamModifier::readBytes(char* buffer, std::uint64_t size) {
    auto count = static_cast<std::size_t>((std::min)(size, std::uint64_t{pendingCount()}));
    if (count == 0 || !buffer) return 0;
    // Below the threshold a byte at a time: a modifier that wants more waits for more to be written.
    if (pendingCount() < mThreshold) count = 1;
    std::memcpy(buffer, mPending.data() + mPendingStart, count);
    mPendingStart += count;
    if (pendingCount() == 0) {
        mPending.clear();
        mPendingStart = 0;
    }
    return count;
}

std::uint64_t xoIoDeviceWriteStreamModifier::writeBytes(const char* buffer, std::uint64_t size) {
    if (!appendPending(buffer, size)) mError = true;
    if (mDevice) processPendingData();
    return hasError() ? 0 : size;
}

// False when there are no such bytes, or no memory for them.
bool xoIoDeviceWriteStreamModifier::appendPending(const char* buffer, std::uint64_t size) {
    if (size == 0) return true;
    if (!buffer || size > mPending.max_size()) return false;
    // What was handed out makes room once it is at least half of the whole: so each byte moves up once at most.
    if (size > mPending.capacity() - mPending.size() && mPendingStart >= pendingCount()) {
        mPending.erase(mPending.begin(), mPending.begin() + static_cast<std::ptrdiff_t>(mPendingStart));
        mPendingStart = 0;
    }
    try {
        mPending.insert(mPending.end(), buffer, buffer + size);
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::length_error&) {
        return false;
    }
    return true;
}

void xoIoDeviceWriteStreamModifier::processPendingData() {
    while (pendingCount() >= mThreshold)
        if (!(mModifierNotStarted ? startModifier() : moveBlock())) return;
}

bool xoIoDeviceWriteStreamModifier::startModifier() {
    mModifierNotStarted = false;
    if (mModifier && mModifier->beginDelegation(this)) return true;
    stream::report("Fail to begin delegation of read modifier");
    mError = true;
    return false;
}

// False when the modifier has no bytes for now, or the device does not take them.
bool xoIoDeviceWriteStreamModifier::moveBlock() {
    const std::uint64_t count = mModifier ? mModifier->readBytes(mOutput.get(), kBlock) : 0;
    if (count == 0) return false;
    if (mDevice && mDevice->writeBytes(mOutput.get(), count) == count) return true;
    mError = true;
    return false;
}

bool xoIoDeviceWriteStreamModifier::hasError() const { return mError || (mDevice && mDevice->hasError()); }

bool xoIoDeviceWriteStreamModifier::atEnd() const { return false; }

bool xoIoDeviceWriteStreamModifier::seekg(std::int64_t /*offset*/, SeekStart /*start*/) {
    stream::report("xoIoDeviceWriteStreamModifier::seekg not implemented");
    return false;
}

bool xoIoDeviceWriteStreamModifier::seekp(std::int64_t /*offset*/, SeekStart /*start*/) {
    stream::report("xoIoDeviceWriteStreamModifier::seekp not implemented");
    return false;
}

std::uint64_t xoIoDeviceWriteStreamModifier::tellg() {
    stream::report("xoIoDeviceWriteStreamModifier::tellg not implemented");
    return 0;
}

std::uint64_t xoIoDeviceWriteStreamModifier::tellp() {
    stream::report("xoIoDeviceWriteStreamModifier::tellp not implemented");
    return 0;
}

bool xoIoDeviceWriteStreamModifier::beginDelegation(xoIoDevice* device) {
    if (mDevice) return false;
    clearDelegation();
    mDevice = device;
    mModifierNotStarted = true;
    mError = false;
    mThreshold = kThreshold;
    return true;
}

bool xoIoDeviceWriteStreamModifier::endDelegation() {
    if (!mDevice) return !mError && pendingCount() == 0;  // what waits is kept for the next device
    mThreshold = 0;
    processPendingData();
    if (!mModifier || !mModifier->endDelegation()) {
        stream::report("Fail to end delegation of read modifier");
        mError = true;
    }
    clearDelegation();
    return !mError;
}

void xoIoDeviceWriteStreamModifier::clearDelegation() { mDevice = nullptr; }

}  // namespace xo
