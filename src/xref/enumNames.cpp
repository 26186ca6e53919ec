// The names of the ways in which a reference is found, for xoEnumHelper.h.
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoXRefResolverSearchPath.h"

namespace xo {
namespace {

constexpr xoEnumEntry<xoXRefResolverSearchPath::How> kHows[] = {
    {xoXRefResolverSearchPath::FoundAsWritten, "AsWritten", "as written"},
    {xoXRefResolverSearchPath::FoundBesideDocument, "BesideDocument", "beside the document"},
    {xoXRefResolverSearchPath::FoundBelowSearchPath, "BelowSearchPath", "below a search path"},
    {xoXRefResolverSearchPath::FoundByName, "ByName", "by name"}};

}  // namespace

xoEnumList<xoXRefResolverSearchPath::How> xoEnumEntries(xoXRefResolverSearchPath::How) { return kHows; }

}  // namespace xo
