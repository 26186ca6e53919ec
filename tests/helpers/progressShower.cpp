// Shows progress on the console that it was started with and reads the screen back. It ends with 0 when the screen
// shows what it should, with 2 when there is no console, else with the number of the step that failed.
#include <functional>
#include <string>
#include <string_view>

#include "platform/handle.h"
#include "xoSystem/xoProgressConsole.h"

namespace {

class Screen {
public:
    Screen()
        : mConsole(::CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                 OPEN_EXISTING, 0, nullptr)) {}

    bool isThere() const {
        DWORD mode = 0;
        return mConsole && ::GetConsoleMode(mConsole.get(), &mode);
    }

    // The lines at the top, without the blanks behind them, each followed by "|".
    std::wstring text() const {
        CONSOLE_SCREEN_BUFFER_INFO info;
        if (!::GetConsoleScreenBufferInfo(mConsole.get(), &info)) return {};
        std::wstring all;
        for (SHORT row = 0; row < 6; ++row) {
            std::wstring line(static_cast<std::size_t>(info.dwSize.X), L'\0');
            DWORD read = 0;
            ::ReadConsoleOutputCharacterW(mConsole.get(), line.data(), static_cast<DWORD>(line.size()), COORD{0, row},
                                          &read);
            line.resize(line.find_last_not_of(std::wstring_view(L" \0", 2)) + 1);
            all += line + L'|';
        }
        return all;
    }

    bool becomes(const std::function<bool(const std::wstring&)>& condition) const {
        for (int i = 0; i < 2000; ++i, ::Sleep(5))
            if (condition(text())) return true;
        return false;
    }

private:
    xo::platform::FileHandle mConsole;
};

bool begins(const std::wstring& text, std::wstring_view start) { return text.compare(0, start.size(), start) == 0; }

// One view: a bar, a line of the log above it, the line at the end.
int show(const Screen& screen) {
    {
        xo::xoProgressConsole bar(0, 0);
        xo::xoProgressScope work(&bar, 2, "Import");
        work.advance();
        if (!screen.becomes([](const std::wstring& text) {
                return begins(text, L"Import  [=====") && text.find(L"50 %") < text.find(L'|');
            }))
            return 3;
        xo::xoProgressConsole::WriteLine("above");
        if (!screen.becomes([](const std::wstring& text) { return begins(text, L"above|Import  [====="); })) return 4;
        bar.setVisible(false);
        if (!begins(screen.text(), L"above||")) return 5;
        bar.setVisible(true);
        if (!screen.becomes([](const std::wstring& text) { return begins(text, L"above|Import  [====="); })) return 6;
        work.advance();
    }
    if (!begins(screen.text(), L"above|Import: done in 0:0")) return 7;
    {
        xo::xoProgressConsole erased(xo::xoProgressConsole::ProgressConsoleErase, 0);
        xo::xoProgressScope work(&erased, 0, "Erased");
        if (!screen.becomes([](const std::wstring& text) {
                return text.find(L"|Erased  [") != std::wstring::npos && text.find(L"<=>") != std::wstring::npos;
            }))
            return 8;
    }
    if (screen.text().find(L"Erased") != std::wstring::npos) return 9;
    {
        xo::xoProgressConsole late(0, 60000);
        xo::xoProgressScope(&late, 1, "Short").advance();
    }
    if (screen.text().find(L"Short") != std::wstring::npos) return 10;

    xo::xoProgressConsole first(0, 0);
    xo::xoProgressScope firstWork(&first, 1, "First");
    if (!screen.becomes([](const std::wstring& text) { return text.find(L"|First  [") != std::wstring::npos; }))
        return 11;
    xo::xoProgressConsole second(0, 0);
    {
        xo::xoProgressScope secondWork(&second, 1, "Second");
        first.setVisible(false);  // gives the line away
        if (!screen.becomes([](const std::wstring& text) { return text.find(L"|Second  [") != std::wstring::npos; }))
            return 12;
    }
    return 0;
}

}  // namespace

int main() {
    const Screen screen;
    return screen.isThere() ? show(screen) : 2;
}
