#include <algorithm>
#include <istream>
#include <limits>
#include <ostream>

#include "xoSystem/xoIoDevice.h"

namespace xo {
namespace {

std::streamsize toStreamSize(std::uint64_t size) {
    constexpr auto most = static_cast<std::uint64_t>((std::numeric_limits<std::streamsize>::max)());
    return static_cast<std::streamsize>((std::min)(size, most));
}

// Carries out an operation on a stream. A stream may be set to throw when it fails; its state tells the same.
template <class Operation>
void quietly(Operation operation) {
    try {
        operation();
    } catch (...) {
    }
}

// Calls seek with the standard direction, if there is one for the start.
template <class Seek>
void seekFrom(xoIoDevice::SeekStart start, Seek seek) {
    switch (start) {
        case xoIoDevice::SeekFromBegin: quietly([&] { seek(std::ios_base::beg); }); break;
        case xoIoDevice::SeekFromCurrent: quietly([&] { seek(std::ios_base::cur); }); break;
        case xoIoDevice::SeekFromEnd: quietly([&] { seek(std::ios_base::end); }); break;
    }
}

}  // namespace

xoIoDeviceStdStreamProxy::~xoIoDeviceStdStreamProxy() {
    mIn = nullptr;
    mOut = nullptr;
}

std::uint64_t xoIoDeviceStdStreamProxy::readBytes(char* buffer, std::uint64_t size) {
    if (hasError() || !mIn) return 0;
    quietly([&] { mIn->read(buffer, toStreamSize(size)); });
    const auto got = static_cast<std::uint64_t>(mIn->gcount());
    if (got == 0 && size != 0) quietly([&] { mIn->setstate(std::ios_base::eofbit); });
    return got;
}

std::uint64_t xoIoDeviceStdStreamProxy::writeBytes(const char* buffer, std::uint64_t size) {
    if (hasError() || !mOut) return 0;
    quietly([&] { mOut->write(buffer, toStreamSize(size)); });
    return hasError() ? 0 : size;
}

bool xoIoDeviceStdStreamProxy::hasError() const { return (mIn && mIn->bad()) || (mOut && mOut->fail()); }

bool xoIoDeviceStdStreamProxy::atEnd() const { return mIn && mIn->eof(); }

bool xoIoDeviceStdStreamProxy::seekg(std::int64_t offset, SeekStart start) {
    if (!mIn) return false;
    seekFrom(start, [&](std::ios_base::seekdir direction) { mIn->seekg(offset, direction); });
    return !hasError();
}

bool xoIoDeviceStdStreamProxy::seekp(std::int64_t offset, SeekStart start) {
    if (!mOut) return false;
    seekFrom(start, [&](std::ios_base::seekdir direction) { mOut->seekp(offset, direction); });
    return !hasError();
}

std::uint64_t xoIoDeviceStdStreamProxy::tellg() {
    std::streamoff position = mIn ? -1 : 0;
    if (mIn) quietly([&] { position = mIn->tellg(); });
    return static_cast<std::uint64_t>(position);
}

std::uint64_t xoIoDeviceStdStreamProxy::tellp() {
    std::streamoff position = mOut ? -1 : 0;
    if (mOut) quietly([&] { position = mOut->tellp(); });
    return static_cast<std::uint64_t>(position);
}

}  // namespace xo
