// Determines the facts of a processor, from the instruction CPUID and from the system's records.
#ifndef XO_SYSINFO_PROCESSORFACTS_H
#define XO_SYSINFO_PROCESSORFACTS_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "xoSystem/xoCpuInfo.h"

namespace xo::sysinfo {

// The registers EAX to EDX as CPUID leaves them.
struct Leaf {
    std::uint32_t a = 0, b = 0, c = 0, d = 0;
};

// Where the facts come from; a test gives another processor's answers. `savedRegisters` returns XCR0, the register sets
// that the system saves for a thread. It is called only if CPUID says that XCR0 exists.
struct ProcessorSource {
    std::function<Leaf(std::uint32_t leaf, std::uint32_t subLeaf)> leaf;
    std::function<std::uint64_t()> savedRegisters;
};
ProcessorSource thisProcessor();

// A friend of CPUInfo that fills its members. Each function fills a part and leaves the others alone.
struct ProcessorFacts {
    static CPUInfo nothing() { return CPUInfo(); }
    static void identify(const ProcessorSource& source, CPUInfo& facts);
    // Adds up the records that GetLogicalProcessorInformationEx returns; the facts must not have counts yet. Unknown
    // records are skipped, and reading ends at one that is cut short.
    static void readTopology(std::string_view records, CPUInfo& facts);
    static CPUInfo readThisMachine();
};

// The records of this machine; empty when the call fails.
std::string topologyRecords();

}  // namespace xo::sysinfo

#endif
