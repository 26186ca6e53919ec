// Names threads by an exception for debuggers, and by a description for Windows 10 and later.
#include "threads/threadName.h"

#include <cstring>
#include <new>
#include <string_view>

#include "fault/guardedCall.h"
#include "platform/symbolName.h"
#include "platform/threadDescription.h"
#include "platform/wideText.h"
#include "platform/windows.h"

namespace xo::threads {
namespace {

// The arguments of the exception by which a thread passes its name to a debugger:
// https://learn.microsoft.com/visualstudio/debugger/how-to-set-a-thread-name-in-native-code
#pragma pack(push, 8)
struct ThreadNameRecord {
    DWORD type = 0x1000;
    const char* name = nullptr;
    DWORD threadId = static_cast<DWORD>(-1);  // -1: the thread that raises the exception
    DWORD flags = 0;
};
#pragma pack(pop)
static_assert(sizeof(ThreadNameRecord) == 24);

// A debugger reads the name and continues the thread. Without one, callSilently handles the exception.
void raiseNameException(void* name) {
    constexpr DWORD kNameException = 0x406D1388;
    ThreadNameRecord record;
    record.name = static_cast<const char*>(name);
    ULONG_PTR arguments[sizeof record / sizeof(ULONG_PTR)];
    static_assert(sizeof arguments == sizeof record);
    std::memcpy(arguments, &record, sizeof record);
    ::RaiseException(kNameException, 0, sizeof arguments / sizeof *arguments, arguments);
}

}  // namespace

std::string readableName(const std::type_info& type) {
    std::string name = platform::demangled(type.name());
    // The prefix of the names that Microsoft's compiler returns.
    constexpr std::string_view kClass = "class ";
    if (name.compare(0, kClass.size(), kClass) == 0) name.erase(0, kClass.size());
    return name;
}

void nameCurrentThread(const std::string& name) noexcept {
    fault::callSilently(&raiseNameException, const_cast<char*>(name.c_str()));
    try {
        platform::describeThread(::GetCurrentThread(), platform::toWide(name).c_str());
    } catch (const std::bad_alloc&) {
        return;  // the thread runs without a description
    }
}

}  // namespace xo::threads
