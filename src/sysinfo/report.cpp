// Composes the report, and reads the version of the system and the state of its memory.
#include <algorithm>
#include <functional>
#include <memory>
#include <string_view>

#include "platform/moduleFunction.h"
#include "platform/registryKey.h"
#include "sysinfo/errand.h"
#include "sysinfo/graphics.h"
#include "sysinfo/reportParts.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoStringUtils.h"

#include <psapi.h>

namespace xo {
namespace {

using Map = xoVariant::xoVariantMapImpl;
using sysinfo::Deadline;
using sysinfo::Errand;
using sysinfo::Lane;
using sysinfo::Section;

Lane volumeLane(L"xoSystem volumes");
Lane diskLane(L"xoSystem disks");

// A section that an errand makes. The map is shared with its thread, which may still write after the report is
// returned.
struct SlowPart {
    const char* name;
    std::shared_ptr<Map> map = std::make_shared<Map>();
    std::unique_ptr<Errand> errand = nullptr;

    // The function must own all that it uses.
    void begin(Lane& lane, const Deadline& deadline, std::function<Map()> make) {
        errand = std::make_unique<Errand>(lane, deadline, [map = map, make = std::move(make)] { *map = make(); });
    }
};

// Waits for the parts and moves them into the report. One deadline limits all waits together. The map of a late part is
// not read, because its thread may be writing it.
void collect(std::vector<SlowPart>& parts, const Deadline& deadline, Map& report) {
    std::string incomplete;
    for (SlowPart& part : parts) {
        if (part.errand->wait(deadline)) {
            if (!part.map->empty()) report[part.name] = std::move(*part.map);
            continue;
        }
        incomplete += (incomplete.empty() ? "" : ",") + std::string(part.name);
        xoLogObject(xoLogDebug, "SystemInfo", xoLog::editPtr(), nullptr)
            << "the part " << part.name << " of the report was late or failed";
    }
    if (!incomplete.empty()) report["incomplete"] = incomplete;
}

// Adds no section when `make` sets nothing.
template <class Make>
void addSection(Map& report, const char* name, Make make) {
    Map map;
    make(Section(map));
    if (!map.empty()) report[name] = std::move(map);
}

}  // namespace

xoSystemUtils::OsVersion xoSystemUtils::GetOsVersion() {
    OsVersion version;
    // Not GetVersionEx: it reports the newest version that the program's manifest names.
    // https://learn.microsoft.com/windows-hardware/drivers/ddi/wdm/nf-wdm-rtlgetversion
    using RtlGetVersion = LONG WINAPI(OSVERSIONINFOEXW*);
    OSVERSIONINFOEXW info{};
    info.dwOSVersionInfoSize = sizeof info;
    auto* const get = platform::findFunction<RtlGetVersion>(::GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion");
    if (get && get(&info) == 0) {
        version.major = info.dwMajorVersion;
        version.minor = info.dwMinorVersion;
        version.build = info.dwBuildNumber;
        version.isServer = info.wProductType != VER_NT_WORKSTATION;
    }
    // RtlGetVersion does not return the revision ("update build revision").
    const platform::RegistryKey key(HKEY_LOCAL_MACHINE, LR"(SOFTWARE\Microsoft\Windows NT\CurrentVersion)");
    version.revision = key.number(L"UBR").value_or(0);
    version.wineVersion = sysinfo::wineVersion();
    return version;
}

xoSystemUtils::MemoryStatus xoSystemUtils::GetMemoryStatus() {
    MemoryStatus status;
    MEMORYSTATUSEX memory{};
    memory.dwLength = sizeof memory;
    if (::GlobalMemoryStatusEx(&memory)) {
        status.physicalBytes = memory.ullTotalPhys;
        status.availableBytes = memory.ullAvailPhys;
    }
    // The page file fields of MEMORYSTATUSEX are limited to what this process may commit; these are the machine's.
    PERFORMANCE_INFORMATION performance{};
    if (::K32GetPerformanceInfo(&performance, sizeof performance)) {
        status.commitLimitBytes = std::uint64_t{performance.CommitLimit} * performance.PageSize;
        status.commitUsedBytes = std::uint64_t{performance.CommitTotal} * performance.PageSize;
    }
    // What the firmware reports, which includes memory that the system cannot use. It fails where the firmware has no
    // such tables.
    ULONGLONG kilobytes = 0;
    if (::GetPhysicallyInstalledSystemMemory(&kilobytes)) status.installedBytes = kilobytes * 1024;
    return status;
}

Map xoSystemUtils::GetReport(int parts, unsigned timeoutMs) {
    // Made first, so that the time of the quick parts counts too.
    const Deadline deadline(timeoutMs);
    const bool withIdentity = (parts & ReportIdentity) != 0;
    Map report;
    std::vector<SlowPart> slow;
    // Before the graphics, which use windows too: of two threads that call user32.dll for the first time, Wine 8 stops
    // both for ever if one of them is loading a library.
    if ((parts & ReportDisplays) != 0) addSection(report, "display", sysinfo::reportDisplays);
    // The slow parts begin before the other quick ones, and work while those are read here.
    if ((parts & ReportGraphics) != 0) {
        slow.push_back({"graphics"});
        slow.back().begin(sysinfo::graphicsLane(), deadline, &sysinfo::reportGraphics);
    }
    if ((parts & ReportVolumes) != 0) {
        slow.push_back({"volume"});
        slow.back().begin(volumeLane, deadline, [=] { return sysinfo::reportVolumes(withIdentity); });
    }
    if ((parts & ReportDisks) != 0) {
        slow.push_back({"disk"});
        slow.back().begin(diskLane, deadline, [=] { return sysinfo::reportDisks(withIdentity); });
    }
    if ((parts & ReportCpu) != 0) addSection(report, "cpu", sysinfo::reportCpu);
    if ((parts & ReportOs) != 0) addSection(report, "os", [=](Section os) { sysinfo::reportOs(os, withIdentity); });
    if ((parts & ReportMemory) != 0) addSection(report, "memory", sysinfo::reportMemory);
    if ((parts & ReportMachine) != 0)
        addSection(report, "machine", [=](Section machine) { sysinfo::reportMachine(machine, withIdentity); });
    collect(slow, deadline, report);
    return report;
}

std::string xoSystemUtils::ReportToText(const Map& report) {
    Map leaves;
    report.toFlattenMap(leaves, '/');
    std::size_t widest = 0;
    // The keys of a report are ASCII, so bytes are columns.
    for (const auto& [key, value] : leaves) widest = (std::max)(widest, key.size());
    std::string text;
    for (const auto& [key, value] : leaves) {
        std::string shown = value.toString();
        text.append(key).append(widest + 3 - key.size(), ' ').append(xoStringUtils::MakePrintable(shown)) += '\n';
    }
    return text;
}

}  // namespace xo
