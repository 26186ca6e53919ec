// The names of the enumerators of works and their units, for xoEnumHelper.h.
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoProgress.h"

namespace xo {
namespace {

constexpr xoEnumEntry<xoProgressUnit> kUnits[] = {
    {ProgressUnitNone, "None"}, {ProgressUnitBytes, "Bytes"}, {ProgressUnitItems, "Items"}};
constexpr xoEnumEntry<xoProgressState::Phase> kPhases[] = {{xoProgressState::PhaseIdle, "Idle"},
                                                           {xoProgressState::PhaseRunning, "Running"},
                                                           {xoProgressState::PhaseDone, "Done"},
                                                           {xoProgressState::PhaseStopped, "Stopped"},
                                                           {xoProgressState::PhaseCanceled, "Canceled"}};

}  // namespace

xoEnumList<xoProgressUnit> xoEnumEntries(xoProgressUnit) { return kUnits; }

xoEnumList<xoProgressState::Phase> xoEnumEntries(xoProgressState::Phase) { return kPhases; }

}  // namespace xo
