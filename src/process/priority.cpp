#include "process/launch.h"

namespace xo {
namespace process {
namespace {

constexpr DWORD kClasses[] = {IDLE_PRIORITY_CLASS, NORMAL_PRIORITY_CLASS, HIGH_PRIORITY_CLASS};

}  // namespace

DWORD priorityClass(ProcessPriority priority) {
    const auto index = static_cast<unsigned>(priority);
    return index < std::size(kClasses) ? kClasses[index] : ::GetPriorityClass(::GetCurrentProcess());
}

}  // namespace process

std::string ProcessPriorityToString(ProcessPriority priority) {
    switch (priority) {
        case ProcessPriorityLow: return "Low";
        case ProcessPriorityNormal: return "Normal";
        case ProcessPriorityHigh: return "High";
        case ProcessPriorityInherit: return "Inherit";
    }
    return "Unknown";
}

}  // namespace xo
