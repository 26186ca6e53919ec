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

DWORD writeAll(const platform::FileHandle& file, std::string_view bytes) {
    constexpr std::size_t kMaxTransfer = std::size_t{1} << 30;  // a single call takes a 32-bit size
    while (!bytes.empty()) {
        const auto size = static_cast<DWORD>((std::min)(bytes.size(), kMaxTransfer));
        DWORD written = 0;
        const DWORD error = errorOf(::WriteFile(file.get(), bytes.data(), size, &written, /*lpOverlapped=*/nullptr));
        if (error != ERROR_SUCCESS) return error;
        if (written == 0) return ERROR_WRITE_FAULT;
        bytes.remove_prefix(written);
    }
    return ERROR_SUCCESS;
}

}  // namespace xo::files
