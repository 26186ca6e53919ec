// The path of a loaded module.
#include "platform/modulePath.h"

namespace xo::platform {

std::wstring modulePath(HMODULE module) {
    // In UTF-16 units. The loop ends with the first capacity that holds the longest path.
    constexpr std::size_t kLongestPath = 32768;  // its end included
    std::wstring path;
    for (std::size_t capacity = MAX_PATH; capacity < 2 * kLongestPath; capacity *= 2) {
        path.resize(capacity);
        // A path that does not fit is cut to the capacity, not refused.
        const DWORD length = ::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(capacity));
        path.resize(length);
        if (length < capacity) return path;
    }
    return {};
}

}  // namespace xo::platform
