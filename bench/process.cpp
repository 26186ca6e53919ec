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

int runRaw(DWORD sleepMs, DWORD flags = CREATE_NO_WINDOW, const std::wstring& path = program(),
           const wchar_t* arguments = L" /c \"exit 3\"") {
    std::wstring line = L"\"" + path + L"\"" + arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    PROCESS_INFORMATION created{};
    if (!::CreateProcessW(path.c_str(), line.data(), nullptr, nullptr, FALSE, flags, nullptr, nullptr, &startup,
                          &created))
        return -1;
    const xo::platform::KernelHandle process(created.hProcess);
    const xo::platform::KernelHandle mainThread(created.hThread);
    if (sleepMs) ::Sleep(sleepMs);
    ::WaitForSingleObject(process.get(), INFINITE);
    DWORD code = 0;
    return ::GetExitCodeProcess(process.get(), &code) ? static_cast<int>(code) : -1;
}

// From the start of a process to its end: a program without the library, and one that brings it up and down in full.
void measureStart(Suite& suite) {
    const auto run = [](const wchar_t* name) {
        wchar_t self[MAX_PATH];
        const std::filesystem::path path(std::wstring(self, ::GetModuleFileNameW(nullptr, self, MAX_PATH)));
        return runRaw(0, CREATE_NO_WINDOW, path.parent_path() / name, L"");
    };
    for (const wchar_t* const name : {L"benchEmpty.exe", L"benchRuntime.exe", L"benchLoaded.exe", L"benchStarted.exe"})
        require(run(name) == 0, "a program does not start");
    const std::vector<Other> others = {{"an empty program", [run] { keep(run(L"benchEmpty.exe")); }},
                                       {"one with std::string, std::cout", [run] { keep(run(L"benchRuntime.exe")); }}};
    suite.compare(
        "process", "a program that loads the DLL", 1, [run] { keep(run(L"benchLoaded.exe")); }, others);
    suite.compare(
        "process", "one that starts the library in full", 1, [run] { keep(run(L"benchStarted.exe")); }, others);
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
    measureStart(suite);
}

}  // namespace bench
