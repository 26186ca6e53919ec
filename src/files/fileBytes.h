// Reads a whole file.
#ifndef XO_FILES_FILEBYTES_H
#define XO_FILES_FILEBYTES_H

#include <memory>
#include <string>
#include <string_view>

#include "platform/handle.h"

namespace xo::files {

class FileBytes {
public:
    enum State { Complete, Missing, Unreadable };
    using Bytes = std::unique_ptr<char, void (*)(char*)>;

    // Reads the file to its end, whoever else writes to it. The path is one for a W call (toApiPath, toExtendedPath).
    // Missing where there is no such file or folder; a file too large for the memory is Unreadable.
    State read(const std::wstring& path);
    std::string_view view() const { return {mBytes.get(), mSize}; }

private:
    State fill(const platform::FileHandle& file);
    bool grow(std::size_t capacity);

    Bytes mBytes{nullptr, nullptr};
    std::size_t mSize = 0;
    std::size_t mCapacity = 0;
};

}  // namespace xo::files

#endif
