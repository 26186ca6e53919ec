// The functions that every device inherits.
#include "xoSystem/xoIoDeviceBase.h"

#include <algorithm>
#include <cstring>

namespace xo {

xoIoDevice::~xoIoDevice() = default;

xoIoDevice& xoIoDevice::operator<<(const char* text) {
    if (text) writeBytes(text, std::strlen(text));
    return *this;
}

xoIoDevice& xoIoDevice::operator<<(const std::string& text) {
    writeBytes(text.data(), text.size());
    return *this;
}

// Reads and drops, which works for a device without seekg too. Stops at the first short read.
std::uint64_t xoIoDevice::skipBytes(std::uint64_t count) {
    char dropped[4096];
    std::uint64_t skipped = 0;
    while (skipped < count) {
        const std::uint64_t wanted = (std::min)(count - skipped, std::uint64_t{sizeof dropped});
        const std::uint64_t got = readBytes(dropped, wanted);
        skipped += got;
        if (got < wanted) break;
    }
    return skipped;
}

}  // namespace xo
