#include "xoSystem/xoSystemError.h"

#include <gtest/gtest.h>

#include <regex>

#include "platform/windows.h"
#include "support/importHook.h"

namespace {

using xo::SystemError;

TEST(SystemError, ShowsTheSystemsTextOnOneLineWithTheCode) {
    EXPECT_EQ(SystemError().getErrorCode(), 0);
    EXPECT_TRUE(std::regex_match(SystemError().toString(), std::regex(R"([^\r\n]+\.  \(0\))")))
        << SystemError().toString();
    EXPECT_NE(SystemError(2).toString(), SystemError(3).toString());
    EXPECT_EQ(SystemError(0x2FFFFFFF).toString(), "Unknown Error (805306367)");
    EXPECT_EQ(SystemError(-1).toString().substr(SystemError(-1).toString().size() - 5), " (-1)");
}

TEST(SystemError, IsMadeFromAnyInteger) {
    const DWORD ofGetLastError = 0x80004005;
    const HRESULT result = E_FAIL;
    const SystemError errors[] = {ofGetLastError, result, 0x80004005, 0x80004005u, 0x80004005ll, 0xFFFFFFFF80004005ull};
    for (const SystemError& error : errors) EXPECT_EQ(error.getErrorCode(), -2147467259);
    EXPECT_EQ(SystemError(LSTATUS{2}).toString(), SystemError(ERROR_FILE_NOT_FOUND).toString());
    EXPECT_EQ(SystemError(std::int8_t{-1}).getErrorCode(), -1);
}

DWORD WINAPI formatMessage(DWORD flags, LPCVOID source, DWORD code, DWORD language, LPSTR buffer, DWORD, va_list*) {
    EXPECT_TRUE(flags == 0x1100 && !source && code == 5 && language == 0x400);
    constexpr char kText[] = "caf\xE9\r\nsecond\nthird\r\n";
    char* const copy = static_cast<char*>(::LocalAlloc(LMEM_FIXED, sizeof kText));
    std::memcpy(copy, kText, sizeof kText);
    std::memcpy(buffer, &copy, sizeof copy);
    return sizeof kText - 1;
}

TEST(SystemError, TurnsTheCodePageAndTheLineEnds) {
    const xo::tests::ImportHook hook("xoSystem.dll", "FormatMessageA", &formatMessage);
    ASSERT_TRUE(hook.isInstalled());
    EXPECT_EQ(SystemError(5).toString(), "caf\xC3\xA9 second third  (5)");
}

}  // namespace
