// Does what its first argument says, and writes its result to the file "result" of its working directory.
#include <filesystem>
#include <fstream>

#include "platform/windows.h"
#include "xoSystem/xoProcess.h"

namespace {

void writeResult(const std::wstring& text) {
    std::ofstream("result", std::ios::binary) << std::filesystem::path(text).u8string();
}

// Ends with 7 once both its windows have been closed, or without any, with 8 once the thread itself was asked to close.
int serve(bool hasWindows, const std::wstring& task) {
    HWND windows[2] = {};
    MSG message;
    ::PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);  // makes the queue
    for (HWND& window : windows)
        if (hasWindows) window = ::CreateWindowW(L"STATIC", L"", 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    writeResult(task);
    while (::GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (message.message != WM_CLOSE) continue;
        if (message.hwnd) ::DestroyWindow(message.hwnd);
        if (!hasWindows && !message.hwnd) return 8;
        if (hasWindows && !::IsWindow(windows[0]) && !::IsWindow(windows[1])) return 7;
    }
    return 1;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    const std::wstring task = arguments[1];
    if (task == L"exit") return static_cast<int>(std::stoul(arguments[2]));
    if (task == L"fault") *static_cast<volatile int*>(nullptr) = 1;
    if (task == L"window" || task == L"queue") return serve(task == L"window", task);
    if (task == L"parent") return static_cast<int>(xo::xoProcess::GetParentProcessId());
    if (task == L"event") return ::SetEvent(reinterpret_cast<HANDLE>(std::stoull(arguments[2])));
    if (task == L"sleep") writeResult(task), ::Sleep(60000);

    std::wstring text;
    if (task == L"arguments")
        for (int i = 2; i < count; ++i) text.append(arguments[i]).push_back(L'\0');
    if (task == L"environment")
        for (const wchar_t* entry = ::GetEnvironmentStringsW(); *entry; entry += std::wcslen(entry) + 1)
            text.append(entry).push_back(L'\0');
    writeResult(text);
    return 0;
}
