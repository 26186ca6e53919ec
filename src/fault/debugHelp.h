// DbgHelp for one stack trace, with the modules that are on the stack.
#ifndef XO_FAULT_DEBUGHELP_H
#define XO_FAULT_DEBUGHELP_H

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/handle.h"
#include "platform/moduleFunction.h"
// Needs <windows.h>
#include <dbghelp.h>

namespace xo::fault {

// Loaded by open and let go by close, with the program databases that it has read: a module that is unloaded between
// two reports can be linked anew, and what comes to its address later is looked at afresh. One thread is let in at a
// time.
//
// Each call may end in a fault, of DbgHelp itself. The caller survives it by callSilently and then calls close.
class DebugHelp {
public:
    DebugHelp() = default;
    DebugHelp(const DebugHelp&) = delete;
    DebugHelp& operator=(const DebugHelp&) = delete;

    // Makes it ready for a trace. The result is empty or says what is missing.
    std::string_view open();

    // Lets all go; no fault comes out of it. False when DbgHelp has faulted: it then stays loaded, in no known state,
    // and is not to be opened again.
    bool close();

    // Copies memory of this process; false where there is none to read.
    static bool read(std::uint64_t address, void* buffer, std::uint32_t size);

    // Steps to the next frame outwards.
    bool walk(STACKFRAME64& frame, CONTEXT& context);

    struct Symbol {
        std::string name;       // empty when there is none at the address
        std::uint64_t address;  // where it begins, if there is one
        bool isUnconfident;
    };
    Symbol symbolAt(std::uint64_t address);

    struct Line {
        std::string file;  // empty when none is known
        std::uint32_t number;
    };
    Line lineAt(std::uint64_t address);

private:
    bool resolveAll();
    void initialise();
    void setOptions(DWORD options);
    void letGo();
    void loadModuleAt(std::uint64_t address);
    Symbol findSymbol(std::uint64_t address);
    static void* WINAPI functionTableAt(HANDLE process, DWORD64 address);
    static DWORD64 WINAPI moduleBaseAt(HANDLE process, DWORD64 address);

    template <class Function>
    bool resolve(Function*& function, const char* name) {
        function = platform::findFunction<Function>(mLibrary.get(), name);
        return function != nullptr;
    }

    // Calls a function of DbgHelp. A fault leaves the mark set that somebody is inside.
    template <class Function, class... Arguments>
    auto call(Function* function, Arguments... arguments) {
        const bool wasInside = std::exchange(mIsInside, true);
        const auto result = function(arguments...);
        mIsInside = wasInside;
        return result;
    }

    // Each null unless the library is loaded; the last four may be missing from it.
    decltype(::StackWalk64)* mStackWalk = nullptr;
    decltype(::SymGetLineFromAddr64)* mGetLine = nullptr;
    decltype(::SymGetSymFromAddr64)* mGetSymbol = nullptr;
    decltype(::SymInitialize)* mInitialize = nullptr;
    decltype(::SymFunctionTableAccess64)* mFunctionTable = nullptr;
    decltype(::SymGetModuleBase64)* mModuleBase = nullptr;
    decltype(::SymGetOptions)* mGetOptions = nullptr;
    decltype(::SymSetOptions)* mSetOptions = nullptr;
    decltype(::SymLoadModuleExW)* mLoadModule = nullptr;
    decltype(::SymCleanup)* mCleanup = nullptr;

    platform::LibraryHandle mLibrary;
    HANDLE mProcess = nullptr;      // keeps our symbols apart from the host's; null until DbgHelp is initialised
    DWORD mHostOptions = 0;         // as found by open, put back by close
    std::vector<HMODULE> mModules;  // loaded into DbgHelp
    bool mIsInside = false;         // whether a call is under way in DbgHelp
};

}  // namespace xo::fault

#endif
