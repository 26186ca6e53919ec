// Compares wide texts unit by unit, without a locale, as Windows compares names of files and variables.
#ifndef XO_PLATFORM_ORDINALTEXT_H
#define XO_PLATFORM_ORDINALTEXT_H

#include <string_view>

#include "platform/windows.h"

namespace xo::platform {

// CSTR_LESS_THAN, CSTR_EQUAL or CSTR_GREATER_THAN. Upper and lower case are equal, by the system's own table.
inline int compareIgnoringCase(std::wstring_view a, std::wstring_view b) noexcept {
    return ::CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()),
                                  /*bIgnoreCase=*/TRUE);
}

inline bool equalsIgnoringCase(std::wstring_view a, std::wstring_view b) noexcept {
    return compareIgnoringCase(a, b) == CSTR_EQUAL;
}

}  // namespace xo::platform

#endif
