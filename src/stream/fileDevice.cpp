#include "stream/fileDevice.h"

#include <cstring>

#include "files/fileWriting.h"

namespace xo::stream {
namespace {

// The first and the last bytes, some of them twice where there are fewer than both together.
template <std::size_t kSize>
void copyEnds(char* out, const char* bytes, std::size_t size) {
    char first[kSize];
    char last[kSize];
    std::memcpy(first, bytes, kSize);
    std::memcpy(last, bytes + size - kSize, kSize);
    std::memcpy(out, first, kSize);
    std::memcpy(out + size - kSize, last, kSize);
}

// Most pieces are short; those need no call.
void copy(char* out, const char* bytes, std::size_t size) {
    if (size > 32) {
        std::memcpy(out, bytes, size);
    } else if (size >= 16) {
        copyEnds<16>(out, bytes, size);
    } else if (size >= 8) {
        copyEnds<8>(out, bytes, size);
    } else if (size >= 4) {
        copyEnds<4>(out, bytes, size);
    } else if (size >= 2) {
        copyEnds<2>(out, bytes, size);
    } else if (size == 1) {
        *out = *bytes;
    }
}

}  // namespace

bool FileDevice::open(const std::string& path) {
    if (!mBuffer) mBuffer.reset(new char[kRoom]);  // not filled with zeros first
    mFile = files::openForWriting(path);
    mWaiting = 0;
    mFailed = false;
    return isOpen();
}

bool FileDevice::close() {
    const bool wasLost = mFailed;
    const bool isWritten = !mFile || wasLost || writeThrough(mBuffer.get(), mWaiting);
    mWaiting = 0;
    mFile.reset();
    return isWritten;
}

std::uint64_t FileDevice::writeBytes(const char* buffer, std::uint64_t size) {
    if (hasError()) return 0;
    if (size > kRoom - mWaiting) {
        if (!writeThrough(mBuffer.get(), mWaiting)) return 0;
        mWaiting = 0;
        if (size >= kRoom) return writeThrough(buffer, static_cast<std::size_t>(size)) ? size : 0;
    }
    copy(mBuffer.get() + mWaiting, buffer, static_cast<std::size_t>(size));
    mWaiting += static_cast<std::size_t>(size);
    return size;
}

bool FileDevice::writeThrough(const char* buffer, std::size_t size) {
    mFailed = !files::writeAll(mFile, {buffer, size});
    return !mFailed;
}

}  // namespace xo::stream
