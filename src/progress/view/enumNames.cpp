// The names of the flags of the console view, for xoEnumHelper.h.
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoProgressConsole.h"

namespace xo {
namespace {

constexpr xoEnumEntry<xoProgressConsole::Flag> kFlags[] = {{xoProgressConsole::ProgressConsoleErase, "Erase"},
                                                           {xoProgressConsole::ProgressConsoleNoLines, "NoLines"}};

}  // namespace

xoEnumList<xoProgressConsole::Flag> xoEnumEntries(xoProgressConsole::Flag) { return {kFlags, /*areFlags=*/true}; }

}  // namespace xo
