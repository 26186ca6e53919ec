// What is known of a processor, from its own instruction and from the system's records.
#ifndef XO_SYSINFO_PROCESSORFACTS_H
#define XO_SYSINFO_PROCESSORFACTS_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "xoSystem/xoCpuInfo.h"

namespace xo::sysinfo {

// The four registers after the instruction.
struct Leaf {
    std::uint32_t a = 0, b = 0, c = 0, d = 0;
};

// The instruction CPUID, and what the system saves of a thread's registers (XCR0), asked for only where there is that.
struct ProcessorSource {
    std::function<Leaf(std::uint32_t leaf, std::uint32_t subLeaf)> leaf;
    std::function<std::uint64_t()> savedRegisters;
};
ProcessorSource thisProcessor();

// Fills parts of the facts.
struct ProcessorFacts {
    static CPUInfo nothing() { return CPUInfo(); }
    static void identify(const ProcessorSource& source, CPUInfo& facts);
    // The records that GetLogicalProcessorInformationEx gives. What is cut short or unknown is passed over.
    static void readTopology(std::string_view records, CPUInfo& facts);
    static CPUInfo readThisMachine();
};

// As the system gives them; empty where it does not.
std::string topologyRecords();

}  // namespace xo::sysinfo

#endif
