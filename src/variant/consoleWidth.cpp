// The width of the console, for a table that is to fit it.
#include "platform/windows.h"
#include "xoSystem/xoAsciiTableBuilder.h"

namespace xo {

unsigned AsciiTableBuilder::GetConsoleWidth() {
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    if (!::GetConsoleScreenBufferInfo(::GetStdHandle(STD_OUTPUT_HANDLE), &screen)) return 0;
    // The window, not the buffer behind it, which may be wider:
    // https://learn.microsoft.com/windows/console/console-screen-buffer-info-str
    return static_cast<unsigned>(screen.srWindow.Right - screen.srWindow.Left + 1);
}

}  // namespace xo
