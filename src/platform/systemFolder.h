// The folder of the programs and libraries of Windows.
#ifndef XO_PLATFORM_SYSTEMFOLDER_H
#define XO_PLATFORM_SYSTEMFOLDER_H

#include <string>

#include "platform/wideText.h"
#include "platform/windows.h"

namespace xo::platform {

// "C:\Windows\System32", with another drive and name where Windows was installed so.
inline std::wstring systemFolder() {
    return readWide([](wchar_t* buffer, UINT size) { return ::GetSystemDirectoryW(buffer, size); });
}

}  // namespace xo::platform

#endif
