// A device on memory: its own, which grows, or the caller's, which does not. Most transfers are a few bytes that fit,
// so readBytes and writeBytes test for that with as few comparisons as possible; all other cases are functions of their
// own.
#include "xoSystem/xoIoDeviceMemory.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <utility>

#include "stream/deviceMessage.h"
#include "stream/seekTarget.h"
#include "stream/shortCopy.h"

namespace xo {

xoIoDeviceMemory::xoIoDeviceMemory(std::vector<char> bytes)
    : mData(bytes.data()), mSize(bytes.size()), mWriteAt(bytes.size()), mBytes(std::move(bytes)) {
    updateRoom();
}

xoIoDeviceMemory::xoIoDeviceMemory(Kind kind, char* data, std::size_t size)
    : mData(data), mSize(data ? size : 0), mKind(kind) {
    updateRoom();
}

// The const_cast is safe: nothing is written to a view, because its room is 0.
xoIoDeviceMemory xoIoDeviceMemory::View(const char* data, std::size_t size) {
    return {Kind::View, const_cast<char*>(data), size};
}

xoIoDeviceMemory xoIoDeviceMemory::Room(char* data, std::size_t size) { return {Kind::Room, data, size}; }

xoIoDeviceMemory::xoIoDeviceMemory(xoIoDeviceMemory&& other) noexcept : xoIoDevice(other) { take(other); }

xoIoDeviceMemory& xoIoDeviceMemory::operator=(xoIoDeviceMemory&& other) noexcept {
    if (this != &other) take(other);
    return *this;
}

xoIoDeviceMemory::~xoIoDeviceMemory() = default;

// A vector keeps its memory when it is moved, so mData remains valid.
void xoIoDeviceMemory::take(xoIoDeviceMemory& other) noexcept {
    mData = std::exchange(other.mData, nullptr);
    mSize = std::exchange(other.mSize, 0);
    mRoom = std::exchange(other.mRoom, 0);
    mReadAt = std::exchange(other.mReadAt, 0);
    mWriteAt = std::exchange(other.mWriteAt, 0);
    mMaxBytes = std::exchange(other.mMaxBytes, UINT64_MAX);
    mBytes = std::exchange(other.mBytes, {});
    mKind = std::exchange(other.mKind, Kind::Growing);
    mError = std::exchange(other.mError, false);
}

void xoIoDeviceMemory::setMaxBytes(std::uint64_t bytes) {
    mMaxBytes = bytes;
    updateRoom();
}

const char* xoIoDeviceMemory::getData() const { return mData ? mData : ""; }

std::string xoIoDeviceMemory::toText() const { return {getData(), static_cast<std::size_t>(mSize)}; }

// Moves the bytes out of a growing device. Of a view or a caller's memory it returns a copy.
std::vector<char> xoIoDeviceMemory::takeBytes() {
    std::vector<char> bytes;
    if (mKind == Kind::Growing) {
        bytes.swap(mBytes);
        bytes.resize(static_cast<std::size_t>(mSize));  // shrinks, and so does not allocate
        mData = nullptr;
    } else {
        bytes.assign(getData(), getData() + mSize);
    }
    clear();
    return bytes;
}

void xoIoDeviceMemory::clear() {
    if (mKind == Kind::Growing) mSize = 0;
    mReadAt = mWriteAt = 0;
    mError = false;
    updateRoom();
}

// Computes how far writeBytes may copy without a further check. After an error and for a view that is 0, so that the
// quick path needs no test for them.
void xoIoDeviceMemory::updateRoom() {
    if (mError || mKind == Kind::View) {
        mRoom = 0;
    } else if (mKind == Kind::Room) {
        mRoom = mSize;
    } else {
        // Bytes that are held already may be overwritten even if a lower limit was set later.
        mRoom = (std::min)(std::uint64_t{mBytes.size()}, (std::max)(mSize, mMaxBytes));
    }
}

// Numbers and words take the quick path here and in writeBytes, everything else the slow one.
std::uint64_t xoIoDeviceMemory::readBytes(char* buffer, std::uint64_t size) {
    if (size > stream::kFew || mReadAt > mSize || size > mSize - mReadAt || !buffer) return readLess(buffer, size);
    stream::copyFew(buffer, mData + mReadAt, static_cast<std::size_t>(size));
    mReadAt += size;
    return size;
}

// Reads what there is, up to that many bytes: less than asked for behind the end.
std::uint64_t xoIoDeviceMemory::readLess(char* buffer, std::uint64_t size) {
    if (atEnd() || !buffer) return 0;
    const std::uint64_t got = (std::min)(size, mSize - mReadAt);
    std::memcpy(buffer, mData + mReadAt, static_cast<std::size_t>(got));
    mReadAt += got;
    return got;
}

std::uint64_t xoIoDeviceMemory::writeBytes(const char* buffer, std::uint64_t size) {
    if (size > stream::kFew || mWriteAt > mSize || mWriteAt > mRoom || size > mRoom - mWriteAt || !buffer)
        return writeSlowly(buffer, size);
    stream::copyFew(mData + mWriteAt, buffer, static_cast<std::size_t>(size));
    mWriteAt += size;
    if (mWriteAt > mSize) mSize = mWriteAt;
    return size;
}

// For a write that is longer, needs more memory, begins behind the end (the gap is filled with zeros) or cannot be
// done.
std::uint64_t xoIoDeviceMemory::writeSlowly(const char* buffer, std::uint64_t size) {
    if (!buffer || size == 0 || mError) return 0;
    if (mKind == Kind::View) {
        failOnView("xoIoDeviceMemory writeBytes on a view is not supported");
        return 0;
    }
    if (size > stream::kLastPosition - mWriteAt) return fail();
    const std::uint64_t end = mWriteAt + size;
    std::vector<char> before;  // kept until the bytes are copied, which may be the device's own
    if (end > mRoom && !reserve(end, before)) return fail();
    if (mWriteAt > mSize) std::memset(mData + mSize, 0, static_cast<std::size_t>(mWriteAt - mSize));
    std::memcpy(mData + mWriteAt, buffer, static_cast<std::size_t>(size));
    mWriteAt = end;
    mSize = (std::max)(mSize, end);
    return size;
}

// Makes space for that many bytes in all. The old memory goes to before. False beyond the limit, for memory of the
// caller and when memory runs out; nothing has changed then.
bool xoIoDeviceMemory::reserve(std::uint64_t size, std::vector<char>& before) {
    if (mKind != Kind::Growing || size > mMaxBytes) return false;
    constexpr std::uint64_t kFirstCapacity = 64;  // spares an allocation for each of the first small writes
    const std::uint64_t twice = (std::min)((std::max)(2 * std::uint64_t{mBytes.size()}, kFirstCapacity), mMaxBytes);
    // Twice the size first, so that each byte is moved a constant number of times; the exact size when memory is short.
    for (const std::uint64_t capacity : {(std::max)(size, twice), size}) {
        try {
            std::vector<char> grown(static_cast<std::size_t>(capacity));
            if (mSize != 0) std::memcpy(grown.data(), mData, static_cast<std::size_t>(mSize));
            before = std::exchange(mBytes, std::move(grown));
            mData = mBytes.data();
            updateRoom();
            return true;
        } catch (const std::exception&) {  // std::bad_alloc or std::length_error
        }
    }
    return false;
}

std::uint64_t xoIoDeviceMemory::fail() {
    mError = true;
    mRoom = 0;  // so that each further write takes the slow path, which tests the flag
    return 0;
}

void xoIoDeviceMemory::failOnView(const char* message) {
    stream::report(message);
    fail();
}

bool xoIoDeviceMemory::seekg(std::int64_t offset, SeekStart start) {
    const auto target = stream::seekTarget(mReadAt, mSize, offset, start);
    if (target) mReadAt = *target;
    return target.has_value();
}

bool xoIoDeviceMemory::seekp(std::int64_t offset, SeekStart start) {
    if (mKind == Kind::View) {
        // Only the first attempt is logged.
        if (!mError) failOnView("xoIoDeviceMemory seekp on a view is not supported");
        return false;
    }
    const auto target = stream::seekTarget(mWriteAt, mSize, offset, start);
    if (target) mWriteAt = *target;
    return target.has_value();
}

}  // namespace xo
