// Makes the window of the console that it was started with 40 columns wide: 0 when the library finds that.
#include "platform/handle.h"
#include "xoSystem/xoAsciiTableBuilder.h"

int main() {
    const xo::platform::FileHandle console(::CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                                                         FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                                         nullptr));
    const SMALL_RECT window{/*Left=*/0, /*Top=*/0, /*Right=*/39, /*Bottom=*/9};
    if (!console || !::SetConsoleWindowInfo(console.get(), /*bAbsolute=*/TRUE, &window)) return 2;
    ::SetStdHandle(STD_OUTPUT_HANDLE, console.get());
    return xo::AsciiTableBuilder::GetConsoleWidth() == 40 ? 0 : 1;
}
