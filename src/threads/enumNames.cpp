// The names of the enumerators of the thread classes, for xoEnumHelper.
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoLegacyThread.h"

namespace xo {
namespace {

constexpr xoEnumEntry<xoThreadCreationFlag> kCreationFlags[] = {{xoThreadCreationFlagRun, "Run"},
                                                                {xoThreadCreationFlagSuspended, "Suspended"}};

}  // namespace

}  // namespace xo

xo::xoEnumList<xoThreadCreationFlag> xoEnumEntries(xoThreadCreationFlag) { return xo::kCreationFlags; }
