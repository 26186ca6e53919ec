#include "platform/modulePath.h"

namespace xo::platform {

std::wstring modulePath(HMODULE module) {
    constexpr std::size_t kLongestPath = 32768;  // its end included
    std::wstring path;
    for (std::size_t room = MAX_PATH; room < 2 * kLongestPath; room *= 2) {
        path.resize(room);
        // A path that does not fit is cut to the room, not refused.
        const DWORD length = ::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(room));
        path.resize(length);
        if (length < room) return path;
    }
    return {};
}

}  // namespace xo::platform
