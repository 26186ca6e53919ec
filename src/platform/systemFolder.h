// The folder of the programs and libraries of Windows.
#ifndef XO_PLATFORM_SYSTEMFOLDER_H
#define XO_PLATFORM_SYSTEMFOLDER_H

#include <string>

#include "platform/wideText.h"
#include "platform/windows.h"

namespace xo::platform {

// Usually "C:\Windows\System32", without a separator at the end. Programs and libraries of Windows are named by it, so
// that no file of the same name in another folder is run.
inline std::wstring systemFolder() {
    return readWide([](wchar_t* buffer, UINT size) { return ::GetSystemDirectoryW(buffer, size); });
}

}  // namespace xo::platform

#endif
