// Writes a line to the console that it was started with and reads it back from there: 0 when the text is the same.
#include <string>

#include "platform/handle.h"
#include "xoSystem/xoLog.h"

int main() {
    xo::xoLogObject(xo::xoLogInfo, nullptr, nullptr) << "caf\xC3\xA9 \xD0\x96 end";

    const xo::platform::FileHandle console(::CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                                                         FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                                         nullptr));
    if (!console) return 2;  // there is no console
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!::GetConsoleScreenBufferInfo(console.get(), &info)) return 2;
    std::wstring screen(static_cast<std::size_t>(info.dwSize.X) * 5, L'\0');
    DWORD read = 0;
    ::ReadConsoleOutputCharacterW(console.get(), screen.data(), static_cast<DWORD>(screen.size()), COORD{0, 0}, &read);
    return screen.find(L"caf\u00E9 \u0416 end") != std::wstring::npos ? 0 : 1;
}
