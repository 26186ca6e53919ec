// Opening a file to write it anew, and writing to it.
#ifndef XO_FILES_FILEWRITING_H
#define XO_FILES_FILEWRITING_H

#include <string>
#include <string_view>

#include "platform/handle.h"

namespace xo::files {

// Creates the file, or empties it. No handle where that fails.
platform::FileHandle openForWriting(const std::string& path);

// False when not all of the bytes were written.
bool writeAll(const platform::FileHandle& file, std::string_view bytes);

}  // namespace xo::files

#endif
