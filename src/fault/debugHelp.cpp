#include "fault/debugHelp.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "fault/guardedCall.h"
#include "fault/loadedModule.h"
#include "platform/wideText.h"
#include "text/utf8Checks.h"
#include "xoSystem/xoDirUtils.h"

namespace xo::fault {
namespace {

constexpr ULONG kLongestName = 2000;

constexpr DWORD kQuietly = SYMOPT_FAIL_CRITICAL_ERRORS | SYMOPT_NO_PROMPTS;
constexpr DWORD kOptions = SYMOPT_LOAD_LINES | SYMOPT_UNDNAME | SYMOPT_DEFERRED_LOADS | kQuietly;
// Of some modules the exported names say enough, and cost little to find.
constexpr DWORD kOptionsForExports = SYMOPT_PUBLICS_ONLY | SYMOPT_UNDNAME | kQuietly;

DebugHelp* walking = nullptr;  // the callbacks of a walk have no argument that could carry it

// DbgHelp's narrow texts are in the ANSI code page, but Wine's pass on what the program database holds: UTF-8.
std::string toUtf8(std::string_view text) {
    return text::isUtf8(text) ? std::string(text) : platform::fromNative(text);
}

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

// Memory of this process. DbgHelp's own way, through the system, takes most of a walk's time.
BOOL WINAPI readMemory(HANDLE, DWORD64 address, void* buffer, DWORD size, DWORD* sizeRead) {
    Reading reading{reinterpret_cast<const void*>(address), buffer, size};
    const bool isRead = callQuietly(&readOwn, &reading);
    *sizeRead = isRead ? size : 0;
    return isRead;
}

}  // namespace

std::string_view DebugHelp::open() {
    if (!mLibrary) {
        mLibrary.reset(::LoadLibraryExW(L"DbgHelp.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
        if (!mLibrary) return "\n\tFail to load DbgHelp.dll";
        if (!resolveAll()) {
            mLibrary.reset();
            return "\n\tFail to load symbols from DbgHelp.dll";
        }
    }
    if (mGetOptions) mHostOptions = mGetOptions();
    addOptions(kOptions);
    if (!mProcess) initialise();
    forgetUnloadedModules();
    return {};
}

bool DebugHelp::resolveAll() {
    resolve(mGetOptions, "SymGetOptions");
    resolve(mSetOptions, "SymSetOptions");
    resolve(mLoadModule, "SymLoadModuleExW");
    resolve(mUnloadModule, "SymUnloadModule64");
    resolve(mCleanup, "SymCleanup");
    return resolve(mStackWalk, "StackWalk64") && resolve(mGetLine, "SymGetLineFromAddr64") &&
           resolve(mGetSymbol, "SymGetSymFromAddr64") && resolve(mInitialize, "SymInitialize") &&
           resolve(mFunctionTable, "SymFunctionTableAccess64") && resolve(mModuleBase, "SymGetModuleBase64");
}

void DebugHelp::initialise() {
    mProcess = this;  // any token does where modules come one by one, as a walk meets them, and memory is read here
    mInitialize(mProcess, symbolSearchPath().c_str(), /*fInvadeProcess=*/FALSE);
}

// Options belong to the whole process: the host gets its own back after each trace.
void DebugHelp::addOptions(DWORD options) {
    if (mSetOptions) mSetOptions(mHostOptions | options);
}

void DebugHelp::endTrace() { addOptions(0); }

void DebugHelp::close() {
    if (mProcess && mCleanup) mCleanup(mProcess);
    mProcess = nullptr;
    mModules.clear();
    mLibrary.reset();
}

void DebugHelp::abandon() {
    mProcess = nullptr;
    static_cast<void>(mLibrary.release());
    mModules.clear();
}

bool DebugHelp::walk(STACKFRAME64& frame, CONTEXT& context) {
    walking = this;
    return mStackWalk(IMAGE_FILE_MACHINE_AMD64, mProcess, ::GetCurrentThread(), &frame, &context, &readMemory,
                      &functionTableAt, &moduleBaseAt, /*TranslateAddress=*/nullptr) != FALSE;
}

void* WINAPI DebugHelp::functionTableAt(HANDLE process, DWORD64 address) {
    walking->loadModuleAt(address);
    return walking->mFunctionTable(process, address);
}

DWORD64 WINAPI DebugHelp::moduleBaseAt(HANDLE process, DWORD64 address) {
    walking->loadModuleAt(address);
    return walking->mModuleBase(process, address);
}

void DebugHelp::loadModuleAt(std::uint64_t address) {
    if (!mLoadModule) return;
    const HMODULE module = moduleAt(address);
    const auto base = reinterpret_cast<std::uint64_t>(module);
    const auto isIt = [base](const Module& known) { return known.base == base; };
    if (!module || std::any_of(mModules.begin(), mModules.end(), isIt)) return;

    const IMAGE_NT_HEADERS& headers = moduleHeaders(module);
    mModules.push_back({base, headers.FileHeader.TimeDateStamp, headers.OptionalHeader.SizeOfImage});
    const std::wstring file = moduleFile(module);
    addOptions(hasOnlyExports(module, file) ? kOptionsForExports : kOptions);
    mLoadModule(mProcess, /*hFile=*/nullptr, file.c_str(), /*ModuleName=*/nullptr, base,
                headers.OptionalHeader.SizeOfImage, /*Data=*/nullptr, /*Flags=*/0);
    addOptions(kOptions);
}

// A module may have gone since the last trace, and another one come to its place.
void DebugHelp::forgetUnloadedModules() {
    const auto isGone = [this](const Module& known) {
        const HMODULE module = moduleAt(known.base);
        if (reinterpret_cast<std::uint64_t>(module) == known.base) {
            const IMAGE_NT_HEADERS& headers = moduleHeaders(module);
            if (headers.FileHeader.TimeDateStamp == known.timeStamp && headers.OptionalHeader.SizeOfImage == known.size)
                return false;
        }
        if (mUnloadModule) mUnloadModule(mProcess, known.base);
        return true;
    };
    mModules.erase(std::remove_if(mModules.begin(), mModules.end(), isGone), mModules.end());
}

DebugHelp::Symbol DebugHelp::symbolAt(std::uint64_t address) {
    loadModuleAt(address);
    Symbol symbol = findSymbol(address);
    if (!symbol.name.empty()) return symbol;
    // Wine knows an exported name at the very start of its function only.
    DWORD64 base = 0;
    const RUNTIME_FUNCTION* const function = ::RtlLookupFunctionEntry(address, &base, nullptr);
    if (!function) return symbol;
    Symbol exported = findSymbol(base + function->BeginAddress);
    return exported.name.empty() ? symbol : exported;
}

DebugHelp::Symbol DebugHelp::findSymbol(std::uint64_t address) {
    alignas(IMAGEHLP_SYMBOL64) std::byte room[sizeof(IMAGEHLP_SYMBOL64) + kLongestName + 1] = {};
    auto& symbol = *reinterpret_cast<IMAGEHLP_SYMBOL64*>(room);
    symbol.SizeOfStruct = sizeof symbol;
    symbol.MaxNameLength = kLongestName;
    DWORD64 offset = 0;
    if (!mGetSymbol(mProcess, address, &offset, &symbol)) return {{}, address, /*isUnconfident=*/false};
    return {toUtf8(symbol.Name), symbol.Address, symbol.Flags != 0};
}

DebugHelp::Line DebugHelp::lineAt(std::uint64_t address) {
    IMAGEHLP_LINE64 line{};
    line.SizeOfStruct = sizeof line;
    DWORD offset = 0;
    if (!mGetLine(mProcess, address, &offset, &line) || !line.FileName) return {{}, 0};
    return {toUtf8(line.FileName), line.LineNumber};
}

}  // namespace xo::fault
