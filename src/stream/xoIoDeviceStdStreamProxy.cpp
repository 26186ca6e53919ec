// A device on the streams of the standard library, which the caller owns.
#include <algorithm>
#include <istream>
#include <limits>
#include <ostream>

#include "stream/shortCopy.h"
#include "xoSystem/xoIoDeviceStdStreamProxy.h"

namespace xo {
namespace {

// std::streamsize is signed. A size that it cannot represent becomes the largest that it can.
std::streamsize toStreamSize(std::uint64_t size) {
    constexpr auto most = static_cast<std::uint64_t>((std::numeric_limits<std::streamsize>::max)());
    return static_cast<std::streamsize>((std::min)(size, most));
}

// Runs an operation on a stream and drops its exception: the state of the stream, which callers check, says the same.
template <class Operation>
void ignoringExceptions(Operation operation) {
    try {
        operation();
    } catch (...) {
    }
}

// The get and put areas of a stream buffer. A piece that lies within one is moved without any virtual call: read() and
// write() of a stream cost as much as fifty bytes moved this way. Whatever is beyond the area is left to them, because
// a buffer may have no areas and override only xsgetn and xsputn.
//
// The areas are protected members. A derived class may name them, and a pointer to a member that it inherits is a
// pointer to a member of std::streambuf itself, which applies to any buffer.
struct Areas : std::streambuf {
    static bool get(std::streambuf& from, char* bytes, std::size_t size) {
        const char* const at = (from.*(&Areas::gptr))();
        if (size > static_cast<std::size_t>((from.*(&Areas::egptr))() - at)) return false;
        stream::copyShort(bytes, at, size);
        (from.*(&Areas::gbump))(static_cast<int>(size));
        return true;
    }
    static bool put(std::streambuf& to, const char* bytes, std::size_t size) {
        char* const at = (to.*(&Areas::pptr))();
        if (size > static_cast<std::size_t>((to.*(&Areas::epptr))() - at)) return false;
        stream::copyShort(at, bytes, size);
        (to.*(&Areas::pbump))(static_cast<int>(size));
        return true;
    }
};

// As many bytes as a number has. Larger pieces are left to the stream, whose buffer may pass them on without a copy.
constexpr std::uint64_t kFew = 16;

// True if the stream is good(), flushes no other stream first, and has all of the bytes in its buffer. A stream without
// a buffer is not good().
bool readFew(std::istream& in, char* buffer, std::uint64_t size) {
    return size <= kFew && in.good() && !in.tie() && Areas::get(*in.rdbuf(), buffer, static_cast<std::size_t>(size));
}

// True if the stream is good(), flushes nothing before or after a write, and has space for all of the bytes.
bool writeFew(std::ostream& out, const char* buffer, std::uint64_t size) {
    return size <= kFew && out.good() && !out.tie() && !(out.flags() & std::ios_base::unitbuf) &&
           Areas::put(*out.rdbuf(), buffer, static_cast<std::size_t>(size));
}

// Calls seek with the direction of the standard library. Another value of start seeks nothing.
template <class Seek>
void seekFrom(xoIoDevice::SeekStart start, Seek seek) {
    switch (start) {
        case xoIoDevice::SeekFromBegin: ignoringExceptions([&] { seek(std::ios_base::beg); }); break;
        case xoIoDevice::SeekFromCurrent: ignoringExceptions([&] { seek(std::ios_base::cur); }); break;
        case xoIoDevice::SeekFromEnd: ignoringExceptions([&] { seek(std::ios_base::end); }); break;
    }
}

}  // namespace

xoIoDeviceStdStreamProxy::~xoIoDeviceStdStreamProxy() {
    mIn = nullptr;
    mOut = nullptr;
}

std::uint64_t xoIoDeviceStdStreamProxy::readBytes(char* buffer, std::uint64_t size) {
    if (hasError() || !mIn || !buffer || size == 0) return 0;
    if (readFew(*mIn, buffer, size)) return size;
    ignoringExceptions([&] { mIn->read(buffer, toStreamSize(size)); });
    const auto got = static_cast<std::uint64_t>(mIn->gcount());
    // A stream that has failed before reads nothing and does not set the bit itself. A loop until atEnd() would not
    // end.
    if (got == 0) ignoringExceptions([&] { mIn->setstate(std::ios_base::eofbit); });
    return got;
}

std::uint64_t xoIoDeviceStdStreamProxy::writeBytes(const char* buffer, std::uint64_t size) {
    if (hasError() || !mOut || !buffer) return 0;
    if (writeFew(*mOut, buffer, size)) return size;
    ignoringExceptions([&] { mOut->write(buffer, toStreamSize(size)); });
    // std::ostream::write does not say how many bytes were written, so that a failed write counts as none.
    return hasError() ? 0 : size;
}

// For input only bad() is an error: the end of the input sets failbit too.
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

// The -1 of a stream that does not know its position becomes the largest value; a missing stream has the position 0.
std::uint64_t xoIoDeviceStdStreamProxy::tellg() {
    std::streamoff position = mIn ? -1 : 0;
    if (mIn) ignoringExceptions([&] { position = mIn->tellg(); });
    return static_cast<std::uint64_t>(position);
}

std::uint64_t xoIoDeviceStdStreamProxy::tellp() {
    std::streamoff position = mOut ? -1 : 0;
    if (mOut) ignoringExceptions([&] { position = mOut->tellp(); });
    return static_cast<std::uint64_t>(position);
}

}  // namespace xo
