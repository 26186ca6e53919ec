#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoProcess.h"

namespace xo {
namespace {

constexpr xoEnumEntry<ProcessPriority> kPriorities[] = {{ProcessPriorityLow, "Low"},
                                                        {ProcessPriorityNormal, "Normal"},
                                                        {ProcessPriorityHigh, "High"},
                                                        {ProcessPriorityInherit, "Inherit"}};
constexpr xoEnumEntry<xoProcess::State> kStates[] = {
    {xoProcess::StateNone, "None"}, {xoProcess::StateRunning, "Running"}, {xoProcess::StateFinished, "Finished"}};

}  // namespace

xoEnumList<ProcessPriority> xoEnumEntries(ProcessPriority) { return kPriorities; }

xoEnumList<xoProcess::State> xoEnumEntries(xoProcess::State) { return kStates; }

}  // namespace xo
