// xoVariantUtils: erasing from a tree of variants by a regular expression that the caller has compiled.
#ifndef XOSYSTEM_XOVARIANTUTILS_H
#define XOSYSTEM_XOVARIANTUTILS_H

#include <cstdint>
#include <regex>
#include <string>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoVariantList.h"
#include "xoSystem/xoVariantMap.h"

namespace xo {

// What xoVariantMapImpl::erasePathRegEx does, with an expression that the caller has compiled, from a place whose path
// is already known: the prefix stands before every key.
class XOSYSTEM_API xoVariantUtils {
public:
    // Throws std::regex_error with error_stack where a path is too long for the runtime's matcher, which may need some
    // hundred bytes of stack for each character (tens of thousands of characters are matched in any case). Whenever it
    // throws, nothing has been erased.
    static std::uint64_t ErasePathRegExImplRecurse(xoVariant::xoVariantMapImpl& map, const std::regex& expression,
                                                   const std::string& prefix);
    static std::uint64_t ErasePathRegExImplRecurse(xoVariant::xoVariantListImpl& list, const std::regex& expression,
                                                   const std::string& prefix);
};

}  // namespace xo

#endif
