// A device over a text in memory, which can be full and can be broken.
#ifndef XO_TESTS_STREAM_MEMORYDEVICE_H
#define XO_TESTS_STREAM_MEMORYDEVICE_H

#include <algorithm>
#include <string>

#include "xoSystem/xoIoDevice.h"

namespace xo::tests {

struct MemoryDevice final : xoIoDevice {
    explicit MemoryDevice(std::string content = {}) : bytes(std::move(content)) {}

    std::uint64_t readBytes(char* buffer, std::uint64_t size) override {
        largestRead = (std::max)(largestRead, size);
        const std::size_t count = broken || readAt > bytes.size() ? 0 : bytes.copy(buffer, size, readAt);
        readAt += count;
        return count;
    }
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override {
        if (broken || size > capacity) return 0;
        capacity -= size;
        bytes.replace((std::min)(writeAt, bytes.size()), size, buffer, size);
        writeAt += size;
        return size;
    }
    bool hasError() const override { return broken; }
    bool atEnd() const override { return readAt >= bytes.size(); }
    bool seekg(std::int64_t offset, SeekStart) override { return readAt = std::size_t(offset), !broken; }
    bool seekp(std::int64_t offset, SeekStart) override { return writeAt = std::size_t(offset), !broken; }
    std::uint64_t tellg() override { return readAt; }
    std::uint64_t tellp() override { return writeAt; }

    std::string bytes;
    std::size_t readAt = 0, writeAt = 0;
    std::uint64_t capacity = UINT64_MAX;  // bytes that can still be written
    std::uint64_t largestRead = 0;
    bool broken = false;
};

}  // namespace xo::tests

#endif
