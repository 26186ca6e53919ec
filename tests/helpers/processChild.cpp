// Does what its first argument says, with the rest of them. What it has to tell is in its exit code or in the file
// "told" of its working directory.
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/windows.h"
#include "xoSystem/xoProcess.h"

namespace {

void tell(const std::wstring& text) {
    std::ofstream("told", std::ios::binary) << std::filesystem::path(text).u8string();
}

// Ends with 7 once both windows have been closed, whatever comes to the thread itself.
int serveWindows() {
    HWND windows[2];
    for (HWND& window : windows)
        window = ::CreateWindowW(L"STATIC", L"", 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    tell(L"ready");
    MSG message;
    while ((::IsWindow(windows[0]) || ::IsWindow(windows[1])) && ::GetMessageW(&message, nullptr, 0, 0) > 0)
        if (message.message == WM_CLOSE && message.hwnd) ::DestroyWindow(message.hwnd);
    return 7;
}

// Ends with 8 once the thread itself is asked to close.
int serveQueue() {
    MSG message;
    ::PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
    tell(L"ready");
    while (::GetMessageW(&message, nullptr, 0, 0) > 0)
        if (message.message == WM_CLOSE && !message.hwnd) return 8;
    return 1;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    const std::wstring task = arguments[1];
    std::wstring text;
    if (task == L"exit") return static_cast<int>(std::stoul(arguments[2]));
    if (task == L"fault") *static_cast<volatile int*>(nullptr) = 1;
    if (task == L"window") return serveWindows();
    if (task == L"queue") return serveQueue();
    if (task == L"parent") return static_cast<int>(xo::xoProcess::GetParentProcessId());
    if (task == L"event") return ::SetEvent(reinterpret_cast<HANDLE>(std::stoull(arguments[2])));
    if (task == L"arguments") {
        for (int i = 2; i < count; ++i) text.append(arguments[i]).push_back(L'\0');
    } else if (task == L"environment") {
        for (const wchar_t* entry = ::GetEnvironmentStringsW(); *entry; entry += std::wcslen(entry) + 1)
            text.append(entry).push_back(L'\0');
    }
    tell(text);
    if (task == L"sleep") ::Sleep(60000);
    return 0;
}
