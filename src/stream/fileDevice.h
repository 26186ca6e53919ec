// A file to write to, from its begin on, in blocks.
#ifndef XO_STREAM_FILEDEVICE_H
#define XO_STREAM_FILEDEVICE_H

#include <memory>
#include <string>

#include "platform/handle.h"
#include "xoSystem/xoIoDeviceBase.h"

namespace xo::stream {

class FileDevice final : public xoIoDevice {
public:
    // Makes the file or empties it, instead of the one before, which must be closed.
    bool open(const std::string& path);
    bool isOpen() const { return static_cast<bool>(mFile); }

    // Writes what waits and closes the file. False when that failed now; an earlier failure had its own return.
    bool close();

    // A failure may show only at a later write, or when the file is closed. After one nothing is written.
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override;
    bool hasError() const override { return mFailed || !mFile; }

    // It neither reads nor moves nor tells where it stands.
    std::uint64_t readBytes(char*, std::uint64_t) override { return 0; }
    bool atEnd() const override { return true; }
    bool seekg(std::int64_t, SeekStart) override { return false; }
    bool seekp(std::int64_t, SeekStart) override { return false; }
    std::uint64_t tellg() override { return 0; }
    std::uint64_t tellp() override { return 0; }

private:
    static constexpr std::size_t kRoom = 0x10000;

    bool writeThrough(const char* buffer, std::size_t size);

    platform::FileHandle mFile;
    std::unique_ptr<char[]> mBuffer;  // of kRoom, from the first file on
    std::size_t mWaiting = 0;         // bytes in it
    bool mFailed = false;
};

}  // namespace xo::stream

#endif
