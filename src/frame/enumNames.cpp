// The names of the levels of initialisation, for xoEnumHelper.
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoInit.h"

namespace xo {
namespace {

constexpr xoEnumEntry<InitType> kInitTypes[] = {{InitTypeBasic, "Basic"}, {InitTypeFull, "Full"}};

}  // namespace

xoEnumList<InitType> xoEnumEntries(InitType) { return kInitTypes; }

}  // namespace xo
