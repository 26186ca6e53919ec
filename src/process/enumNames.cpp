// The names of the enumerators of processes, for xoEnumHelper.
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
constexpr xoEnumEntry<xoProcess::ProcessTree> kTrees[] = {{xoProcess::ProcessTreeLoose, "Loose"},
                                                          {xoProcess::ProcessTreeOwned, "Owned"},
                                                          {xoProcess::ProcessTreeTied, "Tied"}};
constexpr xoEnumEntry<xoProcess::RunResult::Outcome> kOutcomes[] = {{xoProcess::RunResult::NotStarted, "NotStarted"},
                                                                    {xoProcess::RunResult::Finished, "Finished"},
                                                                    {xoProcess::RunResult::TimedOut, "TimedOut"},
                                                                    {xoProcess::RunResult::Crashed, "Crashed"}};

}  // namespace

xoEnumList<ProcessPriority> xoEnumEntries(ProcessPriority) { return kPriorities; }

xoEnumList<xoProcess::State> xoEnumEntries(xoProcess::State) { return kStates; }

xoEnumList<xoProcess::ProcessTree> xoEnumEntries(xoProcess::ProcessTree) { return kTrees; }

xoEnumList<xoProcess::RunResult::Outcome> xoEnumEntries(xoProcess::RunResult::Outcome) { return kOutcomes; }

}  // namespace xo
