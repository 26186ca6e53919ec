// Takes the lock file named by its argument and holds it until it is killed.
#include <filesystem>

#include "platform/windows.h"
// CommandLineToArgvW
#include <shellapi.h>

#include "xoSystem/xoLockFile.h"

int main() {
    int count = 0;
    wchar_t** const arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    xo::xoLockFile lock;
    if (count != 2 || !lock.takeLockUtf8(std::filesystem::path(arguments[1]).u8string())) return 1;
    ::Sleep(60000);
    return 0;
}
