#include "stream/fileDevice.h"

#include "files/fileWriting.h"
#include "platform/wideText.h"
#include "stream/shortCopy.h"

namespace xo::stream {
namespace {

// Other programs may write to the file, as they may while a standard stream has it open.
platform::FileHandle openShared(const std::string& path) {
    return platform::FileHandle(::CreateFileW(
        platform::toApiPath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        /*lpSecurityAttributes=*/nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, /*hTemplateFile=*/nullptr));
}

}  // namespace

bool FileDevice::open(const std::string& path) {
    if (!mBuffer) mBuffer.reset(new char[kCapacity]);  // make_unique would clear it
    mFile = openShared(path);
    mBuffered = 0;
    mFailed = false;
    return isOpen();
}

bool FileDevice::close() {
    const bool wasLost = mFailed;
    const bool isWritten = !mFile || wasLost || writeThrough(mBuffer.get(), mBuffered);
    mBuffered = 0;
    mFile.reset();
    return isWritten;
}

std::uint64_t FileDevice::writeBytes(const char* buffer, std::uint64_t size) {
    if (hasError()) return 0;
    if (size > kCapacity - mBuffered) {
        if (!writeThrough(mBuffer.get(), mBuffered)) return 0;
        mBuffered = 0;
        if (size >= kCapacity) return writeThrough(buffer, static_cast<std::size_t>(size)) ? size : 0;
    }
    copyShort(mBuffer.get() + mBuffered, buffer, static_cast<std::size_t>(size));
    mBuffered += static_cast<std::size_t>(size);
    return size;
}

bool FileDevice::writeThrough(const char* buffer, std::size_t size) {
    mFailed = files::writeAll(mFile, {buffer, size}) != ERROR_SUCCESS;
    return !mFailed;
}

}  // namespace xo::stream
