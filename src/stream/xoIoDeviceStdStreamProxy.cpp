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

// As many bytes as a number has. They move fastest one by one: the calls that do it are inline and go straight to the
// stream's buffer, while a read or write of several bytes costs as much as fifty of them.
constexpr std::uint64_t kFew = 16;

// As out.write(), for a sound stream that flushes nothing at a write.
void writeFew(std::ostream& out, const char* buffer, std::uint64_t size) {
    constexpr int kEnd = std::char_traits<char>::eof();
    std::streambuf& to = *out.rdbuf();
    std::uint64_t count = 0;
    quietly([&] {
        while (count < size && to.sputc(buffer[count]) != kEnd) ++count;
    });
    if (count < size) out.setstate(std::ios_base::badbit);
}

// As in.read(), for a sound stream that flushes nothing at a read. Returns how many bytes it read.
std::uint64_t readFew(std::istream& in, char* buffer, std::uint64_t size) {
    constexpr int kEnd = std::char_traits<char>::eof();
    std::streambuf& from = *in.rdbuf();
    std::uint64_t count = 0;
    auto state = std::ios_base::badbit;
    quietly([&] {
        for (int byte; count < size && (byte = from.sbumpc()) != kEnd; ++count) buffer[count] = static_cast<char>(byte);
        state = std::ios_base::eofbit | std::ios_base::failbit;
    });
    if (count < size) quietly([&] { in.setstate(state); });
    return count;
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
    std::uint64_t got = 0;
    if (size <= kFew && mIn->good() && !mIn->tie()) {
        got = readFew(*mIn, buffer, size);
    } else {
        quietly([&] { mIn->read(buffer, toStreamSize(size)); });
        got = static_cast<std::uint64_t>(mIn->gcount());
    }
    if (got == 0 && size != 0) quietly([&] { mIn->setstate(std::ios_base::eofbit); });
    return got;
}

std::uint64_t xoIoDeviceStdStreamProxy::writeBytes(const char* buffer, std::uint64_t size) {
    if (hasError() || !mOut) return 0;
    quietly([&] {
        if (size <= kFew && mOut->good() && !mOut->tie() && !(mOut->flags() & std::ios_base::unitbuf))
            writeFew(*mOut, buffer, size);
        else
            mOut->write(buffer, toStreamSize(size));
    });
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
