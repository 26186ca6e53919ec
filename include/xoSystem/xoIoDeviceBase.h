// xoIoDevice: the interface of byte devices.
//
// A device has two positions, one to read from (g) and one to write to (p). A program's own devices derive from
// xoIoDevice and answer as the comments below say: the streams and the library's devices rely on it. A device and
// everything that it forwards to are used by one thread at a time.
#ifndef XOSYSTEM_XOIODEVICEBASE_H
#define XOSYSTEM_XOIODEVICEBASE_H

#include <cstdint>
#include <string>

#include "xoSystem/xoExport.h"

namespace xo {

template <class E>
class xoEnumList;

class XOSYSTEM_API xoIoDevice {
public:
    // Any other value seeks nothing.
    enum SeekStart : int { SeekFromBegin = 0, SeekFromCurrent = 1, SeekFromEnd = 2 };

    virtual ~xoIoDevice();

    // Reads up to that many bytes and returns how many it read, never more than the size. Fewer mean that the end was
    // reached or that an error occurred. With a size of 0 it reads nothing, which is no error, and the buffer may be
    // null. The library's devices read nothing into a null buffer, or pass it on to the device below.
    virtual std::uint64_t readBytes(char* buffer, std::uint64_t size) = 0;

    // Writes all of the bytes and returns their number, or 0 after a failure, when some of them may have been written.
    // With a size of 0 it writes nothing, which is no error, and the buffer may be null. The library's devices write
    // nothing from a null buffer, or pass it on to the device below.
    virtual std::uint64_t writeBytes(const char* buffer, std::uint64_t size) = 0;

    // True after an error, until the device is reset in a way of its own.
    virtual bool hasError() const = 0;

    // Whether there is nothing more to read. Some devices know it only after a read that returned fewer bytes.
    virtual bool atEnd() const = 0;

    // Move the position to read from and the position to write to. False when that failed or is not supported.
    virtual bool seekg(std::int64_t offset, SeekStart start) = 0;
    virtual bool seekp(std::int64_t offset, SeekStart start) = 0;

    // The position to read from and the position to write to, in bytes.
    virtual std::uint64_t tellg() = 0;
    virtual std::uint64_t tellp() = 0;

    // Write the bytes of a text without a terminator or a length, with one call of writeBytes. A null pointer writes
    // nothing. Check good() afterwards.
    xoIoDevice& operator<<(const char* text);
    xoIoDevice& operator<<(const std::string& text);

    // Reads that many bytes in pieces of at most 4096 and discards them. Returns how many there were.
    std::uint64_t skipBytes(std::uint64_t count);

    // The opposite of hasError().
    bool good() const { return !hasError(); }

protected:
    xoIoDevice() = default;
    xoIoDevice(const xoIoDevice&) = default;
    xoIoDevice& operator=(const xoIoDevice&) = default;
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoIoDevice::SeekStart> xoEnumEntries(xoIoDevice::SeekStart);

}  // namespace xo

#endif
