// A session of DbgHelp for one stack trace. It loads the symbols of the modules on the stack only.
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

// open loads DbgHelp; close unloads it and closes the program databases that it has read. So a module that is unloaded
// between two reports can be linked again, and another module that is loaded at its address gets its own symbols.
// DbgHelp is single-threaded: the caller holds a lock.
// https://learn.microsoft.com/windows/win32/api/dbghelp/nf-dbghelp-syminitialize
//
// A fault may occur in any of these functions, in DbgHelp itself. The caller handles it with callSilently and then
// calls close.
class DebugHelp {
public:
    DebugHelp() = default;
    DebugHelp(const DebugHelp&) = delete;
    DebugHelp& operator=(const DebugHelp&) = delete;

    // Prepares a trace. The result is empty, or the line of the report that says what is missing.
    std::string_view open();

    // Ends the session and unloads DbgHelp; a fault in that is handled here. False when DbgHelp has faulted, now or
    // before: its state is unknown then, so it stays loaded and must not be opened again.
    bool close();

    // Copies memory of this process; false when a part of it cannot be read.
    static bool read(std::uint64_t address, void* buffer, std::uint32_t size);

    // Moves on to the next frame, from the innermost outwards; false when there is none.
    bool walk(STACKFRAME64& frame, CONTEXT& context);

    struct Symbol {
        std::string name;       // empty when the address has no symbol
        std::uint64_t address;  // the start of the symbol; 0 without one
        bool isUnconfident;     // an exported name, not one from a program database; the function may be another one
                                // behind it
    };
    Symbol symbolAt(std::uint64_t address);

    struct Line {
        std::string file;  // empty when none is known
        std::uint32_t number;
    };
    Line lineAt(std::uint64_t address);

private:
    // Steps of open() and close().
    bool resolveAll();
    void initialise();
    void setOptions(DWORD options);
    void endSession();
    // Loads the symbols of the module that contains the address, unless they are loaded.
    void loadModuleAt(std::uint64_t address);
    Symbol findSymbol(std::uint64_t address);
    // Callbacks of StackWalk64: they load the symbols of a module before DbgHelp needs them.
    static void* WINAPI functionTableAt(HANDLE process, DWORD64 address);
    static DWORD64 WINAPI moduleBaseAt(HANDLE process, DWORD64 address);

    template <class Function>
    bool resolve(Function*& function, const char* name) {
        function = platform::findFunction<Function>(mLibrary.get(), name);
        return function != nullptr;
    }

    // Calls a function of DbgHelp. A fault in it leaves mIsInside set.
    template <class Function, class... Arguments>
    auto call(Function* function, Arguments... arguments) {
        const bool wasInside = std::exchange(mIsInside, true);
        const auto result = function(arguments...);
        mIsInside = wasInside;
        return result;
    }

    // The functions of DbgHelp; null until open(). The last four may stay null.
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
    HANDLE mProcess = nullptr;      // identifies this session beside the host's; null until DbgHelp is initialised
    DWORD mHostOptions = 0;         // read by open, restored by close
    std::vector<HMODULE> mModules;  // loaded into DbgHelp
    bool mIsInside = false;         // whether a call is under way in DbgHelp
};

}  // namespace xo::fault

#endif
