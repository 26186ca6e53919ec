// Opening of files, pipes and devices by name.
#ifndef XO_PLATFORM_OPENFILE_H
#define XO_PLATFORM_OPENFILE_H

#include <string>

#include "platform/handle.h"

namespace xo::platform {

// Other programs may read, write, rename and delete the file while it is open.
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// CreateFileW without inheritance. The path is one for a W call (toApiPath, toExtendedPath). The caller reads
// GetLastError in its next statement: why there is no handle, or for some dispositions whether the file existed.
// https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-createfilew
inline FileHandle openFile(const std::wstring& path, DWORD access, DWORD share, DWORD disposition,
                           DWORD flags = FILE_ATTRIBUTE_NORMAL) {
    return FileHandle(::CreateFileW(path.c_str(), access, share, /*lpSecurityAttributes=*/nullptr, disposition, flags,
                                    /*hTemplateFile=*/nullptr));
}

}  // namespace xo::platform

#endif
