#include "threads/threadName.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#if !defined(_MSC_VER)
#    include <cxxabi.h>
#endif

#include "fault/guardedCall.h"
#include "platform/wideText.h"
#include "platform/windows.h"

namespace xo::threads {
namespace {

// What debuggers look for in the arguments of the exception.
#pragma pack(push, 8)
struct ThreadNameRecord {
    DWORD type = 0x1000;
    const char* name = nullptr;
    DWORD threadId = static_cast<DWORD>(-1);  // the thread that raises it
    DWORD flags = 0;
};
#pragma pack(pop)
static_assert(sizeof(ThreadNameRecord) == 24);

// A debugger takes the exception; without one it ends in the frame around this call.
void raiseNameException(void* name) {
    constexpr DWORD kNameException = 0x406D1388;
    ThreadNameRecord record;
    record.name = static_cast<const char*>(name);
    ULONG_PTR arguments[sizeof record / sizeof(ULONG_PTR)];
    static_assert(sizeof arguments == sizeof record);
    std::memcpy(arguments, &record, sizeof record);
    ::RaiseException(kNameException, 0, sizeof arguments / sizeof *arguments, arguments);
}

using SetThreadDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);

// Windows 10 has it; version 1607 in KernelBase.dll alone:
// https://learn.microsoft.com/windows/win32/api/processthreadsapi/nf-processthreadsapi-setthreaddescription
SetThreadDescription lookUpSetThreadDescription() {
    for (const wchar_t* const module : {L"kernel32.dll", L"KernelBase.dll"})
        if (const FARPROC found = ::GetProcAddress(::GetModuleHandleW(module), "SetThreadDescription"))
            return reinterpret_cast<SetThreadDescription>(reinterpret_cast<void (*)()>(found));
    return nullptr;
}

}  // namespace

std::string readableName(const std::type_info& type) {
    std::string_view name = type.name();
#if !defined(_MSC_VER)
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> demangled(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    if (demangled) name = demangled.get();
#endif
    constexpr std::string_view kClass = "class ";
    if (name.substr(0, kClass.size()) == kClass) name.remove_prefix(kClass.size());
    return std::string(name);
}

void nameCurrentThread(const std::string& name) noexcept {
    fault::callQuietly(&raiseNameException, const_cast<char*>(name.c_str()));
    static const SetThreadDescription setThreadDescription = lookUpSetThreadDescription();
    if (!setThreadDescription) return;
    try {
        setThreadDescription(::GetCurrentThread(), platform::toWide(name).c_str());
    } catch (const std::bad_alloc&) {
        return;  // the thread runs without it
    }
}

}  // namespace xo::threads
