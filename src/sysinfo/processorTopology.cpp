// Counts, caches and kinds of cores, from the system's records. CPUID is not used here: it reports how many cores a
// processor of this kind can have, not how many exist and are switched on.
#include <algorithm>
#include <bitset>
#include <tuple>

#include "platform/windows.h"
#include "sysinfo/processorFacts.h"
#include "sysinfo/recordBytes.h"

namespace xo::sysinfo {
namespace {

// The values of LOGICAL_PROCESSOR_RELATIONSHIP that are read. Offsets below are those of the record, whose head has the
// relationship and the size, 4 bytes each:
// https://learn.microsoft.com/windows/win32/api/winnt/ns-winnt-system_logical_processor_information_ex
enum Relation : std::uint32_t { Core = 0, CacheOfCores = 2, Package = 3, Group = 4 };

// The number of hardware threads in the affinity masks of a record. Older systems have no count of masks in the record
// of a cache: the field reads as 0, and there is one mask.
unsigned countThreads(const RecordBytes& record, std::size_t countAt, std::size_t masksAt) {
    // A GROUP_AFFINITY: 64 bits of the mask, then the number of the group.
    constexpr std::size_t kMaskBytes = 16;
    const unsigned masks = (std::max)(unsigned{record.number<std::uint16_t>(countAt)}, 1u);
    unsigned threads = 0;
    for (unsigned i = 0; i < masks && masksAt + (i + 1) * kMaskBytes <= record.size(); ++i)
        threads +=
            static_cast<unsigned>(std::bitset<64>(record.number<std::uint64_t>(masksAt + i * kMaskBytes)).count());
    return threads;
}

// Adds one core to its class. The classes stay sorted by rising efficiency class.
void addCore(const RecordBytes& record, std::vector<CPUInfo::CoreClass>& classes) {
    // PROCESSOR_RELATIONSHIP behind the head of 8 bytes: the class at 9, the count of masks at 30, the masks from 32
    // on.
    const unsigned efficiencyClass = record.byte(9);
    auto place = std::find_if(classes.begin(), classes.end(),
                              [&](const auto& each) { return each.efficiencyClass >= efficiencyClass; });
    if (place == classes.end() || place->efficiencyClass != efficiencyClass)
        place = classes.insert(place, CPUInfo::CoreClass{efficiencyClass, 0, 0});
    ++place->cores;
    place->threads += countThreads(record, 30, 32);
}

// Counts one cache. Caches with equal properties share an entry; the entries stay sorted by level, kind and falling
// size, which is why the size is inverted.
void addCache(const RecordBytes& record, std::vector<CPUInfo::Cache>& caches) {
    constexpr unsigned kFullyAssociative = 0xFF;
    // CACHE_RELATIONSHIP: level 8, ways 9, bytes of a line 10, bytes 12, kind 16, count of masks 38, masks from 40 on.
    CPUInfo::Cache cache;
    const auto kind = record.number<std::uint32_t>(16);
    if (kind > CPUInfo::Cache::Data) return;  // a trace cache, or something newer
    cache.level = record.byte(8);
    cache.kind = static_cast<CPUInfo::Cache::Kind>(kind);
    cache.bytes = record.number<std::uint32_t>(12);
    cache.lineBytes = record.number<std::uint16_t>(10);
    cache.ways = record.byte(9) == kFullyAssociative ? 0 : record.byte(9);
    cache.threadsEach = countThreads(record, 38, 40);
    const auto properties = [](const CPUInfo::Cache& each) {
        return std::tuple(each.level, static_cast<int>(each.kind), ~each.bytes, each.lineBytes, each.ways,
                          each.threadsEach);
    };
    const auto isBefore = [&](const auto& a, const auto& b) { return properties(a) < properties(b); };
    auto place = std::lower_bound(caches.begin(), caches.end(), cache, isBefore);
    if (place == caches.end() || properties(*place) != properties(cache)) place = caches.insert(place, cache);
    ++place->count;
}

}  // namespace

void ProcessorFacts::readTopology(std::string_view records, CPUInfo& facts) {
    constexpr std::size_t kHead = 8;
    while (records.size() >= kHead) {
        const RecordBytes head(records);
        const auto size = head.number<std::uint32_t>(4);
        // With a size of 0 the loop would not end.
        if (size < kHead || size > records.size()) break;
        const RecordBytes record(records.substr(0, size));
        switch (head.number<std::uint32_t>(0)) {
            case Core: addCore(record, facts.mCoreClasses); break;
            case CacheOfCores: addCache(record, facts.mCaches); break;
            case Package: ++facts.mPackages; break;
            case Group: facts.mGroups += record.number<std::uint16_t>(10); break;  // ActiveGroupCount
            default: break;
        }
        records.remove_prefix(size);
    }
    for (const CPUInfo::CoreClass& each : facts.mCoreClasses) {
        facts.mCores += each.cores;
        facts.mThreads += each.threads;
    }
}

// Asks for the size and then for the records, again if the size has grown: processors may be added between the calls.
std::string topologyRecords() {
    std::string records;
    for (DWORD size = 0;;) {
        auto* const buffer = reinterpret_cast<SYSTEM_LOGICAL_PROCESSOR_INFORMATION_EX*>(records.data());
        const bool isDone = ::GetLogicalProcessorInformationEx(RelationAll, buffer, &size) != 0;
        const DWORD error = ::GetLastError();
        if (!isDone && (error != ERROR_INSUFFICIENT_BUFFER || size <= records.size())) return {};
        records.resize(size);
        if (isDone) return records;
    }
}

}  // namespace xo::sysinfo
