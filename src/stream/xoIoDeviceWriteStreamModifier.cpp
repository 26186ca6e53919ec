// Lets a modifier that reads work on a stream that is written: written bytes wait here until the modifier reads them.
#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>
#include <vector>

#include "stream/deviceMessage.h"
#include "xoSystem/xoIoDeviceWriteStreamModifier.h"

namespace xo {
namespace {

constexpr std::size_t kPendingCapacity = 0x500000;      // reserved at once, so that writes seldom move what waits
constexpr std::size_t kBlock = 0x100000;                // bytes that the modifier is asked for at a time
constexpr std::uint64_t kThreshold = kBlock * 21 / 10;  // while fewer bytes wait, the modifier is not asked

}  // namespace

struct xoIoDeviceWriteStreamModifier::Private {
    explicit Private(xoIoDeviceDelegable* theModifier);

    std::size_t pendingCount() const { return pending.size() - pendingStart; }
    std::uint64_t takePending(char* buffer, std::uint64_t size);
    bool appendPending(const char* buffer, std::uint64_t size);
    // self is the object that owns this record: the modifier reads from it.
    void processPending(xoIoDevice* self);
    bool startModifier(xoIoDevice* self);
    bool moveBlock();

    xoIoDeviceDelegable* modifier;
    xoIoDevice* device = nullptr;  // null when not delegating
    std::vector<char> pending;     // waiting bytes from pendingStart on; those before it have been taken
    std::size_t pendingStart = 0;
    std::unique_ptr<char[]> output;  // one block
    std::uint64_t threshold = kThreshold;
    bool isModifierStarted = false;
    bool hasError = false;
};

// The block is not cleared: memory costs when it is touched, and a short stream touches little of it.
xoIoDeviceWriteStreamModifier::Private::Private(xoIoDeviceDelegable* theModifier)
    : modifier(theModifier), output(new char[kBlock]) {
    pending.reserve(kPendingCapacity);
}

std::uint64_t xoIoDeviceWriteStreamModifier::Private::takePending(char* buffer, std::uint64_t size) {
    auto count = static_cast<std::size_t>((std::min)(size, std::uint64_t{pendingCount()}));
    if (count == 0 || !buffer) return 0;
    // One byte a call below the threshold, so that the modifier takes little of a rest that may still grow.
    if (pendingCount() < threshold) count = 1;
    std::memcpy(buffer, pending.data() + pendingStart, count);
    pendingStart += count;
    if (pendingCount() == 0) {
        pending.clear();
        pendingStart = 0;
    }
    return count;
}

// False when there are no such bytes, or no memory for them.
bool xoIoDeviceWriteStreamModifier::Private::appendPending(const char* buffer, std::uint64_t size) {
    if (size == 0) return true;
    if (!buffer || size > pending.max_size()) return false;
    // Taken bytes are erased when they are at least half of all, so that each byte is moved once at most.
    if (size > pending.capacity() - pending.size() && pendingStart >= pendingCount()) {
        pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(pendingStart));
        pendingStart = 0;
    }
    try {
        pending.insert(pending.end(), buffer, buffer + size);
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::length_error&) {
        return false;
    }
    return true;
}

void xoIoDeviceWriteStreamModifier::Private::processPending(xoIoDevice* self) {
    while (pendingCount() >= threshold)
        if (!(isModifierStarted ? moveBlock() : startModifier(self))) return;
}

bool xoIoDeviceWriteStreamModifier::Private::startModifier(xoIoDevice* self) {
    isModifierStarted = true;  // also after a failure: it is begun once for each device
    if (modifier && modifier->beginDelegation(self)) return true;
    stream::report("Fail to begin delegation of read modifier");
    hasError = true;
    return false;
}

// False when the modifier has no bytes for now, or the device does not take them.
bool xoIoDeviceWriteStreamModifier::Private::moveBlock() {
    const std::uint64_t count = modifier ? modifier->readBytes(output.get(), kBlock) : 0;
    if (count == 0) return false;
    if (device && device->writeBytes(output.get(), count) == count) return true;
    hasError = true;
    return false;
}

xoIoDeviceWriteStreamModifier::xoIoDeviceWriteStreamModifier(xoIoDeviceDelegable* modifier)
    : xoIoDeviceDelegable(DelegableFlagWrite, 769), mPrivate(std::make_unique<Private>(modifier)) {}

xoIoDeviceWriteStreamModifier::~xoIoDeviceWriteStreamModifier() = default;

std::uint64_t xoIoDeviceWriteStreamModifier::readBytes(char* buffer, std::uint64_t size) {
    return mPrivate->takePending(buffer, size);
}

std::uint64_t xoIoDeviceWriteStreamModifier::writeBytes(const char* buffer, std::uint64_t size) {
    Private& self = *mPrivate;
    if (!self.appendPending(buffer, size)) self.hasError = true;  // what waits already is processed all the same
    if (self.device) self.processPending(this);
    return hasError() ? 0 : size;
}

bool xoIoDeviceWriteStreamModifier::hasError() const {
    return mPrivate->hasError || (mPrivate->device && mPrivate->device->hasError());
}

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
    Private& self = *mPrivate;
    if (self.device) return false;
    clearDelegation();
    self.device = device;
    self.isModifierStarted = false;
    self.hasError = false;
    self.threshold = kThreshold;
    return true;
}

bool xoIoDeviceWriteStreamModifier::endDelegation() {
    Private& self = *mPrivate;
    if (!self.device) return !self.hasError && self.pendingCount() == 0;  // what waits is kept for the next device
    // No more bytes will be written, so the modifier may take all that is left. With a threshold of 0 it is asked until
    // it returns nothing, also when no byte waits, because it may hold some back.
    self.threshold = 0;
    self.processPending(this);
    if (!self.modifier || !self.modifier->endDelegation()) {
        stream::report("Fail to end delegation of read modifier");
        self.hasError = true;
    }
    clearDelegation();
    return !self.hasError;
}

void xoIoDeviceWriteStreamModifier::clearDelegation() { mPrivate->device = nullptr; }

}  // namespace xo
