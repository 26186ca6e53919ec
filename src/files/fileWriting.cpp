// Writes whole files.
#include "files/fileWriting.h"

#include <algorithm>

#include "platform/openFile.h"
#include "platform/wideText.h"

namespace xo::files {

platform::FileHandle openForWriting(const std::string& path) {
    return platform::openFile(platform::toApiPath(path), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                              CREATE_ALWAYS);
}

DWORD errorOf(BOOL isDone) {
    if (isDone) return ERROR_SUCCESS;
    const DWORD error = ::GetLastError();
    // A failed call that has set no code is an error nevertheless.
    return error != ERROR_SUCCESS ? error : ERROR_GEN_FAILURE;
}

DWORD writeAll(const platform::FileHandle& file, std::string_view bytes, std::size_t* written) {
    std::size_t done = 0;
    DWORD error = ERROR_SUCCESS;
    while (error == ERROR_SUCCESS && done != bytes.size()) {
        const auto size = static_cast<DWORD>((std::min)(bytes.size() - done, kMaxTransfer));
        DWORD count = 0;
        error = errorOf(::WriteFile(file.get(), bytes.data() + done, size, &count, /*lpOverlapped=*/nullptr));
        if (error == ERROR_SUCCESS && count == 0) error = ERROR_WRITE_FAULT;
        if (error == ERROR_SUCCESS) done += count;
    }
    if (written) *written = done;
    return error;
}

}  // namespace xo::files
