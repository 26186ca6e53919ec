// A file that is written from its beginning, in blocks.
#ifndef XO_STREAM_FILEDEVICE_H
#define XO_STREAM_FILEDEVICE_H

#include <memory>
#include <string>

#include "platform/handle.h"
#include "xoSystem/xoIoDeviceBase.h"

namespace xo::stream {

class FileDevice final : public xoIoDevice {
public:
    // Creates the file or empties it. The file before must have been closed. Throws std::bad_alloc without memory.
    bool open(const std::string& path);
    bool isOpen() const { return static_cast<bool>(mFile); }

    // Writes the buffer to the file and closes it. False when that fails; an error of an earlier write, which that
    // write returned, does not count.
    bool close();

    // An error may show only at a later write or at closing. After it nothing is written, so that the file has no gap.
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override;
    bool hasError() const override { return mFailed || !mFile; }

    // Reading and positions are not supported.
    std::uint64_t readBytes(char*, std::uint64_t) override { return 0; }
    bool atEnd() const override { return true; }
    bool seekg(std::int64_t, SeekStart) override { return false; }
    bool seekp(std::int64_t, SeekStart) override { return false; }
    std::uint64_t tellg() override { return 0; }
    std::uint64_t tellp() override { return 0; }

private:
    static constexpr std::size_t kCapacity = 0x10000;

    bool writeThrough(const char* buffer, std::size_t size);

    platform::FileHandle mFile;
    std::unique_ptr<char[]> mBuffer;  // kCapacity bytes, from the first file on
    std::size_t mBuffered = 0;        // bytes in it that are not in the file yet
    bool mFailed = false;
};

}  // namespace xo::stream

#endif
