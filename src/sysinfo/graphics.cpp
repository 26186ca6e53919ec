// The graphics adapters by DXGI, which is loaded at run time: programs that never ask do not load it.
#include "sysinfo/graphics.h"

#include <cwchar>
#include <set>

#include "platform/registryKey.h"
#include "platform/wideText.h"
#include "sysinfo/comService.h"

#include <dxgi.h>

namespace xo::sysinfo {
namespace {

// Four numbers of 16 bits, the first one in the highest bits.
std::string versionText(LARGE_INTEGER version) {
    std::string text;
    for (int shift = 48; shift >= 0; shift -= 16) {
        if (!text.empty()) text += '.';
        text += std::to_string(static_cast<std::uint64_t>(version.QuadPart) >> shift & 0xFFFF);
    }
    return text;
}

// Whether a hardware identifier such as "PCI\VEN_10DE&DEV_2684&SUBSYS_..." is of the adapter. Upper and lower case are
// equal. What follows the device differs between makers of boards and is not compared.
bool isOfDevice(const std::wstring& identifier, const DirectXDeviceInfo& adapter) {
    wchar_t wanted[32];
    const int length = std::swprintf(wanted, 32, L"PCI\\VEN_%04X&DEV_%04X", adapter.vendorId, adapter.deviceId);
    return length > 0 && ::_wcsnicmp(identifier.c_str(), wanted, static_cast<std::size_t>(length)) == 0;
}

// CheckInterfaceSupport fails for a driver that supports only Direct3D 12. The key of the class of display adapters has
// a sub-key for each driver, also for adapters that were removed. When two versions are found for one device, it is
// unknown which one is used, and the result is empty.
// https://learn.microsoft.com/windows-hardware/drivers/install/system-defined-device-setup-classes-available-to-vendors
std::string driverInRegistry(const DirectXDeviceInfo& adapter) {
    const platform::RegistryKey displayClass(
        HKEY_LOCAL_MACHINE, LR"(SYSTEM\CurrentControlSet\Control\Class\{4d36e968-e325-11ce-bfc1-08002be10318})");
    std::set<std::wstring> versions;
    std::wstring name;
    for (DWORD i = 0; !(name = displayClass.subKey(i)).empty(); ++i) {
        const platform::RegistryKey driver(displayClass.get(), name.c_str());
        const std::wstring version = driver.text(L"DriverVersion");
        if (!version.empty() && isOfDevice(driver.text(L"MatchingDeviceId"), adapter)) versions.insert(version);
    }
    return versions.size() == 1 ? platform::toUtf8(*versions.begin()) : std::string();
}

// All values stay empty when the adapter does not describe itself.
DirectXDeviceInfo describe(IDXGIAdapter1& adapter) {
    DirectXDeviceInfo info;
    DXGI_ADAPTER_DESC1 description{};
    if (FAILED(adapter.GetDesc1(&description))) return info;
    // A description that fills its array of 128 characters may lack the NUL.
    info.name = platform::toUtf8({description.Description, ::wcsnlen(description.Description, 128)});
    info.vendorId = description.VendorId;
    info.deviceId = description.DeviceId;
    info.subSystemId = description.SubSysId;
    info.revision = description.Revision;
    info.dedicatedVideoBytes = description.DedicatedVideoMemory;
    info.dedicatedSystemBytes = description.DedicatedSystemMemory;
    info.sharedSystemBytes = description.SharedSystemMemory;
    info.luid = std::uint64_t{static_cast<std::uint32_t>(description.AdapterLuid.HighPart)} << 32 |
                description.AdapterLuid.LowPart;
    // The Microsoft Basic Render Driver, which renders on the processor, does not set the flag on every system.
    const bool isBasicRender = info.vendorId == 0x1414 && info.deviceId == 0x8C;
    info.isSoftware = isBasicRender || (description.Flags & DXGI_ADAPTER_FLAG_SOFTWARE) != 0;
    info.isRemote = (description.Flags & DXGI_ADAPTER_FLAG_REMOTE) != 0;
    LARGE_INTEGER version{};
    const bool hasVersion = SUCCEEDED(adapter.CheckInterfaceSupport(__uuidof(IDXGIDevice), &version));
    info.driverVersion = hasVersion ? versionText(version) : driverInRegistry(info);
    return info;
}

// The names of the displays, such as "\\.\DISPLAY1". EnumOutputs fails behind the last one.
std::vector<std::string> outputsOf(IDXGIAdapter1& adapter) {
    std::vector<std::string> names;
    for (UINT i = 0;; ++i) {
        ComObject<IDXGIOutput> output;
        if (FAILED(adapter.EnumOutputs(i, output.put())) || !output) return names;
        DXGI_OUTPUT_DESC description{};
        if (SUCCEEDED(output.get()->GetDesc(&description)))
            names.push_back(platform::toUtf8({description.DeviceName, ::wcsnlen(description.DeviceName, 32)}));
    }
}

}  // namespace

// From the folder of the system alone: a library of that name beside the program would be loaded otherwise.
std::optional<std::vector<DirectXDeviceInfo>> readAdapters() {
    // Declared first, so that the library is unloaded after all of its objects are released.
    const platform::LibraryHandle library(::LoadLibraryExW(L"dxgi.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
    using Create = HRESULT WINAPI(REFIID, void**);
    auto* const create = platform::findFunction<Create>(library.get(), "CreateDXGIFactory1");
    ComObject<IDXGIFactory1> factory;
    if (!create || FAILED(create(__uuidof(IDXGIFactory1), reinterpret_cast<void**>(factory.put()))))
        return std::nullopt;
    std::vector<DirectXDeviceInfo> adapters;
    for (UINT i = 0;; ++i) {
        ComObject<IDXGIAdapter1> adapter;
        if (FAILED(factory.get()->EnumAdapters1(i, adapter.put())) || !adapter) return adapters;
        adapters.push_back(describe(*adapter.get()));
        adapters.back().outputs = outputsOf(*adapter.get());
    }
}

Lane& graphicsLane() {
    static Lane lane(L"xoSystem graphics");
    return lane;
}

}  // namespace xo::sysinfo

namespace xo {

bool DirectXDeviceInfo::GetAdapters(std::vector<DirectXDeviceInfo>& adapters, unsigned timeoutMs) {
    adapters.clear();
    // Shared with the thread, which may write after this function has returned.
    const auto found = std::make_shared<std::optional<std::vector<DirectXDeviceInfo>>>();
    const sysinfo::Deadline deadline(timeoutMs);
    sysinfo::Errand errand(sysinfo::graphicsLane(), deadline, [found] { *found = sysinfo::readAdapters(); });
    if (!errand.wait(deadline)) return false;
    std::optional<std::vector<DirectXDeviceInfo>>& answer = *found;
    if (!answer) return false;
    adapters = std::move(*answer);
    return true;
}

}  // namespace xo
