// Reads a whole file.
#ifndef XO_FILES_FILEBYTES_H
#define XO_FILES_FILEBYTES_H

#include <memory>
#include <string>
#include <string_view>

#include "platform/handle.h"

namespace xo::files {

// The content of one file in memory. An object reads one file.
class FileBytes {
public:
    enum State { Complete, Missing, Unreadable };
    using Bytes = std::unique_ptr<char, void (*)(char*)>;

    // Reads the file to its end, even while others write to it. The path is one for a W call (toApiPath,
    // toExtendedPath). Missing only when there is certainly no such file or folder. A file that is too large for the
    // memory is Unreadable.
    State read(const std::wstring& path);
    // The bytes that were read; after Unreadable those before the error.
    std::string_view view() const { return {mBytes.get(), mSize}; }

private:
    State fill(const platform::FileHandle& file);
    bool grow(std::size_t capacity);

    Bytes mBytes{nullptr, nullptr};  // mCapacity bytes, of which mSize were read
    std::size_t mSize = 0;
    std::size_t mCapacity = 0;
};

}  // namespace xo::files

#endif
