// Creates files and writes to them.
#ifndef XO_FILES_FILEWRITING_H
#define XO_FILES_FILEWRITING_H

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/handle.h"

namespace xo::files {

// Creates the file, or empties an existing one. Null if that fails.
platform::FileHandle openForWriting(const std::string& path);

// The error code of the Windows call that has just returned isDone. Never ERROR_SUCCESS if it failed.
DWORD errorOf(BOOL isDone);

// The most bytes that one call to ReadFile or WriteFile is asked for: these take 32-bit sizes.
constexpr std::size_t kMaxTransfer = std::size_t{1} << 30;

// Writes at the file's position. Returns ERROR_SUCCESS when all bytes were written, otherwise the error. *written, if
// not null, receives the number of bytes that were written, also after an error.
DWORD writeAll(const platform::FileHandle& file, std::string_view bytes, std::size_t* written = nullptr);

}  // namespace xo::files

#endif
