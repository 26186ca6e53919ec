// The file behind a file device: how each mode opens it, and transfers at a position.
#ifndef XO_STREAM_OPENEDFILE_H
#define XO_STREAM_OPENEDFILE_H

#include <cstdint>
#include <optional>
#include <string>

#include "files/fileReplacement.h"
#include "platform/handle.h"
#include "xoSystem/xoIoDeviceFile.h"

namespace xo::stream {

// Errors are those of Windows, ERROR_SUCCESS for none. All but open needs an open file.
class OpenedFile {
public:
    // Nothing may be open. Writes the absolute path to fullPath, also when the file cannot be opened. Throws
    // std::bad_alloc.
    DWORD open(const std::string& path, xoIoDeviceFile::OpenMode mode, xoIoDeviceFile::Share share,
               std::string& fullPath);
    // Closes the file. With OpenReplace a new file that was not committed is deleted.
    void close() noexcept;
    bool isOpen() const { return mHandle != INVALID_HANDLE_VALUE; }

    bool reads() const { return mReads; }
    bool writes() const { return mWrites; }
    bool appends() const { return mAppends; }
    bool isReplacement() const { return mReplacement.has_value(); }

    std::uint64_t size() const;
    // Reads at most that much, and less only at the end of the file or before an error.
    std::uint64_t read(std::uint64_t position, char* bytes, std::uint64_t size, DWORD& error);
    // Writes all of the bytes, with OpenAppend at the end of the file whatever the position is.
    DWORD write(std::uint64_t position, const char* bytes, std::uint64_t size);
    DWORD resize(std::uint64_t bytes) const;
    DWORD flushToDisk() const;
    // With OpenReplace: puts the new file in the place of the old one. Otherwise nothing is left to do.
    DWORD commit() noexcept;

private:
    DWORD openReplacement(std::wstring path);
    DWORD openItself(const std::wstring& path, xoIoDeviceFile::OpenMode mode, xoIoDeviceFile::Share share);

    DWORD moveTo(std::uint64_t position);

    static constexpr std::uint64_t kUnknown = UINT64_MAX;  // differs from each position, so that moveTo moves

    HANDLE mHandle = INVALID_HANDLE_VALUE;  // owned by one of the two below
    platform::FileHandle mFile;
    std::optional<files::FileReplacement> mReplacement;
    std::uint64_t mPosition = 0;  // the file's own; kUnknown after a failure
    bool mReads = false;
    bool mWrites = false;
    bool mAppends = false;
};

}  // namespace xo::stream

#endif
