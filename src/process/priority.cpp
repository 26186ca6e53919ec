// Priority classes of processes: https://learn.microsoft.com/windows/win32/procthread/scheduling-priorities
#include "process/launch.h"

namespace xo {
namespace process {
namespace {

// In the order of ProcessPriority; ProcessPriorityInherit follows them.
constexpr DWORD kClasses[] = {IDLE_PRIORITY_CLASS, NORMAL_PRIORITY_CLASS, HIGH_PRIORITY_CLASS};

}  // namespace

// ProcessPriorityInherit passes the class of this process explicitly. By default Windows gives the child of a process
// above normal the normal class.
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
