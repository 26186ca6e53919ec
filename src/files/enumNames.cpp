// The names of the flags of globbing, for xoEnumHelper.
#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoEnumHelper.h"

namespace xo {
namespace {

constexpr xoEnumEntry<xoDirUtils::GlobFlag> kGlobFlags[] = {{xoDirUtils::GlobAppend, "Append"},
                                                            {xoDirUtils::GlobRecursive, "Recursive"},
                                                            {xoDirUtils::GlobNamesOnly, "NamesOnly"}};

}  // namespace

xoEnumList<xoDirUtils::GlobFlag> xoEnumEntries(xoDirUtils::GlobFlag) { return {kGlobFlags, /*areFlags=*/true}; }

}  // namespace xo
