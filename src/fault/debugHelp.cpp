// Loads DbgHelp.dll for one trace and calls it.
#include "fault/debugHelp.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>

#include "fault/guardedCall.h"
#include "fault/loadedModule.h"
#include "platform/wideText.h"
#include "text/utf8Checks.h"
#include "xoSystem/xoDirUtils.h"

namespace xo::fault {
namespace {

constexpr ULONG kLongestName = 2000;  // characters of a symbol; longer names are cut

constexpr DWORD kWithoutDialogs = SYMOPT_FAIL_CRITICAL_ERRORS | SYMOPT_NO_PROMPTS;
constexpr DWORD kOptions = SYMOPT_LOAD_LINES | SYMOPT_UNDNAME | SYMOPT_DEFERRED_LOADS | kWithoutDialogs;
// For modules of which only the exported names are read: no program database is searched.
// https://learn.microsoft.com/windows/win32/api/dbghelp/nf-dbghelp-symsetoptions
constexpr DWORD kOptionsForExports = SYMOPT_PUBLICS_ONLY | SYMOPT_UNDNAME | kWithoutDialogs;

DebugHelp* walking = nullptr;  // StackWalk64 passes no argument of the caller to its callbacks

// The narrow functions of DbgHelp return texts in the ANSI code page. Wine's return the bytes of the program database,
// which are UTF-8.
std::string toUtf8(std::string_view text) {
    return text::isUtf8(text) ? std::string(text) : platform::fromNative(text);
}

// The folders in which program databases are searched: the working folder, that of the program, and "bin" below both.
std::string symbolSearchPath() {
    std::string folder;
    xoDirUtils::GetFolderOfCurrentProcessUtf8(folder);
    if (!folder.empty() && folder.back() != '\\') folder += '\\';
    return platform::toNative(".;bin;" + folder + ";" + folder + "bin");
}

struct Reading {
    const void* from;
    void* to;
    DWORD size;
};

void readOwn(void* argument) {
    const Reading& reading = *static_cast<const Reading*>(argument);
    std::memcpy(reading.to, reading.from, reading.size);
}

// Reads memory of this process directly. Without this callback StackWalk64 calls ReadProcessMemory for each access,
// which takes most of its time.
// https://learn.microsoft.com/windows/win32/api/dbghelp/nf-dbghelp-stackwalk64
BOOL WINAPI readMemory(HANDLE, DWORD64 address, void* buffer, DWORD size, DWORD* sizeRead) {
    const bool isRead = DebugHelp::read(address, buffer, size);
    *sizeRead = isRead ? size : 0;
    return isRead;
}

}  // namespace

std::string_view DebugHelp::open() {
    mLibrary.reset(::LoadLibraryExW(L"DbgHelp.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
    if (!mLibrary) return "\n\tFail to load DbgHelp.dll";
    if (!resolveAll()) return "\n\tFail to load symbols from DbgHelp.dll";
    if (mGetOptions) mHostOptions = call(mGetOptions);
    setOptions(kOptions);
    initialise();
    return {};
}

// After a fault in DbgHelp only the host's options are restored: cleaning up or unloading might fault or hang.
bool DebugHelp::close() {
    const bool hasFaulted = mIsInside;
    const auto end = [](void* help) { static_cast<DebugHelp*>(help)->endSession(); };
    if (!hasFaulted && callSilently(end, this)) return true;
    const auto restoreOptions = [](void* help) { static_cast<DebugHelp*>(help)->setOptions(0); };
    callSilently(restoreOptions, this);
    [[maybe_unused]] const HMODULE staysLoaded = mLibrary.release();
    return false;
}

void DebugHelp::endSession() {
    if (mProcess) setOptions(0);
    if (mProcess && mCleanup) call(mCleanup, mProcess);
    mLibrary.reset();
}

// False when a function is missing without which there is no trace. The first four are optional.
bool DebugHelp::resolveAll() {
    resolve(mGetOptions, "SymGetOptions");
    resolve(mSetOptions, "SymSetOptions");
    resolve(mLoadModule, "SymLoadModuleExW");
    resolve(mCleanup, "SymCleanup");
    return resolve(mStackWalk, "StackWalk64") && resolve(mGetLine, "SymGetLineFromAddr64") &&
           resolve(mGetSymbol, "SymGetSymFromAddr64") && resolve(mInitialize, "SymInitialize") &&
           resolve(mFunctionTable, "SymFunctionTableAccess64") && resolve(mModuleBase, "SymGetModuleBase64");
}

void DebugHelp::initialise() {
    // The handle only identifies the session. It need not be that of a process, because fInvadeProcess is FALSE and
    // memory is read by readMemory.
    // https://learn.microsoft.com/windows/win32/api/dbghelp/nf-dbghelp-syminitialize
    mProcess = this;
    const std::string path = symbolSearchPath();
    call(mInitialize, mProcess, path.c_str(), /*fInvadeProcess=*/FALSE);
}

// The options are global to the process. Those of the library are added to the host's, which close restores.
void DebugHelp::setOptions(DWORD options) {
    if (mSetOptions) call(mSetOptions, mHostOptions | options);
}

bool DebugHelp::read(std::uint64_t address, void* buffer, std::uint32_t size) {
    Reading reading{reinterpret_cast<const void*>(address), buffer, size};
    return callSilently(&readOwn, &reading);
}

bool DebugHelp::walk(STACKFRAME64& frame, CONTEXT& context) {
    // Valid during the call: traces are written one at a time, under the caller's lock.
    walking = this;
    return call(mStackWalk, DWORD{IMAGE_FILE_MACHINE_AMD64}, mProcess, ::GetCurrentThread(), &frame,
                static_cast<void*>(&context), &readMemory, &functionTableAt, &moduleBaseAt,
                /*TranslateAddress=*/PTRANSLATE_ADDRESS_ROUTINE64{}) != FALSE;
}

void* WINAPI DebugHelp::functionTableAt(HANDLE process, DWORD64 address) {
    walking->loadModuleAt(address);
    return walking->call(walking->mFunctionTable, process, address);
}

DWORD64 WINAPI DebugHelp::moduleBaseAt(HANDLE process, DWORD64 address) {
    walking->loadModuleAt(address);
    return walking->call(walking->mModuleBase, process, address);
}

void DebugHelp::loadModuleAt(std::uint64_t address) {
    if (!mLoadModule) return;
    const HMODULE handle = moduleAt(address);
    if (!handle || std::find(mModules.begin(), mModules.end(), handle) != mModules.end()) return;
    const std::optional<LoadedModule> module = describeModule(handle);
    if (!module) return;
    // Before it is loaded: a module for which DbgHelp fails is not tried again.
    mModules.push_back(handle);
    // The options apply to the next module that is loaded.
    setOptions(module->hasOnlyExports ? kOptionsForExports : kOptions);
    call(mLoadModule, mProcess, /*hFile=*/HANDLE{}, module->file.c_str(), /*ModuleName=*/PCWSTR{},
         reinterpret_cast<DWORD64>(handle), module->size, /*Data=*/PMODLOAD_DATA{}, /*Flags=*/DWORD{0});
    setOptions(kOptions);
}

DebugHelp::Symbol DebugHelp::symbolAt(std::uint64_t address) {
    loadModuleAt(address);
    Symbol symbol = findSymbol(address);
    if (!symbol.name.empty()) return symbol;
    // Wine's DbgHelp finds an exported name only by the address at which the function starts.
    DWORD64 base = 0;
    const RUNTIME_FUNCTION* const function = ::RtlLookupFunctionEntry(address, &base, nullptr);
    if (!function) return symbol;
    const Symbol exported = findSymbol(base + function->BeginAddress);
    return exported.name.empty() ? symbol : exported;
}

DebugHelp::Symbol DebugHelp::findSymbol(std::uint64_t address) {
    // The name follows the structure in the same memory.
    alignas(IMAGEHLP_SYMBOL64) std::byte buffer[sizeof(IMAGEHLP_SYMBOL64) + kLongestName + 1] = {};
    auto& symbol = *reinterpret_cast<IMAGEHLP_SYMBOL64*>(buffer);
    symbol.SizeOfStruct = sizeof symbol;
    symbol.MaxNameLength = kLongestName;
    DWORD64 offset = 0;
    if (!call(mGetSymbol, mProcess, address, &offset, &symbol)) return {{}, 0, /*isUnconfident=*/false};
    return {toUtf8(symbol.Name), symbol.Address, symbol.Flags != 0};
}

DebugHelp::Line DebugHelp::lineAt(std::uint64_t address) {
    IMAGEHLP_LINE64 line{};
    line.SizeOfStruct = sizeof line;
    DWORD offset = 0;
    if (!call(mGetLine, mProcess, address, &offset, &line) || !line.FileName) return {{}, 0};
    return {toUtf8(line.FileName), line.LineNumber};
}

}  // namespace xo::fault
