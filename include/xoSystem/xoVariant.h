// xoVariant: one value of any of the library's types, and the lists and maps that make trees of them.
//
//     xo::xoVariant::xoVariantMapImpl settings;
//     settings.editValuePath("window/width", 800, '/');
//     const std::int64_t width = settings.getValuePath("window/width", 640, '/').toInteger();
//
// There is no lock: any number of threads may read one value, a writer must be alone. Trees may be of any depth; none
// of the operations needs more stack for a deeper one. A list is destroyed from front to back, a map from back to
// front.
//
// Nothing here reports an error. A conversion that cannot be made gives its fixed fallback. Exceptions come from four
// causes only: lack of memory (std::bad_alloc), a size beyond what a container can hold (std::length_error), a bad
// regular expression (std::regex_error), and what a caller's clone or equals throws.
#ifndef XOSYSTEM_XOVARIANT_H
#define XOSYSTEM_XOVARIANT_H

#include "xoSystem/xoVariantList.h"
#include "xoSystem/xoVariantMap.h"
#include "xoSystem/xoVariantUtils.h"
#include "xoSystem/xoVariantValue.h"

#endif
