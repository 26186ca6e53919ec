// The modules of this process, as far as a stack trace wants to know them.
#ifndef XO_FAULT_LOADEDMODULE_H
#define XO_FAULT_LOADEDMODULE_H

#include <cstdint>
#include <optional>
#include <string>

#include "platform/windows.h"

namespace xo::fault {

// The module that contains the address, null when none does. It is valid until some thread frees it.
HMODULE moduleAt(std::uint64_t address);

// Its full path; empty for null.
std::wstring moduleFile(HMODULE module);

struct LoadedModule {
    std::wstring file;
    DWORD size;           // in memory
    bool hasOnlyExports;  // whether its exported names are all that should be read of it
};

// None for a module that another thread has freed meanwhile.
std::optional<LoadedModule> describeModule(HMODULE module);

}  // namespace xo::fault

#endif
