// Names of functions and types as they are written in the source.
#ifndef XO_PLATFORM_SYMBOLNAME_H
#define XO_PLATFORM_SYMBOLNAME_H

#include <cstdlib>
#include <memory>
#include <string>

#if !defined(_MSC_VER)
#    include <cxxabi.h>
#endif

namespace xo::platform {

// The readable form of a name that GCC or clang has mangled; any other name is returned unchanged. Names of Microsoft's
// compiler need no conversion: those of types are readable, and DbgHelp demangles those of functions.
inline std::string demangled(const char* name) {
#if !defined(_MSC_VER)
    const std::unique_ptr<char, decltype(&std::free)> readable(
        abi::__cxa_demangle(name, nullptr, nullptr, /*status=*/nullptr), &std::free);
    if (readable) return readable.get();
#endif
    return name;
}

}  // namespace xo::platform

#endif
