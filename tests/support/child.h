// A child process of a test: another program in the same folder.
#ifndef XO_TESTS_CHILD_H
#define XO_TESTS_CHILD_H

#include <filesystem>
#include <string>

#include "platform/handle.h"

namespace xo::tests {

class Child {
public:
    // Starts the program of that name in the folder of this one. The arguments are passed as they are, not quoted.
    explicit Child(const std::wstring& program, const std::wstring& arguments = {}, DWORD creationFlags = 0) {
        wchar_t self[MAX_PATH];
        ::GetModuleFileNameW(nullptr, self, MAX_PATH);
        const std::filesystem::path path = std::filesystem::path(self).parent_path() / (program + L".exe");
        std::wstring commandLine = L"\"" + path.wstring() + L"\" " + arguments;
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION information{};
        if (!::CreateProcessW(path.c_str(), commandLine.data(), nullptr, nullptr, /*bInheritHandles=*/FALSE,
                              creationFlags, nullptr, nullptr, &startup, &information)) {
            mError = ::GetLastError();
            return;
        }
        const platform::KernelHandle thread(information.hThread);
        mProcess.reset(information.hProcess);
    }

    bool isStarted() const { return static_cast<bool>(mProcess); }
    DWORD error() const { return mError; }  // of the start

    // Waits for the end. Returns the exit code, or -1 if the child did not start or does not end within a minute.
    int wait() const {
        DWORD code = 0;
        if (!mProcess || ::WaitForSingleObject(mProcess.get(), 60000) != WAIT_OBJECT_0) return -1;
        return ::GetExitCodeProcess(mProcess.get(), &code) ? static_cast<int>(code) : -1;
    }

    void kill() const { ::TerminateProcess(mProcess.get(), 9); }

private:
    platform::KernelHandle mProcess;
    DWORD mError = ERROR_SUCCESS;
};

}  // namespace xo::tests

#endif
