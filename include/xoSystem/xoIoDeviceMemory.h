// xoIoDeviceMemory: a device over bytes in memory, its own or those of the caller.
//
//     xo::xoIoDeviceMemory memory;
//     xo::xoDataStream(&memory, xo::xoDataStream::EndiannessLittle) << key << name;
//     send(memory.getData(), memory.getSize());
//
//     xo::xoIoDeviceMemory received = xo::xoIoDeviceMemory::View(bytes, size);      // reads the caller's bytes
//
// The device has one position to read from and one to write to. Seeking behind the end is allowed; the gap is filled
// with zeros by the next write. A write that does not fit, or for which memory runs out, writes nothing, returns 0 and
// raises the error flag. From then on nothing is written until clear(); reading goes on. Nothing throws except the two
// functions that return copies. A device is used by one thread at a time.
#ifndef XOSYSTEM_XOIODEVICEMEMORY_H
#define XOSYSTEM_XOIODEVICEMEMORY_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoIoDeviceBase.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

// A device that was moved from is an empty one. The state stays in the class: a device is often a local, and each
// transfer uses most of it.
class XOSYSTEM_API xoIoDeviceMemory : public xoIoDevice {
public:
    // Empty; grows.
    xoIoDeviceMemory() = default;
    // Holds these bytes and grows; reads at 0, writes at their end.
    explicit xoIoDeviceMemory(std::vector<char> bytes);
    // The caller's bytes, which must outlive the device; read only. A null pointer is an empty view.
    static xoIoDeviceMemory View(const char* data, std::size_t size);
    // The caller's memory, which must outlive the device. Its size is the whole size from the start, both positions are
    // 0, and writes stay inside it. A null pointer is an empty room.
    static xoIoDeviceMemory Room(char* data, std::size_t size);

    xoIoDeviceMemory(const xoIoDeviceMemory&) = delete;
    xoIoDeviceMemory& operator=(const xoIoDeviceMemory&) = delete;
    // What getData() gave stays valid.
    xoIoDeviceMemory(xoIoDeviceMemory&& other) noexcept;
    xoIoDeviceMemory& operator=(xoIoDeviceMemory&& other) noexcept;
    ~xoIoDeviceMemory() override;

    // How large the device may grow; without a limit at first. What it holds already stays, and can be overwritten. A
    // view and a room do not grow.
    void setMaxBytes(std::uint64_t bytes);

    // The bytes. The pointer is valid until the next write, and never null.
    const char* getData() const;
    std::uint64_t getSize() const { return mSize; }
    // Throw std::bad_alloc when there is no memory for a copy. takeBytes leaves the device as clear() does, and gives
    // its memory away without a copy; of a view or a room it gives a copy.
    std::string toText() const;
    std::vector<char> takeBytes();
    // Leaves no bytes, both positions 0 and no error flag; keeps the memory for the next bytes. A view or a room keeps
    // its bytes.
    void clear();

    std::uint64_t readBytes(char* buffer, std::uint64_t size) override;
    // Writing to a view, and seekp on it, log a CRITICAL line and raise the error flag. The bytes may be the device's
    // own, but must not overlap the place where they are written.
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override;
    bool hasError() const override { return mError; }
    // Whether the position to read from is at or behind the size.
    bool atEnd() const override { return mReadAt >= mSize; }

    // Any position from 0 to 2^63-1; otherwise false, and the position stays.
    bool seekg(std::int64_t offset, SeekStart start) override;
    bool seekp(std::int64_t offset, SeekStart start) override;
    std::uint64_t tellg() override { return mReadAt; }
    std::uint64_t tellp() override { return mWriteAt; }

private:
    enum class Kind : unsigned char { Growing, View, Room };

    xoIoDeviceMemory(Kind kind, char* data, std::size_t size);

    void updateRoom();
    void take(xoIoDeviceMemory& other) noexcept;
    std::uint64_t readLess(char* buffer, std::uint64_t size);
    std::uint64_t writeSlowly(const char* buffer, std::uint64_t size);
    bool reserve(std::uint64_t size, std::vector<char>& before);
    std::uint64_t fail();
    void failOnView(const char* message);

    char* mData = nullptr;       // mSize bytes are valid; null while there is no memory
    std::uint64_t mSize = 0;     // of what the device holds
    std::uint64_t mRoom = 0;     // up to where a write needs no growing; 0 after an error
    std::uint64_t mReadAt = 0;   // may lie behind mSize
    std::uint64_t mWriteAt = 0;  // may lie behind mSize
    std::uint64_t mMaxBytes = UINT64_MAX;
    std::vector<char> mBytes;  // what mData points to if it grows; its size is the room, not what is held
    Kind mKind = Kind::Growing;
    bool mError = false;
};

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
