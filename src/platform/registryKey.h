// Reads values of the registry.
#ifndef XO_PLATFORM_REGISTRYKEY_H
#define XO_PLATFORM_REGISTRYKEY_H

#include <optional>
#include <string>

#include "platform/handle.h"

namespace xo::platform {

struct RegistryPolicy {
    using Type = HKEY;
    static Type none() noexcept { return nullptr; }
    static void close(Type key) noexcept { ::RegCloseKey(key); }
};

// A key that is open for reading, in the view of 64-bit programs. A key that cannot be opened has no values.
class RegistryKey {
public:
    // A null parent opens nothing: that of a key that could not be opened.
    RegistryKey(HKEY parent, const wchar_t* path) {
        if (parent) ::RegOpenKeyExW(parent, path, 0, KEY_READ | KEY_WOW64_64KEY, mKey.put());
    }

    HKEY get() const { return mKey.get(); }

    // The text of a REG_SZ value; empty when there is none, or when it is of another type.
    std::wstring text(const wchar_t* name) const {
        // Repeated, because another program may lengthen the value between two calls.
        std::wstring text(128, L'\0');
        while (mKey) {
            auto bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
            const LSTATUS status =
                ::RegGetValueW(mKey.get(), nullptr, name, RRF_RT_REG_SZ, /*pdwType=*/nullptr, text.data(), &bytes);
            if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA) break;
            text.resize(bytes / sizeof(wchar_t) + (status == ERROR_SUCCESS ? 0 : 1));
            if (status == ERROR_SUCCESS) return text.substr(0, text.find(L'\0'));
        }
        return {};
    }

    // A REG_DWORD value; no value when there is none, or when it is of another type.
    std::optional<DWORD> number(const wchar_t* name) const {
        DWORD value = 0, bytes = sizeof value;
        const bool isThere = mKey && ::RegGetValueW(mKey.get(), nullptr, name, RRF_RT_REG_DWORD, /*pdwType=*/nullptr,
                                                    &value, &bytes) == ERROR_SUCCESS;
        return isThere ? std::optional<DWORD>(value) : std::nullopt;
    }

    // The name of the sub-key with that index; empty behind the last one.
    std::wstring subKey(DWORD index) const {
        constexpr DWORD kLongestName = 256;  // key names have at most 255 characters; the NUL included
        wchar_t name[kLongestName];
        DWORD length = kLongestName;
        const bool isThere = mKey && ::RegEnumKeyExW(mKey.get(), index, name, &length, nullptr, nullptr, nullptr,
                                                     nullptr) == ERROR_SUCCESS;
        return isThere ? std::wstring(name, length) : std::wstring();
    }

private:
    Owned<RegistryPolicy> mKey;
};

}  // namespace xo::platform

#endif
