// The facts of this machine's processor, read at the first use.
#include "xoSystem/xoCpuInfo.h"

#include "platform/registryKey.h"
#include "sysinfo/processorFacts.h"
#include "xoSystem/xoEnumHelper.h"

namespace xo {

CPUInfo sysinfo::ProcessorFacts::readThisMachine() {
    CPUInfo facts;
    identify(thisProcessor(), facts);
    readTopology(topologyRecords(), facts);
    // The system stores the frequency there when it starts.
    const platform::RegistryKey key(HKEY_LOCAL_MACHINE, LR"(HARDWARE\DESCRIPTION\System\CentralProcessor\0)");
    facts.mNominalMHz = key.number(L"~MHz").value_or(0);
    return facts;
}

const CPUInfo& CPUInfo::Get() {
    // A static of a function: several threads may call it first, and one of them reads.
    static const CPUInfo facts = sysinfo::ProcessorFacts::readThisMachine();
    return facts;
}

const char* CPUInfo::FeatureToString(Feature feature) {
    const auto entries = xoEnumEntries(feature);
    // A negative number becomes one beyond the table.
    const auto index = static_cast<std::size_t>(feature);
    return index < entries.size() ? entries[index].name.data() : "Unknown";
}

std::vector<std::string> CPUInfo::getFeatureNames() const {
    std::vector<std::string> names;
    for (const auto& entry : xoEnumEntries(Feature{}))
        if (hasFeature(entry.value)) names.emplace_back(entry.name);
    return names;
}

}  // namespace xo
