#include "platform/windows.h"
#include "xoSystem/xoAsciiTableBuilder.h"

namespace xo {

unsigned AsciiTableBuilder::GetConsoleWidth() {
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    if (!::GetConsoleScreenBufferInfo(::GetStdHandle(STD_OUTPUT_HANDLE), &screen)) return 0;
    return static_cast<unsigned>(screen.srWindow.Right - screen.srWindow.Left + 1);
}

}  // namespace xo
