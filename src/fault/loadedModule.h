// The modules of this process, as far as a stack trace wants to know them.
#ifndef XO_FAULT_LOADEDMODULE_H
#define XO_FAULT_LOADEDMODULE_H

#include <cstdint>
#include <string>

#include "platform/windows.h"

namespace xo::fault {

// The module that contains the address, null when none does. It is valid until some thread frees it.
HMODULE moduleAt(std::uint64_t address);

// Its full path; empty for null.
std::wstring moduleFile(HMODULE module);

const IMAGE_NT_HEADERS& moduleHeaders(HMODULE module);

// Whether the module's own names are all that should be read of it: that of a module of the system, or of one whose
// debug information is of no use.
bool hasOnlyExports(HMODULE module, const std::wstring& file);

}  // namespace xo::fault

#endif
