// xoIoDeviceStdStreamProxy: a device over standard streams.
//
//     std::ofstream file(path, std::ios::binary);
//     xo::xoIoDeviceStdStreamProxy device(/*in=*/nullptr, &file);
//     xo::xoDataStream stream(&device, xo::xoDataStream::EndiannessBig);
//     stream << 7;
//     const bool ok = stream.isOk() && file.flush();
//
// The output stream buffers what is written, so an error may show only when it is flushed or closed: do that, and check
// the stream. A file stream must be opened in binary mode. Its buffer may be as small as 512 bytes; a larger one, set
// before the file is opened, makes it faster.
//
// A stream that throws on errors does not throw through this class. Pieces of up to 16 bytes that lie within the
// buffer of a stream are moved without its functions, so gcount() of the input stream is not set.
#ifndef XOSYSTEM_XOIODEVICESTDSTREAMPROXY_H
#define XOSYSTEM_XOIODEVICESTDSTREAMPROXY_H

#include <cstdint>
#include <iosfwd>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoIoDeviceBase.h"

namespace xo {

// Copies use the same streams. The state is two pointers and stays in the class: a private record would need an
// allocation for each file.
class XOSYSTEM_API xoIoDeviceStdStreamProxy : public xoIoDevice {
public:
    // Neither stream is owned, and either may be null: reading or writing then returns 0, without an error.
    //
    // Both may be the same object. A std::fstream has one position for both directions, and between a read and a write
    // it needs a seek; a std::stringstream has two positions.
    xoIoDeviceStdStreamProxy(std::istream* in, std::ostream* out) : mIn(in), mOut(out) {}
    xoIoDeviceStdStreamProxy(const xoIoDeviceStdStreamProxy&) = default;
    xoIoDeviceStdStreamProxy& operator=(const xoIoDeviceStdStreamProxy&) = default;
    ~xoIoDeviceStdStreamProxy() override;

    // A read that finds nothing sets the eof bit of the input stream, and so atEnd(). A null buffer reads nothing.
    std::uint64_t readBytes(char* buffer, std::uint64_t size) override;
    // A null buffer writes nothing and returns 0, without an error.
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override;

    // True when the input stream is bad or the output stream has failed. The fail bit of the input stream, which a read
    // beyond the end sets, is no error.
    bool hasError() const override;
    bool atEnd() const override;  // the eof bit of the input stream; false without one

    // Return whether there is no error; false without a stream. A stream that failed does not move: clear() it before
    // seeking back from the end.
    bool seekg(std::int64_t offset, SeekStart start) override;
    bool seekp(std::int64_t offset, SeekStart start) override;

    // 18446744073709551615 (-1) when the stream does not know its position, 0 without a stream.
    std::uint64_t tellg() override;
    std::uint64_t tellp() override;

private:
    std::istream* mIn;
    std::ostream* mOut;
};

}  // namespace xo

#endif
