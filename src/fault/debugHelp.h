// DbgHelp, loaded when it is first wanted, with the modules that have been on a faulting stack so far.
#ifndef XO_FAULT_DEBUGHELP_H
#define XO_FAULT_DEBUGHELP_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/handle.h"
// Needs <windows.h>
#include <dbghelp.h>

namespace xo::fault {

// Reading program databases takes most of a report's time, so they stay until close(). The owner lets one thread in at
// a time.
class DebugHelp {
public:
    DebugHelp() = default;
    DebugHelp(const DebugHelp&) = delete;
    DebugHelp& operator=(const DebugHelp&) = delete;

    // Makes it ready for one trace, and undoes that. What open returns is empty or says what is missing.
    std::string_view open();
    void endTrace();

    void close();

    // Lets go of everything as it stands, after a fault inside DbgHelp or when the process ends anyway.
    void abandon();

    // Steps to the next frame outwards.
    bool walk(STACKFRAME64& frame, CONTEXT& context);

    struct Symbol {
        std::string name;  // empty when there is none at the address
        std::uint64_t address;
        bool isUnconfident;
    };
    Symbol symbolAt(std::uint64_t address);

    struct Line {
        std::string file;  // empty when none is known
        std::uint32_t number;
    };
    Line lineAt(std::uint64_t address);

private:
    struct Module {
        std::uint64_t base;
        std::uint32_t timeStamp;
        std::uint32_t size;
    };
    struct LibraryPolicy {
        using Type = HMODULE;
        static Type none() noexcept { return nullptr; }
        static void close(Type library) noexcept { ::FreeLibrary(library); }
    };

    bool resolveAll();
    void initialise();
    void addOptions(DWORD options);
    void forgetUnloadedModules();
    void loadModuleAt(std::uint64_t address);
    Symbol findSymbol(std::uint64_t address);
    static void* WINAPI functionTableAt(HANDLE process, DWORD64 address);
    static DWORD64 WINAPI moduleBaseAt(HANDLE process, DWORD64 address);

    template <class Function>
    bool resolve(Function*& function, const char* name) {
        function = reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(mLibrary.get(), name)));
        return function != nullptr;
    }

    // Each null unless the library is loaded; the last five may be missing from it.
    decltype(::StackWalk64)* mStackWalk = nullptr;
    decltype(::SymGetLineFromAddr64)* mGetLine = nullptr;
    decltype(::SymGetSymFromAddr64)* mGetSymbol = nullptr;
    decltype(::SymInitialize)* mInitialize = nullptr;
    decltype(::SymFunctionTableAccess64)* mFunctionTable = nullptr;
    decltype(::SymGetModuleBase64)* mModuleBase = nullptr;
    decltype(::SymGetOptions)* mGetOptions = nullptr;
    decltype(::SymSetOptions)* mSetOptions = nullptr;
    decltype(::SymLoadModuleExW)* mLoadModule = nullptr;
    decltype(::SymUnloadModule64)* mUnloadModule = nullptr;
    decltype(::SymCleanup)* mCleanup = nullptr;

    platform::Owned<LibraryPolicy> mLibrary;
    HANDLE mProcess = nullptr;     // keeps our symbols apart from the host's; null until DbgHelp is initialised
    DWORD mHostOptions = 0;        // as found by open, put back by endTrace
    std::vector<Module> mModules;  // loaded into DbgHelp
};

}  // namespace xo::fault

#endif
