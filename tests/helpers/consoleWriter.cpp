// Writes lines to the console that it was started with and reads them back from there: 0 when the texts are the same.
#include <iostream>
#include <string>

#include "platform/handle.h"
#include "xoSystem/xoLog.h"

int main() {
    xo::xoLogObject(xo::xoLogInfo, nullptr, nullptr) << "caf\xC3\xA9 \xD0\x96 end";
    std::ios::sync_with_stdio(false);  // gives std::cout another buffer of the C++ library's own
    xo::xoLogObject(xo::xoLogInfo, nullptr, nullptr) << "caf\xC3\xA9 \xD0\x96 again";

    const xo::platform::FileHandle console(::CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                                                         FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                                         nullptr));
    if (!console) return 2;  // there is no console
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!::GetConsoleScreenBufferInfo(console.get(), &info)) return 2;
    std::wstring screen(static_cast<std::size_t>(info.dwSize.X) * 5, L'\0');
    DWORD read = 0;
    ::ReadConsoleOutputCharacterW(console.get(), screen.data(), static_cast<DWORD>(screen.size()), COORD{0, 0}, &read);
    for (const wchar_t* const text : {L"caf\u00E9 \u0416 end", L"caf\u00E9 \u0416 again"})
        if (screen.find(text) == std::wstring::npos) return 1;
    return 0;
}
