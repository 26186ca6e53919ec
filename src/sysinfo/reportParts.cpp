// The parts of the report that ask no driver and therefore return at once.
#include "sysinfo/reportParts.h"

#include "platform/moduleFunction.h"
#include "platform/registryKey.h"
#include "platform/wideText.h"
#include "sysinfo/firmware.h"
#include "sysinfo/osName.h"
#include "xoSystem/xoCpuInfo.h"
#include "xoSystem/xoEnumHelper.h"

namespace xo::sysinfo {
namespace {

constexpr wchar_t kCurrentVersion[] = LR"(SOFTWARE\Microsoft\Windows NT\CurrentVersion)";

// Null when the loaded module lacks the function, as older systems do.
template <class Function>
Function* findIn(const wchar_t* module, const char* name) {
    return platform::findFunction<Function>(::GetModuleHandleW(module), name);
}

// That of the machine, not of the program. Empty for one that is neither x64 nor arm64.
std::string architecture() {
    USHORT process = 0, machine = 0;
    using IsWow64 = BOOL WINAPI(HANDLE, USHORT*, USHORT*);  // Windows 10 1511 has it
    static auto* const isWow64 = findIn<IsWow64>(L"kernel32.dll", "IsWow64Process2");
    if (!isWow64 || !isWow64(::GetCurrentProcess(), &process, &machine)) {
        // Only the second choice: on an ARM64 machine it describes the emulated processor to an x64 program.
        // https://learn.microsoft.com/windows/win32/api/sysinfoapi/nf-sysinfoapi-getnativesysteminfo
        SYSTEM_INFO info{};
        ::GetNativeSystemInfo(&info);
        machine = info.wProcessorArchitecture == PROCESSOR_ARCHITECTURE_AMD64 ? IMAGE_FILE_MACHINE_AMD64 : 0;
    }
    // IMAGE_FILE_MACHINE_ARM64.
    constexpr USHORT kArm64 = 0xAA64;
    return machine == IMAGE_FILE_MACHINE_AMD64 ? "x64" : machine == kArm64 ? "arm64" : "";
}

// The language of the user interface, not that of the formats of numbers and dates.
std::string userLanguage() {
    wchar_t name[LOCALE_NAME_MAX_LENGTH];
    const LCID language = MAKELCID(::GetUserDefaultUILanguage(), SORT_DEFAULT);
    const int length = ::LCIDToLocaleName(language, name, LOCALE_NAME_MAX_LENGTH, /*dwFlags=*/0);
    // The length includes the NUL, and is 0 on failure.
    return length > 1 ? platform::toUtf8({name, static_cast<std::size_t>(length - 1)}) : std::string();
}

// 512 characters suffice for both callers: user names have at most 256 (UNLEN), DNS host names at most 63.
template <class Read>
std::string readName(Read read) {
    wchar_t name[512];
    DWORD size = 512;
    return read(name, &size) ? platform::toUtf8(name) : std::string();
}

// The report has its own spelling, which must stay as it is: the names of xoEnumEntries begin with capitals.
std::string lowerKind(CPUInfo::Cache::Kind kind) {
    switch (kind) {
        case CPUInfo::Cache::Instruction: return "instruction";
        case CPUInfo::Cache::Data: return "data";
        default: return "unified";
    }
}

void reportCaches(const Section& section) {
    std::size_t number = 0;
    for (const CPUInfo::Cache& cache : CPUInfo::Get().getCaches()) {
        Section one = section.below("cache").below(number++);
        one.setNumber("level", cache.level);
        one.set("kind", lowerKind(cache.kind));
        one.setNumber("bytes", cache.bytes);
        one.setNumber("lineBytes", cache.lineBytes);
        one.setNumber("ways", cache.ways);
        one.setNumber("count", cache.count);
        one.setNumber("threadsEach", cache.threadsEach);
    }
}

}  // namespace

std::string wineVersion() {
    using GetVersion = const char*();
    static auto* const getVersion = findIn<GetVersion>(L"ntdll.dll", "wine_get_version");
    return getVersion ? getVersion() : "";
}

void reportCpu(Section section) {
    const CPUInfo& cpu = CPUInfo::Get();
    std::string features;
    for (const std::string& name : cpu.getFeatureNames()) features += (features.empty() ? "" : " ") + name;
    section.set("vendor", cpu.getVendor());
    section.set("brand", cpu.getBrand());
    section.setNumber("family", cpu.getFamily());
    // 0 is a valid model, stepping and efficiency class, but no valid family or count.
    section.setAnyNumber("model", cpu.getModel());
    section.setAnyNumber("stepping", cpu.getStepping());
    section.setNumber("packages", cpu.getPackageCount());
    section.setNumber("cores", cpu.getCoreCount());
    section.setNumber("threads", cpu.getThreadCount());
    section.setNumber("groups", cpu.getGroupCount());
    section.setNumber("nominalMHz", cpu.getNominalMHz());
    section.set("hypervisor", cpu.getHypervisor());
    section.set("features", features);
    reportCaches(section);
    std::size_t number = 0;
    for (const CPUInfo::CoreClass& coreClass : cpu.getCoreClasses()) {
        Section one = section.below("class").below(number++);
        one.setAnyNumber("efficiencyClass", coreClass.efficiencyClass);
        one.setNumber("cores", coreClass.cores);
        one.setNumber("threads", coreClass.threads);
    }
}

void reportOs(Section section, bool withIdentity) {
    const platform::RegistryKey key(HKEY_LOCAL_MACHINE, kCurrentVersion);
    const auto text = [&](const wchar_t* name) { return platform::toUtf8(key.text(name)); };
    const xoSystemUtils::OsVersion version = xoSystemUtils::GetOsVersion();
    section.set("name", osName(text(L"ProductName"), version.build, version.isServer));
    section.set("version", std::to_string(version.major) + "." + std::to_string(version.minor) + "." +
                               std::to_string(version.build) + "." + std::to_string(version.revision));
    section.setNumber("build", version.build);
    section.setAnyNumber("revision", version.revision);
    // Systems from Windows 10 20H2 on have DisplayVersion ("22H2"); their ReleaseId stays "2009".
    const std::string release = text(L"DisplayVersion");
    section.set("release", release.empty() ? text(L"ReleaseId") : release);
    section.set("edition", text(L"EditionID"));
    section.setFlag("server", version.isServer);
    section.set("architecture", architecture());
    section.set("language", userLanguage());
    section.set("wine", version.wineVersion);
    if (!withIdentity) return;
    section.set("computerName", readName([](wchar_t* name, DWORD* size) {
                    return ::GetComputerNameExW(ComputerNameDnsHostname, name, size);
                }));
    section.set("userName", readName([](wchar_t* name, DWORD* size) { return ::GetUserNameW(name, size); }));
}

void reportMemory(Section section) {
    const xoSystemUtils::MemoryStatus memory = xoSystemUtils::GetMemoryStatus();
    section.setNumber("physicalBytes", memory.physicalBytes);
    section.setNumber("availableBytes", memory.availableBytes);
    section.setNumber("installedBytes", memory.installedBytes);
    section.setNumber("commitLimitBytes", memory.commitLimitBytes);
    section.setNumber("commitUsedBytes", memory.commitUsedBytes);
}

void reportMachine(Section section, bool withIdentity) {
    const Machine machine = readMachine(firmwareTables());
    section.set("manufacturer", machine.manufacturer);
    section.set("product", machine.product);
    section.set("board", machine.board);
    section.set("biosVendor", machine.biosVendor);
    section.set("biosVersion", machine.biosVersion);
    section.set("biosDate", machine.biosDate);
    if (withIdentity) section.set("serial", machine.serial);
    // Wine invents the memory modules.
    if (!wineVersion().empty()) return;
    std::size_t number = 0;
    for (const Machine::Module& module : machine.modules) {
        Section one = section.below("module").below(number++);
        one.setNumber("bytes", module.bytes);
        one.setNumber("mtPerSecond", module.mtPerSecond);
        one.set("kind", module.kind);
        one.set("slot", module.slot);
    }
}

// The current mode of each display is in physical pixels, whether or not the process is aware of the displays' scaling.
void reportDisplays(Section section) {
    std::size_t number = 0;
    DISPLAY_DEVICEW adapter{};
    adapter.cb = sizeof adapter;
    for (DWORD i = 0; ::EnumDisplayDevicesW(nullptr, i, &adapter, /*dwFlags=*/0); ++i) {
        DEVMODEW mode{};
        mode.dmSize = sizeof mode;
        const bool isUsed = (adapter.StateFlags & DISPLAY_DEVICE_ATTACHED_TO_DESKTOP) != 0;
        if (!isUsed || !::EnumDisplaySettingsExW(adapter.DeviceName, ENUM_CURRENT_SETTINGS, &mode, /*dwFlags=*/0))
            continue;
        DISPLAY_DEVICEW monitor{};
        monitor.cb = sizeof monitor;
        // The first monitor of the adapter's output; a cloned output may have more.
        const bool hasMonitor = ::EnumDisplayDevicesW(adapter.DeviceName, 0, &monitor, /*dwFlags=*/0) != 0;
        // 0 and 1 mean the default frequency of the hardware, which stays unknown.
        // https://learn.microsoft.com/windows/win32/api/wingdi/ns-wingdi-devmodew
        constexpr DWORD kDefaultFrequency = 1;
        Section one = section.below(number++);
        one.set("device", platform::toUtf8(adapter.DeviceName));
        one.set("monitor", hasMonitor ? platform::toUtf8(monitor.DeviceString) : std::string());
        one.set("adapter", platform::toUtf8(adapter.DeviceString));
        // On the virtual screen, where the primary display is at 0, 0 and others may have negative coordinates.
        one.setAnyNumber("x", mode.dmPosition.x);
        one.setAnyNumber("y", mode.dmPosition.y);
        one.setNumber("width", mode.dmPelsWidth);
        one.setNumber("height", mode.dmPelsHeight);
        if (mode.dmDisplayFrequency > kDefaultFrequency) one.setNumber("hertz", mode.dmDisplayFrequency);
        one.setNumber("bits", mode.dmBitsPerPel);
        one.setFlag("primary", (adapter.StateFlags & DISPLAY_DEVICE_PRIMARY_DEVICE) != 0);
    }
}

}  // namespace xo::sysinfo
