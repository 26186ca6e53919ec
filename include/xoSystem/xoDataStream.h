// xoDataStream: plain values to and from a device, in a fixed binary layout.
//
//     xo::xoDataStream stream(&device, xo::xoDataStream::EndiannessBig);
//     stream << std::int64_t{7} << 2.5 << std::string("name");
//     if (!stream.isOk()) return lost();
//
// Layout, with B for the stream's byte order:
//
//     bool                          1 byte, FF or 00; any byte except 00 reads as true
//     char, signed or unsigned      1 byte
//     short, unsigned short         2 bytes, B
//     int, long, also unsigned      4 bytes, B
//     std::int64_t, std::uint64_t   8 bytes, B
//     float, double                 4 and 8 bytes, the bits of IEEE 754 as an integer in B
//     std::string, vector<char>     the number of bytes as an unsigned int, then the bytes as they are
//
// Nothing else reaches the device. A file that needs a version number has to write it as values of its own.
//
// Errors are reported by one flag, isOk(). A transfer of fewer bytes than the value has clears it, and from then on <<
// and >> do nothing, so it is enough to check it after a sequence of operations. Only the number of bytes that the
// device returns counts; its hasError() is not consulted. Nothing is logged, and nothing throws except the device.
//
// The stream does not own the device. With a null device every operation fails. A stream and its device are used by one
// thread at a time. A copy shares the device and has its own flag.
#ifndef XOSYSTEM_XODATASTREAM_H
#define XOSYSTEM_XODATASTREAM_H

#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoIoDevice.h"

namespace xo {

template <class E>
class xoEnumList;

// The version of the layout, 6.30. The stream neither writes nor checks it.
XOSYSTEM_API extern const char xoMajorOutputStreamVersion;
XOSYSTEM_API extern const char xoMinorOutputStreamVersion;

class XOSYSTEM_API xoDataStream {
public:
    // Any other value means little-endian too.
    enum Endianness : int { EndiannessLittle = 0, EndiannessBig = 1 };

    // The stream is ok at first, with a null device too.
    xoDataStream(xoIoDevice* device, Endianness endianness) : mDevice(device), mEndianness(endianness) {}
    xoDataStream(xoIoDevice* device, int endianness) : xoDataStream(device, static_cast<Endianness>(endianness)) {}

    // The byte order, which may be changed between two values.
    Endianness getEndianness() const { return mEndianness; }
    void setEndianness(Endianness endianness) { mEndianness = endianness; }
    void setEndianness(int endianness) { mEndianness = static_cast<Endianness>(endianness); }

    // False after the first failure. Only the assignment of another stream makes it true again.
    bool isOk() const { return mOk; }

    // Clears the flag, for instance after a value that makes no sense.
    void setError() { mOk = false; }

    // Write a value in the layout above.
    xoDataStream& operator<<(bool value) { return put<std::uint8_t>(value ? 0xFF : 0x00); }
    xoDataStream& operator<<(char value) { return put<std::uint8_t>(value); }
    xoDataStream& operator<<(signed char value) { return put<std::uint8_t>(value); }
    xoDataStream& operator<<(unsigned char value) { return put<std::uint8_t>(value); }
    xoDataStream& operator<<(short value) { return put<std::uint16_t>(value); }
    xoDataStream& operator<<(unsigned short value) { return put<std::uint16_t>(value); }
    xoDataStream& operator<<(int value) { return put<std::uint32_t>(value); }
    xoDataStream& operator<<(unsigned int value) { return put<std::uint32_t>(value); }
    xoDataStream& operator<<(long value) { return put<std::uint32_t>(value); }
    xoDataStream& operator<<(unsigned long value) { return put<std::uint32_t>(value); }
    xoDataStream& operator<<(std::int64_t value) { return put<std::uint64_t>(value); }
    xoDataStream& operator<<(std::uint64_t value) { return put<std::uint64_t>(value); }
    xoDataStream& operator<<(float value) { return put<std::uint32_t>(value); }
    xoDataStream& operator<<(double value) { return put<std::uint64_t>(value); }

    // Write the length with one call of writeBytes and the bytes with another one; an empty text has no second call.
    // More than 4294967295 bytes fail, and nothing is written.
    xoDataStream& operator<<(const std::string& text) { return putBlock(text.data(), text.size()); }
    xoDataStream& operator<<(const std::vector<char>& bytes) { return putBlock(bytes.data(), bytes.size()); }

    // Writes what a std::string with the same text writes; null is the empty text.
    xoDataStream& operator<<(const char* text) { return putBlock(text, text ? std::strlen(text) : 0); }
    template <class T>
    xoDataStream& operator<<(const T* pointer) = delete;  // it would be written as a bool

    // Read a value. It keeps its old value when the device returns fewer bytes or the stream was not ok before.
    xoDataStream& operator>>(bool& value) {
        std::uint8_t byte = 0;
        if (take<std::uint8_t>(byte).mOk) value = byte != 0;  // not before: the value may be uninitialised
        return *this;
    }
    xoDataStream& operator>>(char& value) { return take<std::uint8_t>(value); }
    xoDataStream& operator>>(signed char& value) { return take<std::uint8_t>(value); }
    xoDataStream& operator>>(unsigned char& value) { return take<std::uint8_t>(value); }
    xoDataStream& operator>>(short& value) { return take<std::uint16_t>(value); }
    xoDataStream& operator>>(unsigned short& value) { return take<std::uint16_t>(value); }
    xoDataStream& operator>>(int& value) { return take<std::uint32_t>(value); }
    xoDataStream& operator>>(unsigned int& value) { return take<std::uint32_t>(value); }
    xoDataStream& operator>>(long& value) { return take<std::uint32_t>(value); }
    xoDataStream& operator>>(unsigned long& value) { return take<std::uint32_t>(value); }
    xoDataStream& operator>>(std::int64_t& value) { return take<std::uint64_t>(value); }
    xoDataStream& operator>>(std::uint64_t& value) { return take<std::uint64_t>(value); }
    xoDataStream& operator>>(float& value) { return take<std::uint32_t>(value); }
    xoDataStream& operator>>(double& value) { return take<std::uint64_t>(value); }

    // Read a text. The target is emptied first, also when the stream is not ok, and stays empty after a failure.
    //
    // Up to 4 MiB are read with one call of readBytes. A longer text is read with several calls, of 4 MiB each and the
    // rest, so that memory grows with the bytes that arrive and not with a false length in damaged data. A text that
    // does not fit into memory is a failure.
    xoDataStream& operator>>(std::string& text);
    xoDataStream& operator>>(std::vector<char>& bytes);

    // Writes the bytes without a length, with one call of writeBytes, also for a size of 0. Returns isOk(): false when
    // the stream was not ok before (nothing is written then), when the device does not take all bytes, and when data is
    // null and the size is not 0.
    bool writeRawData(const char* data, std::uint64_t size);

    // Reads up to that many bytes with one call of readBytes, also when the stream is not ok, and returns how many it
    // read. Fewer than the size make the stream not ok. With a null buffer or a size of 0 it does nothing and returns
    // 0.
    std::uint64_t readRawBytes(char* buffer, std::uint64_t size);

private:
    static constexpr std::uint8_t swapped(std::uint8_t bits) { return bits; }
    static constexpr std::uint16_t swapped(std::uint16_t bits) {
        return static_cast<std::uint16_t>((bits << 8) | (bits >> 8));
    }
    static constexpr std::uint32_t swapped(std::uint32_t bits) {
        return (bits << 24) | ((bits & 0xFF00U) << 8) | ((bits >> 8) & 0xFF00U) | (bits >> 24);
    }
    static constexpr std::uint64_t swapped(std::uint64_t bits) {
        const std::uint64_t low = swapped(static_cast<std::uint32_t>(bits));
        return (low << 32) | swapped(static_cast<std::uint32_t>(bits >> 32));
    }

    // The processor is little-endian, so that order takes the bytes as they are in memory. These templates and the
    // state below are in the header, not in a private record, because inlined they cost little more than the device's
    // call.
    template <class Bits, class Value>
    xoDataStream& put(Value value) {
        Bits bits = 0;
        if constexpr (std::is_floating_point_v<Value>) {
            static_assert(sizeof bits == sizeof value);
            std::memcpy(&bits, &value, sizeof bits);
        } else {
            bits = static_cast<Bits>(value);
        }
        if (!mOk) return *this;
        if (mEndianness == EndiannessBig) bits = swapped(bits);
        mOk = mDevice && mDevice->writeBytes(reinterpret_cast<const char*>(&bits), sizeof bits) == sizeof bits;
        return *this;
    }

    template <class Bits, class Value>
    xoDataStream& take(Value& value) {
        static_assert(sizeof(Bits) == sizeof value);
        if (!mOk) return *this;
        Bits bits = 0;
        mOk = mDevice && mDevice->readBytes(reinterpret_cast<char*>(&bits), sizeof bits) == sizeof bits;
        if (!mOk) return *this;
        if (mEndianness == EndiannessBig) bits = swapped(bits);
        std::memcpy(&value, &bits, sizeof bits);
        return *this;
    }

    xoDataStream& putBlock(const char* data, std::uint64_t size);
    template <class Target>
    xoDataStream& takeBlock(Target& target);
    template <class Target>
    bool fill(Target& target, std::size_t size);

    xoIoDevice* mDevice;
    Endianness mEndianness;
    bool mOk = true;
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoDataStream::Endianness> xoEnumEntries(xoDataStream::Endianness);

}  // namespace xo

#endif
