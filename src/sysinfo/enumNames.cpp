#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoPowerStatus.h"

namespace xo {
namespace {

constexpr xoEnumEntry<xoPowerStatus::AcLine> kAcLines[] = {{xoPowerStatus::AcLineOffline, "Offline"},
                                                           {xoPowerStatus::AcLineOnline, "Online"},
                                                           {xoPowerStatus::AcLineUnknown, "Unknown"}};

}  // namespace

xoEnumList<xoPowerStatus::AcLine> xoEnumEntries(xoPowerStatus::AcLine) { return kAcLines; }

}  // namespace xo
