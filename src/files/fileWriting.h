// Creates files and writes to them.
#ifndef XO_FILES_FILEWRITING_H
#define XO_FILES_FILEWRITING_H

#include <string>
#include <string_view>

#include "platform/handle.h"

namespace xo::files {

// Creates the file, or empties an existing one. Null if that fails.
platform::FileHandle openForWriting(const std::string& path);

// The error of the call that has just returned isDone; never ERROR_SUCCESS if it failed.
DWORD errorOf(BOOL isDone);

// The error of Windows when not all of the bytes were written, else ERROR_SUCCESS.
DWORD writeAll(const platform::FileHandle& file, std::string_view bytes);

}  // namespace xo::files

#endif
