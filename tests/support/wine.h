// XO_SKIP_WITH_WINES_RUNTIME(reason): leaves out a test that only the C runtime of Wine fails, which programs in
// Microsoft's ABI use under Wine. On Windows, and with the C runtime of the cross build, the test runs.
#ifndef XO_TESTS_WINE_H
#define XO_TESTS_WINE_H

#include <gtest/gtest.h>

#include "platform/windows.h"

#if defined(_MSC_VER)
#    define XO_SKIP_WITH_WINES_RUNTIME(reason) \
        if (::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version")) GTEST_SKIP() << reason
#else
#    define XO_SKIP_WITH_WINES_RUNTIME(reason) static_assert(true)
#endif

#endif
