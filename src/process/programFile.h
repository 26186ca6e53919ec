// Whether a path names a program file.
#ifndef XO_PROCESS_PROGRAMFILE_H
#define XO_PROCESS_PROGRAMFILE_H

#include <string>

#include "xoSystem/xoDirUtils.h"

namespace xo::process {

// FileExistsUtf8 is true for a folder, too.
inline bool isFile(const std::string& path) {
    return xoDirUtils::FileExistsUtf8(path) && !xoDirUtils::DirExistsUtf8(path);
}

}  // namespace xo::process

#endif
