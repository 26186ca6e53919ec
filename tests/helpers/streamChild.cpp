// Uses its standard handles as its arguments say, one after the other:
//   o100 e7    writes that many bytes to the output or the error output, the n-th byte being 'a' + n % 26
//   lines      writes what the file "lines" holds to the output, one byte at a time
//   echo       copies the input to the output
//   count=9    reads that many bytes of the input, or all, and writes their number to the output
//   hold=name  writes "held" to the output, makes an event of that name and sleeps
//   spawn=name starts itself with hold=name, with the same standard handles
//   sleep      sleeps for a minute
//   set=4      sets the event that has this handle, if it is one, and writes whether it was to the output
//   exit=3     ends with that code
#include <fstream>
#include <iterator>
#include <string>

#include "platform/windows.h"

namespace {

void write(DWORD standardHandle, const std::string& bytes) {
    DWORD written = 0;
    const char* at = bytes.data();
    const char* const end = at + bytes.size();
    while (at != end &&
           ::WriteFile(::GetStdHandle(standardHandle), at, static_cast<DWORD>(end - at), &written, nullptr))
        at += written;
}

std::string pattern(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>('a' + i % 26);
    return bytes;
}

// How many bytes were read until the end or the limit.
std::size_t readInput(std::size_t limit, bool echoes) {
    static char buffer[65536];
    std::size_t count = 0;
    DWORD got = 0;
    while (count < limit && ::ReadFile(::GetStdHandle(STD_INPUT_HANDLE), buffer, sizeof buffer, &got, nullptr) &&
           got != 0) {
        if (echoes) write(STD_OUTPUT_HANDLE, std::string(buffer, got));
        count += got;
    }
    return count;
}

void spawn(const std::string& name) {
    wchar_t self[MAX_PATH];
    ::GetModuleFileNameW(nullptr, self, MAX_PATH);
    std::wstring line = L"streamChild hold=" + std::wstring(name.begin(), name.end());
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION created{};
    ::CreateProcessW(self, line.data(), nullptr, nullptr, /*bInheritHandles=*/TRUE, 0, nullptr, nullptr, &startup,
                     &created);
}

void perform(const std::string& task) {
    const std::string value = task.substr(task.find('=') + 1);
    if (task[0] == 'o') return write(STD_OUTPUT_HANDLE, pattern(std::stoul(task.substr(1))));
    if (task == "echo") return static_cast<void>(readInput(SIZE_MAX, true));
    if (task == "sleep") return ::Sleep(60000);
    if (task.rfind("exit", 0) == 0) ::ExitProcess(static_cast<UINT>(std::stoul(value)));
    if (task[0] == 'e') return write(STD_ERROR_HANDLE, pattern(std::stoul(task.substr(1))));
    if (task == "lines") {
        std::ifstream file("lines", std::ios::binary);
        for (std::istreambuf_iterator<char> at(file), end; at != end; ++at)
            write(STD_OUTPUT_HANDLE, std::string(1, *at));
    } else if (task.rfind("count", 0) == 0) {
        write(STD_OUTPUT_HANDLE, std::to_string(readInput(task == "count" ? SIZE_MAX : std::stoul(value), false)));
    } else if (task.rfind("hold", 0) == 0) {
        write(STD_OUTPUT_HANDLE, "held");
        ::CreateEventA(nullptr, TRUE, FALSE, value.c_str());
        ::Sleep(60000);
    } else if (task.rfind("spawn", 0) == 0) {
        spawn(value);
    } else if (task.rfind("set", 0) == 0) {
        const BOOL isSet = ::SetEvent(reinterpret_cast<HANDLE>(std::stoull(value)));
        write(STD_OUTPUT_HANDLE, isSet ? "set" : "no event");
    }
}

}  // namespace

int main(int count, char** arguments) {
    for (int i = 1; i < count; ++i) perform(arguments[i]);
    return 0;
}
