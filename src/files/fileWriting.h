// Opening a file to write it anew, and writing to it.
#ifndef XO_FILES_FILEWRITING_H
#define XO_FILES_FILEWRITING_H

#include <string>
#include <string_view>

#include "platform/handle.h"

namespace xo::files {

// Creates the file, or empties it. No handle where that fails.
platform::FileHandle openForWriting(const std::string& path);

// The error of the call that has just returned isDone, and never ERROR_SUCCESS for one that failed.
DWORD errorOf(BOOL isDone);

// The error of Windows when not all of the bytes were written, else ERROR_SUCCESS.
DWORD writeAll(const platform::FileHandle& file, std::string_view bytes);

}  // namespace xo::files

#endif
