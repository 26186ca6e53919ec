// A trivial child, started and awaited: this library, the system's own calls and the C runtime.
#include <cstdlib>
#include <filesystem>

#include "families.h"
#include "platform/handle.h"
#include "xoSystem/xoSystem.h"

namespace bench {
namespace {

constexpr DWORD kFixedSleepMs = 10;  // what startProcess sleeps before it returns

// Ends at once, and is on every machine.
const std::wstring& program() {
    static const std::wstring path = [] {
        wchar_t folder[MAX_PATH];
        return std::wstring(folder, ::GetSystemDirectoryW(folder, MAX_PATH)) + L"\\cmd.exe";
    }();
    return path;
}

int runRaw(DWORD sleepMs, DWORD flags = CREATE_NO_WINDOW) {
    std::wstring line = L"\"" + program() + L"\" /c \"exit 3\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    PROCESS_INFORMATION created{};
    if (!::CreateProcessW(program().c_str(), line.data(), nullptr, nullptr, FALSE, flags, nullptr, nullptr, &startup,
                          &created))
        return -1;
    const xo::platform::KernelHandle process(created.hProcess);
    const xo::platform::KernelHandle mainThread(created.hThread);
    if (sleepMs) ::Sleep(sleepMs);
    ::WaitForSingleObject(process.get(), INFINITE);
    DWORD code = 0;
    return ::GetExitCodeProcess(process.get(), &code) ? static_cast<int>(code) : -1;
}

}  // namespace

void measureProcess(Suite& suite) {
    if (!suite.wants("process")) return;
    const std::string path = std::filesystem::path(program()).u8string();
    const std::vector<std::string> arguments = {"/c", "exit 3"};
    const auto ours = [&] { return xo::xoProcess::ExecUtf8(path, arguments); };
    require(ours() == 3 && runRaw(0) == 3 && std::system("exit 3") == 3, "the children do not end alike");
    suite.compare("process", "start a child and wait", 1, [&] { keep(ours()); },
                  {{"limit: CreateProcess and wait", [] { keep(runRaw(0)); }},
                   {"limit: the same and the fixed sleep", [] { keep(runRaw(kFixedSleepMs)); }},
                   {"CreateProcess without a console", [] { keep(runRaw(0, DETACHED_PROCESS)); }},
                   {"std::system", [] { keep(std::system("exit 3")); }}});
}

}  // namespace bench
