// Blocks with a size in front, and raw bytes. Numbers are written and read in the header.
#include "xoSystem/xoDataStream.h"

#include <algorithm>
#include <new>
#include <stdexcept>

namespace xo {
namespace {

// The target grows by at most this many bytes before they are read, so that a false size in a damaged file does not
// make it allocate all of that size.
constexpr std::size_t kMaxRead = std::size_t{4} << 20;

// Without memory for that much the target stays as it is.
template <class Target>
void reserve(Target& target, std::size_t capacity) {
    try {
        target.reserve(capacity);
    } catch (const std::bad_alloc&) {
    } catch (const std::length_error&) {
    }
}

template <class Target>
bool resize(Target& target, std::size_t size) {
    try {
        target.resize(size);
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::length_error&) {
        return false;
    }
    return true;
}

}  // namespace

const char xoMajorOutputStreamVersion = 6;
const char xoMinorOutputStreamVersion = 30;

// The size is stored in 32 bits. A longer block is refused before anything is written.
xoDataStream& xoDataStream::putBlock(const char* data, std::uint64_t size) {
    if (size > 0xFFFFFFFF) {
        mOk = false;
        return *this;
    }
    *this << static_cast<std::uint32_t>(size);
    if (mOk && size != 0) mOk = mDevice->writeBytes(data, size) == size;
    return *this;
}

xoDataStream& xoDataStream::operator>>(std::string& text) { return takeBlock(text); }

xoDataStream& xoDataStream::operator>>(std::vector<char>& bytes) { return takeBlock(bytes); }

template <class Target>
xoDataStream& xoDataStream::takeBlock(Target& target) {
    target.clear();
    std::uint32_t size = 0;
    *this >> size;
    if (!mOk || fill(target, size)) return *this;
    target.clear();
    mOk = false;
    return *this;
}

// The target grows with the bytes that have been read, because the announced size may be false. Its capacity grows to
// four times of them, and at most to that size, so that each byte is moved a constant number of times.
template <class Target>
bool xoDataStream::fill(Target& target, std::size_t size) {
    for (std::size_t filled = 0; filled < size;) {
        const std::size_t piece = (std::min)(size - filled, kMaxRead);
        if (filled != 0 && filled + piece > target.capacity()) reserve(target, (std::min)(size, 4 * filled));
        if (!resize(target, filled + piece)) return false;
        if (mDevice->readBytes(target.data() + filled, piece) != piece) return false;
        filled += piece;
    }
    return true;
}

bool xoDataStream::writeRawData(const char* data, std::uint64_t size) {
    mOk = mOk && mDevice && (data || size == 0) && mDevice->writeBytes(data, size) == size;
    return mOk;
}

std::uint64_t xoDataStream::readRawBytes(char* buffer, std::uint64_t size) {
    if (!buffer || size == 0) return 0;
    const std::uint64_t count = mDevice ? mDevice->readBytes(buffer, size) : 0;
    mOk = mOk && count == size;
    return count;
}

}  // namespace xo
