#include <cstring>
#include <utility>

#include "fault/faultFixture.h"
#include "platform/wideText.h"
#include "xoSystem/xoDirUtils.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
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

using function = void();
function* volatile nowhere = nullptr;
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

std::string frame(const std::string& name, const std::string& file, int line) {
    return "\n\t# [^\n]*" + name + " @0x[1-9a-f][0-9a-f]* in [^\n]*" + file + " line: " + std::to_string(line);
}

// Whether the frames follow one another, with others between them or not.
bool hasFrames(const std::string& trace, const std::vector<std::string>& frames) {
    std::string pattern;
    for (const std::string& next : frames) pattern += next + "[^]*";
    return std::regex_search(trace, std::regex(pattern));
}

TEST_F(StackTrace, NamesFunctionsFilesAndLinesOfHostAndLibrary) {
    const std::string trace = traceOf(&callAndFault);
    const std::string expected = frame("faultAt", "stackTrace.test.cpp", kFaultingLine) +
                                 frame("callAndFault", "stackTrace.test.cpp", kCallingLine) + "[^]*" +
                                 "ExecGuardedCode @0x[^\n]*xoException.cpp line: [0-9]+[^]*" +
                                 "outcomeOf[^\n]* @0x[^\n]*faultFixture.h line: [0-9]+[^]*" +
                                 "main @0x[^]* in [^\n]*\\\\ntdll.dll";
    EXPECT_TRUE(std::regex_match(trace, std::regex(expected))) << trace;
}

TEST_F(StackTrace, BeginsWhereTheFaultWas) {
    EXPECT_THAT(traceOf(&callAndFault), testing::StartsWith("\n\t# "));
    const std::string nowhereTrace = traceOf(&callNowhere);
    EXPECT_THAT(nowhereTrace, testing::StartsWith("\n\t#  @0x0 in \n\t# ")) << "a call through null";
    EXPECT_TRUE(hasFrames(nowhereTrace, {"callNowhere @0x", "ExecGuardedCode @0x"})) << nowhereTrace;
    const std::string throwTrace = traceOf(&throwText);
    EXPECT_TRUE(hasFrames(throwTrace, {"RaiseException @0x[^\n]*kernelbase.dll", "__cxa_throw @0x[^\n]*libstdc",
                                       "throwText @0x", "ExecGuardedCode @0x"}))
        << throwTrace;
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
    return name == hiddenName ? replacement : ::GetProcAddress(module, name);
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

BOOL WINAPI faultyWalk() {
    faultAt(nullptr);
    return TRUE;
}

TEST_F(StackTrace, OutlivesAFaultOfItsOwn) {
    const ImportHook hook("xoSystem.dll", "GetProcAddress", &findOthers);
    hiddenName = "StackWalk64";
    replacement = reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&faultyWalk));
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(outcomeOf(&callAndFault), "exception Catch an SEH exception");
        EXPECT_EQ(takeReports().at(0),
                  faultLine("EXCEPTION_ACCESS_VIOLATION 0xc0000005") + "\n\tFail to walk the stack");
    }
}

}  // namespace
