// Resources: data that is compiled into modules, found by name.
//
//     std::string shader;
//     if (!xo::rc::GetResource("shaders/blur.hlsl", shader)) return false;
//
// A module registers its tables, typically while it loads, and unregisters them before it unloads: the registry keeps
// pointers into the module's memory and never copies the data. Names are compared byte by byte.
//
// Safe for threads after full initialisation; before, one thread uses it. The outermost termination forgets all
// entries. What goes wrong is one CRITICAL line in the log.
#ifndef XOSYSTEM_XORESOURCE_H
#define XOSYSTEM_XORESOURCE_H

#include <cstddef>
#include <string>

#include "xoSystem/xoExport.h"

namespace xo::rc {

// Points data at the resource's bytes, which its module owns. False, with null and 0, when there is none of that name;
// a null name is one that there is not.
XOSYSTEM_API bool GetResource(const char* name, const char*& data, std::size_t& size);

// Replaces what out holds by a copy of the bytes, NULs included; leaves it empty when there is none of that name.
XOSYSTEM_API bool GetResource(const char* name, std::string& out);

namespace impl {

// Registers count resources: names[i] is the sizes[i] bytes at blob + offsets[i]. A name that is taken keeps its first
// data; the conflict is logged, as is a null name, which is left out. With a null blob or table nothing is registered.
XOSYSTEM_API void RegisterResources(std::size_t count, const char* blob, const char* const* names,
                                    const std::size_t* sizes, const std::size_t* offsets);

// Forgets the names; one that is not there, or null, is logged. Takes the tables of the registration, of which it reads
// the names alone; a null table of names does nothing. After the library has been taken down it does nothing, so that a
// module may still unload.
XOSYSTEM_API void UnRegisterResources(std::size_t count, const char* blob, const char* const* names,
                                      const std::size_t* sizes, const std::size_t* offsets);

}  // namespace impl
}  // namespace xo::rc

#endif
