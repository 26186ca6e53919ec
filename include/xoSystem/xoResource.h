// Resources: data that is compiled into modules and found by name.
//
//     std::string shader;
//     if (!xo::rc::GetResource("shaders/blur.hlsl", shader)) return false;
//
// A module registers its tables, typically while it loads, and unregisters them before it unloads: the registry keeps
// pointers into the module's memory and never copies the data. Names are compared byte by byte.
//
// Any thread may call these functions after full initialisation, before that one thread only. The outermost termination
// removes all entries. Each failure writes one CRITICAL line to the log.
#ifndef XOSYSTEM_XORESOURCE_H
#define XOSYSTEM_XORESOURCE_H

#include <cstddef>
#include <string>

#include "xoSystem/xoExport.h"

namespace xo::rc {

// Sets data to the bytes of the resource, which its module owns. False, with null and 0, when no resource has that
// name, or the name is null.
XOSYSTEM_API bool GetResource(const char* name, const char*& data, std::size_t& size);

// Sets out to a copy of the bytes, NULs included. False, with an empty text, when no resource has that name, or the
// name is null.
XOSYSTEM_API bool GetResource(const char* name, std::string& out);

namespace impl {

// Registers count resources: names[i] stands for the sizes[i] bytes at blob + offsets[i]. A name that is registered
// already keeps its data, and the conflict is logged; so is a null name, which is skipped. With a null blob or table
// nothing is registered.
XOSYSTEM_API void RegisterResources(std::size_t count, const char* blob, const char* const* names,
                                    const std::size_t* sizes, const std::size_t* offsets);

// Removes the names; one that is not registered, or null, is logged. A name is removed whichever module registered it:
// a module whose name was in conflict takes the other's entry away. Of the tables, which are those of the registration,
// it reads the names alone; without them it does nothing. After the outermost termination it does nothing, so that a
// module may still unload.
XOSYSTEM_API void UnRegisterResources(std::size_t count, const char* blob, const char* const* names,
                                      const std::size_t* sizes, const std::size_t* offsets);

}  // namespace impl
}  // namespace xo::rc

#endif
