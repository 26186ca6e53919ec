// xoDataStream: plain values to and from a device, in a fixed binary layout.
//
//     xo::xoDataStream stream(&device, xo::xoDataStream::EndiannessBig);
//     stream << std::int64_t{7} << 2.5 << std::string("name");
//     if (!stream.isOk()) return lost();
//
// Layout, with B for the stream's byte order:
//
//     bool                          1 byte, FF or 00; any byte but 00 reads as true
//     char, signed or unsigned      1 byte
//     short, unsigned short         2 bytes, B
//     int, long, also unsigned      4 bytes, B
//     std::int64_t, std::uint64_t   8 bytes, B
//     float, double                 4 and 8 bytes, the bits of IEEE 754 as an integer in B
//     std::string, vector<char>     the number of bytes as an unsigned int, then the bytes as they are
//
// Nothing else reaches the device: who wants a version in a file writes one.
//
// Failure is one flag, isOk(), that once false stays false: whatever moves fewer bytes than it should clears it, and
// from then on << and >> do nothing. So ask after a sequence of operations. Nothing throws (unless the device does) or
// logs, and the device's own error state is not looked at. The stream does not own the device; a null device fails
// everything. A stream and its device belong to one thread at a time; a copy shares the device and has a flag of its
// own.
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

// The version of the layout. The stream neither writes nor checks it.
XOSYSTEM_API extern const char xoMajorOutputStreamVersion;
XOSYSTEM_API extern const char xoMinorOutputStreamVersion;

class XOSYSTEM_API xoDataStream {
public:
    // Any other value stands for little-endian too.
    enum Endianness : int { EndiannessLittle = 0, EndiannessBig = 1 };

    // Starts out ok, with a null device too.
    xoDataStream(xoIoDevice* device, Endianness endianness) : mDevice(device), mEndianness(endianness) {}
    xoDataStream(xoIoDevice* device, int endianness) : xoDataStream(device, static_cast<Endianness>(endianness)) {}

    // Of what is read and written next.
    Endianness getEndianness() const { return mEndianness; }

    // For what follows; a stream may change its order midway.
    void setEndianness(Endianness endianness) { mEndianness = endianness; }
    void setEndianness(int endianness) { mEndianness = static_cast<Endianness>(endianness); }

    // Whether everything moved that should have.
    bool isOk() const { return mOk; }

    // Makes the stream fail, for instance over a value that makes no sense. Nothing mends it but assigning another.
    void setError() { mOk = false; }

    // Write a value as the layout above has it.
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

    // Writes the length in one piece and the bytes in another. More than 4 GiB - 1 fail and write nothing.
    xoDataStream& operator<<(const std::string& text) { return putBlock(text.data(), text.size()); }
    xoDataStream& operator<<(const std::vector<char>& bytes) { return putBlock(bytes.data(), bytes.size()); }

    // As the std::string with the same text; null as the empty one.
    xoDataStream& operator<<(const char* text) { return putBlock(text, text ? std::strlen(text) : 0); }
    template <class T>
    xoDataStream& operator<<(const T* pointer) = delete;  // it would be written as a bool

    // When the device comes up short, or the stream was not ok before, the value stays as it was.
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

    // Empties the target in any case. A length that is not true is no danger: up to 4 MiB are read at once, what goes
    // beyond in pieces of 4 MiB, so that memory is taken only for bytes that came, and no more than a piece in advance.
    // A target that the memory does not suffice for fails.
    xoDataStream& operator>>(std::string& text);
    xoDataStream& operator>>(std::vector<char>& bytes);

    // The bytes as they are, without a length. False, with the stream no longer ok, unless all were written; also false
    // when the stream was not ok before, with nothing written.
    bool writeRawData(const char* data, std::uint64_t size);

    // Returns how many bytes were read; fewer than asked make the stream not ok. Reads even when it was not ok before.
    // A null buffer or a size of 0 reads nothing and changes nothing.
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

    // The machine is little-endian, so one order takes the bytes as they lie in memory. In the header, because moving a
    // value costs little more than the device's call then.
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

}  // namespace xo

#endif
