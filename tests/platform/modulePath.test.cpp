#include "platform/modulePath.h"

#include <gtest/gtest.h>

#include "support/importHook.h"

namespace {

std::wstring installed;

// Cuts a path that does not fit, and tells it by nothing but the length.
DWORD WINAPI tellInstalled(HMODULE, wchar_t* buffer, DWORD size) {
    const std::size_t length = installed.copy(buffer, size);
    if (length < size) buffer[length] = L'\0';
    return static_cast<DWORD>(length);
}

TEST(ModulePath, IsWholeHoweverLong) {
    const xo::tests::ImportHook hook(nullptr, "GetModuleFileNameW", &tellInstalled);
    for (const std::size_t length : {0u, MAX_PATH - 1u, MAX_PATH + 0u, MAX_PATH + 1u, 2u * MAX_PATH, 32767u}) {
        installed.assign(length, L'p');
        EXPECT_EQ(xo::platform::modulePath(nullptr), installed);
    }
    installed.assign(1000000, L'p');  // no path at all, but no hang either
    EXPECT_EQ(xo::platform::modulePath(nullptr), L"");
}

}  // namespace
