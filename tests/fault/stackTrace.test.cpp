#include <set>

#include "fault/faultFixture.h"
#include "platform/systemFolder.h"
#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoStringUtils.h"

#include <dbghelp.h>

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using xo::tests::faultLine;
using xo::tests::ImportHook;
using xo::tests::outcomeOf;

constexpr int kFaultingLine = __LINE__ + 2;
__declspec(noinline) void faultAt(volatile int* address) {
    *address = 1;
    ::SetLastError(0);  // no jump instead of the call
}

constexpr int kCallingLine = __LINE__ + 2;
__declspec(noinline) void callAndFault() {
    faultAt(nullptr);
    ::SetLastError(0);
}

void (*volatile nowhere)();
__declspec(noinline) void callNowhere() {
    nowhere();
    ::SetLastError(0);
}

__declspec(noinline) void throwText() { throw std::out_of_range("text"); }

class StackTrace : public xo::tests::FaultTest {
protected:
    std::string traceOf(void (*function)()) {
        outcomeOf(function);
        const std::string report = takeReports().at(0);
        return report.substr(xo::tests::firstLine(report).size());
    }
};

std::string at(int line) { return "stackTrace.test.cpp line: " + std::to_string(line) + "\n\t# "; }

std::string lower(std::string text) { return xo::xoStringUtils::toLower(text); }

// Whether the parts follow one another, with other text between them or not. The case of letters does not count: that
// of the paths of Windows differs between versions.
testing::AssertionResult hasInOrder(const std::string& trace, const std::vector<std::string>& parts) {
    const std::string lowered = lower(trace);
    std::size_t end = 0;
    for (const std::string& part : parts) {
        end = lowered.find(lower(part), end);
        if (end == std::string::npos) return testing::AssertionFailure() << "no " << part << " in" << trace;
        end += part.size();
    }
    return testing::AssertionSuccess();
}

TEST_F(StackTrace, NamesFunctionsFilesAndLinesOfHostAndLibrary) {
    const std::string trace = traceOf(&callAndFault);
    EXPECT_EQ(trace.find("faultAt @0x"), trace.find(" @0x") - 7) << "begins where the fault was";
    EXPECT_TRUE(hasInOrder(
        trace, {"\n\t# ", "faultAt @0x", at(kFaultingLine), "callAndFault @0x", at(kCallingLine), "ExecGuardedCode @0x",
                "xoException.cpp line: ", "outcomeOf", "faultFixture.h line: ", "main @0x",
                " in " + xo::platform::toUtf8(xo::platform::systemFolder()) + "\\ntdll.dll"}));
}

TEST_F(StackTrace, KnowsTheWayToThrowsAndToNowhere) {
    EXPECT_TRUE(hasInOrder(traceOf(&throwText), {"RaiseException @0x", "kernelbase.dll", xo::tests::kThrowingFunction,
                                                 "throwText @0x", "ExecGuardedCode @0x"}));
    nowhere = nullptr;
    EXPECT_TRUE(hasInOrder(traceOf(&callNowhere), {"\n\t#  @0x0 in \n\t# ", "callNowhere @0x", "ExecGuardedCode @0x"}));
    nowhere = reinterpret_cast<void (*)()>(0x1234);
    EXPECT_TRUE(hasInOrder(traceOf(&callNowhere), {"\n\t#  @0x1234 in \n\t# ", "callNowhere @0x"}));
}

// As the runtime's start-up code with GCC.
TEST_F(StackTrace, TellsTheReturnAddressOfAFunctionWithoutAName) {
    const std::string trace = traceOf(&callAndFault);
    void* addresses[64];
    const USHORT count = ::CaptureStackBackTrace(0, 64, addresses, nullptr);
    std::set<std::uintptr_t> known;
    for (USHORT i = 0; i < count; ++i) known.insert(reinterpret_cast<std::uintptr_t>(addresses[i]));
    int nameless = 0;
    for (std::size_t at = 0; (at = trace.find("\n\t#  @0x", at)) != std::string::npos; ++at, ++nameless)
        EXPECT_TRUE(known.count(std::stoull(trace.substr(at + 8), nullptr, 16)) != 0) << trace.substr(at);
#if defined(__GNUC__)
    EXPECT_GT(nameless, 0);
#endif
}

TEST_F(StackTrace, KnowsTheModuleThatIsNowAtAnAddress) {
    HMODULE last = nullptr;
    for (const std::string name : {"firstPlugin", "secondPlugin"}) {
        const HMODULE plugin = ::LoadLibraryA((name + ".dll").c_str());
        ASSERT_NE(plugin, nullptr);
        EXPECT_TRUE(last == nullptr || last == plugin);
        const auto fault = reinterpret_cast<void (*)()>(::GetProcAddress(plugin, "faultInPlugin"));
        EXPECT_TRUE(hasInOrder(traceOf(fault), {"faultIn_" + name + " @0x", "faultInPlugin @0x"}));
        ::FreeLibrary(plugin);
        EXPECT_EQ(::GetModuleHandleW(L"DbgHelp.dll"), nullptr) << "it would keep the databases open";
        last = plugin;
    }
}

HMODULE unloadedMeanwhile = nullptr;  // the module that another thread unloads while a report looks at it
BOOL WINAPI findUnloaded(DWORD flags, LPCWSTR address, HMODULE* module) {
    const BOOL isFound = ImportHook::behind(&findUnloaded)(flags, address, module);
    if (isFound && *module == unloadedMeanwhile) *module = reinterpret_cast<HMODULE>(0x10000);
    return isFound;
}

TEST_F(StackTrace, OutlivesAModuleThatIsUnloadedMeanwhile) {
    unloadedMeanwhile = ::GetModuleHandleW(L"kernel32.dll");  // BaseThreadInitThunk there has called the program
    {
        const ImportHook hook("xoSystem.dll", "GetModuleHandleExW", &findUnloaded);
        ASSERT_TRUE(hook.isInstalled());
        EXPECT_THAT(traceOf(&callAndFault), AllOf(HasSubstr("callAndFault @0x"), Not(HasSubstr("BaseThreadInit"))));
    }
    EXPECT_THAT(traceOf(&callAndFault), HasSubstr("BaseThreadInitThunk @0x")) << "nothing lacks in the next one";
}

std::string hiddenName;  // the function that GetProcAddress does not find
FARPROC replacement = nullptr;
int loads = 0;

HMODULE WINAPI loadNothing(LPCWSTR name, HANDLE, DWORD flags) {
    EXPECT_STREQ(name, L"DbgHelp.dll");
    EXPECT_EQ(flags, static_cast<DWORD>(LOAD_LIBRARY_SEARCH_SYSTEM32)) << "no other folder's DLL of that name";
    ++loads;
    return nullptr;
}

FARPROC WINAPI findOthers(HMODULE module, LPCSTR name) {
    return name == hiddenName ? replacement : ImportHook::behind(&findOthers)(module, name);
}

TEST_F(StackTrace, SaysWhatItLacks) {
    {
        const ImportHook hook("xoSystem.dll", "LoadLibraryExW", &loadNothing);
        ASSERT_TRUE(hook.isInstalled());
        EXPECT_EQ(traceOf(&callAndFault), "\n\tFail to load DbgHelp.dll");
        EXPECT_EQ(loads, 1);
    }
    const ImportHook hook("xoSystem.dll", "GetProcAddress", &findOthers);
    ASSERT_TRUE(hook.isInstalled());
    for (const char* name : {"StackWalk64", "SymGetLineFromAddr64", "SymGetSymFromAddr64", "SymInitialize",
                             "SymFunctionTableAccess64", "SymGetModuleBase64"}) {
        hiddenName = name;
        EXPECT_EQ(traceOf(&callAndFault), "\n\tFail to load symbols from DbgHelp.dll") << name;
        EXPECT_EQ(::GetModuleHandleW(L"DbgHelp.dll"), nullptr) << "unloaded again";
    }
    hiddenName = "";
    EXPECT_THAT(traceOf(&callAndFault), HasSubstr("faultAt @0x")) << "nothing lacks now";
}

std::string searchPath;
BOOL WINAPI takePath(HANDLE, PCSTR path, BOOL) {
    searchPath = path;
    return FALSE;
}

TEST_F(StackTrace, LooksForSymbolsBesideTheProgram) {
    const ImportHook hook("xoSystem.dll", "GetProcAddress", &findOthers);
    hiddenName = "SymInitialize";
    replacement = reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&takePath));
    traceOf(&callAndFault);
    std::string folder;
    ASSERT_TRUE(xo::xoDirUtils::GetFolderOfCurrentProcessUtf8(folder));
    EXPECT_EQ(searchPath, ".;bin;" + folder + "\\;" + folder + "\\bin");
}

int faultyWalks = 0;
BOOL WINAPI faultyWalk(DWORD, HANDLE, HANDLE, STACKFRAME64* frame) {
    if (++faultyWalks == 2) faultAt(nullptr);
    frame->AddrPC.Offset = 0x1234;
    return TRUE;
}

TEST_F(StackTrace, OutlivesAFaultOfItsOwn) {
    const ImportHook hook("xoSystem.dll", "GetProcAddress", &findOthers);
    hiddenName = "StackWalk64";
    replacement = reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&faultyWalk));
    EXPECT_EQ(traceOf(&callAndFault), "\n\t#  @0x1234 in \n\tFail to walk the stack") << "keeps what there was";
    EXPECT_EQ(traceOf(&callAndFault), "\n\tFail to walk the stack");
    EXPECT_EQ(faultyWalks, 2) << "what has faulted is not asked again";
}

TEST_F(StackTrace, LeavesTheHostItsOptions) {
    const HMODULE dbgHelp = ::LoadLibraryW(L"DbgHelp.dll");
    const auto find = [dbgHelp](const char* name) {
        return reinterpret_cast<DWORD(WINAPI*)(DWORD)>(reinterpret_cast<void (*)()>(::GetProcAddress(dbgHelp, name)));
    };
    constexpr DWORD kOptions = 0x10001;  // as no library would set them
    find("SymSetOptions")(kOptions);
    EXPECT_THAT(traceOf(&callAndFault), HasSubstr("faultAt @0x"));
    EXPECT_EQ(find("SymGetOptions")(0), kOptions);
    {
        const ImportHook hook("xoSystem.dll", "GetProcAddress", &findOthers);
        hiddenName = "StackWalk64";
        replacement = reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&faultyWalk));
        faultyWalks = 0;
        traceOf(&callAndFault);
    }
    EXPECT_EQ(find("SymGetOptions")(0), kOptions) << "after a fault in DbgHelp, too";
}

}  // namespace
