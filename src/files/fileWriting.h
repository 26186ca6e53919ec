// Creates files and writes to them.
#ifndef XO_FILES_FILEWRITING_H
#define XO_FILES_FILEWRITING_H

#include <string>
#include <string_view>

#include "platform/handle.h"

namespace xo::files {

// Creates the file, or empties an existing one. Null if that fails.
platform::FileHandle openForWriting(const std::string& path);

// The error code of the Windows call that has just returned isDone. Never ERROR_SUCCESS if it failed.
DWORD errorOf(BOOL isDone);

// Writes at the file's position. Returns ERROR_SUCCESS when all bytes were written, otherwise the error.
DWORD writeAll(const platform::FileHandle& file, std::string_view bytes);

}  // namespace xo::files

#endif
