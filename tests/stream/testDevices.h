// Devices that tests look into.
#ifndef XO_TESTS_STREAM_TESTDEVICES_H
#define XO_TESTS_STREAM_TESTDEVICES_H

#include <algorithm>
#include <string>

#include "xoSystem/xoIoDevice.h"

namespace xo::tests {

// A text in memory, which can be full and can be broken.
class MemoryDevice final : public xoIoDevice {
public:
    explicit MemoryDevice(std::string content = {}) : bytes(std::move(content)) {}

    std::uint64_t readBytes(char* buffer, std::uint64_t size) override {
        largestRead = (std::max)(largestRead, size);
        if (broken || readAt > bytes.size()) return 0;
        const std::size_t count = bytes.copy(buffer, size, readAt);
        readAt += count;
        return count;
    }
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override {
        if (broken || size > room) return 0;
        room -= size;
        bytes.replace((std::min)(writeAt, bytes.size()), size, buffer, size);
        writeAt += size;
        return size;
    }
    bool hasError() const override { return broken; }
    bool atEnd() const override { return readAt >= bytes.size(); }
    bool seekg(std::int64_t offset, SeekStart) override { return !broken && (readAt = std::size_t(offset), true); }
    bool seekp(std::int64_t offset, SeekStart) override { return !broken && (writeAt = std::size_t(offset), true); }
    std::uint64_t tellg() override { return readAt; }
    std::uint64_t tellp() override { return writeAt; }

    std::string bytes;
    std::size_t readAt = 0;
    std::size_t writeAt = 0;
    std::uint64_t room = UINT64_MAX;  // bytes that can still be written
    std::uint64_t largestRead = 0;
    bool broken = false;
};

// The modifier of a write stream; as it is, one that changes nothing.
class Transformer : public xoIoDeviceDelegable {
public:
    Transformer() : xoIoDeviceDelegable(1, 1) {}

    std::uint64_t readBytes(char* buffer, std::uint64_t size) override { return source->readBytes(buffer, size); }
    std::uint64_t writeBytes(const char*, std::uint64_t) override { return 0; }
    bool hasError() const override { return false; }
    bool atEnd() const override { return false; }
    bool seekg(std::int64_t, SeekStart) override { return false; }
    bool seekp(std::int64_t, SeekStart) override { return false; }
    std::uint64_t tellg() override { return 0; }
    std::uint64_t tellp() override { return 0; }
    bool beginDelegation(xoIoDevice* device) override { return (source = device) != nullptr && !refuses; }
    bool endDelegation() override { return !refuses; }
    void clearDelegation() override { source = nullptr; }

    xoIoDevice* source = nullptr;
    bool refuses = false;
};

}  // namespace xo::tests

#endif
