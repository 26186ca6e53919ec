#include "stream/fileDevice.h"

#include "files/fileWriting.h"
#include "stream/shortCopy.h"

namespace xo::stream {

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
    copyShort(mBuffer.get() + mWaiting, buffer, static_cast<std::size_t>(size));
    mWaiting += static_cast<std::size_t>(size);
    return size;
}

bool FileDevice::writeThrough(const char* buffer, std::size_t size) {
    mFailed = !files::writeAll(mFile, {buffer, size});
    return !mFailed;
}

}  // namespace xo::stream
