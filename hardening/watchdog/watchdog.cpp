// Prints the stacks of all threads and ends the program when it has run for XO_TEST_WATCHDOG_SECONDS, so that a test
// that hangs shows where. Without the variable there is no watchdog.
#include <gtest/gtest.h>
// <windows.h> comes before the headers that need it.
#include "platform/windows.h"

#include <dbghelp.h>
#include <tlhelp32.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "platform/handle.h"

namespace xo::tests {
namespace {

constexpr UINT kExitCode = 86;
constexpr int kMostFrames = 40;

// DbgHelp is loaded at run time: the programs do not need it otherwise.
struct SymbolFunctions {
    HMODULE module = ::LoadLibraryExW(L"dbghelp.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);

    template <class Function>
    Function* find(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
    }

    decltype(::SymSetOptions)* const setOptions = find<decltype(::SymSetOptions)>("SymSetOptions");
    decltype(::SymInitialize)* const initialize = find<decltype(::SymInitialize)>("SymInitialize");
    decltype(::StackWalk64)* const walk = find<decltype(::StackWalk64)>("StackWalk64");
    decltype(::SymFunctionTableAccess64)* const table =
        find<decltype(::SymFunctionTableAccess64)>("SymFunctionTableAccess64");
    decltype(::SymGetModuleBase64)* const moduleBase = find<decltype(::SymGetModuleBase64)>("SymGetModuleBase64");
    decltype(::SymFromAddr)* const fromAddress = find<decltype(::SymFromAddr)>("SymFromAddr");
    decltype(::SymGetLineFromAddr64)* const line = find<decltype(::SymGetLineFromAddr64)>("SymGetLineFromAddr64");
};

void printFrame(const SymbolFunctions& symbols, DWORD64 address) {
    struct {
        SYMBOL_INFO info;
        char name[500];
    } symbol{};
    symbol.info.SizeOfStruct = sizeof symbol.info;
    symbol.info.MaxNameLen = sizeof symbol.name;
    DWORD64 offset = 0;
    const bool hasName = symbols.fromAddress(::GetCurrentProcess(), address, &offset, &symbol.info);
    IMAGEHLP_LINE64 line{};
    line.SizeOfStruct = sizeof line;
    DWORD column = 0;
    const bool hasLine = symbols.line(::GetCurrentProcess(), address - 1, &column, &line);  // of the call
    std::printf("  %#llx %s", address, hasName ? symbol.info.Name : "?");
    if (hasLine) std::printf(" in %s line %lu", line.FileName, line.LineNumber);
    std::printf("\n");
}

// The thread runs on while its stack is walked: it hangs, and if it were suspended, it might hold the loader's lock or
// the heap's, which the walk needs.
void printStack(const SymbolFunctions& symbols, DWORD threadId) {
    const platform::KernelHandle thread(
        ::OpenThread(THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT | THREAD_QUERY_INFORMATION, FALSE, threadId));
    if (!thread || ::SuspendThread(thread.get()) == static_cast<DWORD>(-1)) return;
    CONTEXT context{};
    context.ContextFlags = CONTEXT_FULL;
    const bool hasContext = ::GetThreadContext(thread.get(), &context);
    ::ResumeThread(thread.get());
    if (!hasContext) return;

    std::printf("thread %lu\n", threadId);
    STACKFRAME64 frame{};
    frame.AddrPC = {context.Rip, 0, AddrModeFlat};
    frame.AddrFrame = {context.Rbp, 0, AddrModeFlat};
    frame.AddrStack = {context.Rsp, 0, AddrModeFlat};
    for (int i = 0; i < kMostFrames; ++i) {
        if (!symbols.walk(IMAGE_FILE_MACHINE_AMD64, ::GetCurrentProcess(), thread.get(), &frame, &context, nullptr,
                          symbols.table, symbols.moduleBase, nullptr) ||
            frame.AddrPC.Offset == 0)
            break;
        printFrame(symbols, frame.AddrPC.Offset);
    }
}

std::vector<DWORD> otherThreads() {
    std::vector<DWORD> threads;
    const platform::FileHandle snapshot(::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = ::Thread32First(snapshot.get(), &entry); more; more = ::Thread32Next(snapshot.get(), &entry))
        if (entry.th32OwnerProcessID == ::GetCurrentProcessId() && entry.th32ThreadID != ::GetCurrentThreadId())
            threads.push_back(entry.th32ThreadID);
    return threads;
}

DWORD WINAPI watch(void* seconds) {
    // Not by the import table, in which a test may have replaced the function.
    const auto sleep = reinterpret_cast<decltype(::Sleep)*>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "Sleep")));
    sleep(static_cast<DWORD>(reinterpret_cast<std::uintptr_t>(seconds)) * 1000);
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    std::printf("\nwatchdog: still running %s.%s\n", test ? test->test_suite_name() : "", test ? test->name() : "");
    const SymbolFunctions symbols;
    if (symbols.module) {
        symbols.setOptions(SYMOPT_LOAD_LINES | SYMOPT_UNDNAME);
        symbols.initialize(::GetCurrentProcess(), nullptr, /*fInvadeProcess=*/TRUE);
        for (const DWORD thread : otherThreads()) printStack(symbols, thread);
    }
    std::fflush(stdout);
    ::TerminateProcess(::GetCurrentProcess(), kExitCode);
    return 0;
}

class Watchdog : public testing::Environment {
public:
    void SetUp() override {
        const char* const text = std::getenv("XO_TEST_WATCHDOG_SECONDS");
        const auto seconds = text ? std::strtoul(text, nullptr, 10) : 0;
        if (seconds == 0) return;
        const platform::KernelHandle thread(
            ::CreateThread(nullptr, 0, &watch, reinterpret_cast<void*>(std::uintptr_t{seconds}), 0, nullptr));
        ASSERT_TRUE(thread);
    }
};

[[maybe_unused]] testing::Environment* const gWatchdog = testing::AddGlobalTestEnvironment(new Watchdog);

}  // namespace
}  // namespace xo::tests
