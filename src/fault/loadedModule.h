// The data of this process's modules that a stack trace needs.
#ifndef XO_FAULT_LOADEDMODULE_H
#define XO_FAULT_LOADEDMODULE_H

#include <cstdint>
#include <optional>
#include <string>

#include "platform/windows.h"

namespace xo::fault {

// The module that contains the address, null when none does. The handle is valid until a thread unloads the module.
HMODULE moduleAt(std::uint64_t address);

// The full path of the module; empty for null.
std::wstring moduleFile(HMODULE module);

struct LoadedModule {
    std::wstring file;
    DWORD size;           // bytes in memory
    bool hasOnlyExports;  // whether only its exported names are to be read
};

// std::nullopt when another thread has unloaded the module meanwhile.
std::optional<LoadedModule> describeModule(HMODULE module);

}  // namespace xo::fault

#endif
