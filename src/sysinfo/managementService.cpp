// Asks Windows Management Instrumentation for the partition of a drive and then for the disk of that partition.
// https://learn.microsoft.com/windows/win32/wmisdk/associators-of-statement
#include <cstdint>

#include "sysinfo/comService.h"
#include "sysinfo/mainDisk.h"

namespace xo::sysinfo {
namespace {

// For each of the two queries. The caller waits 10 seconds for the whole (mainDisk.cpp) and abandons the thread then.
constexpr long kNextLimitMs = 5'000;

// Empty when the value is not a text.
std::wstring textIn(const VARIANT& value) {
    return value.vt == VT_BSTR && value.bstrVal != nullptr ? value.bstrVal : std::wstring();
}

// The service passes an unsigned 32-bit property, such as Index, as VT_I4.
// -1 when the value is not a number.
std::int64_t numberIn(const VARIANT& value) {
    return value.vt == VT_I4 || value.vt == VT_UI4 ? std::int64_t{value.lVal} : -1;
}

// A property of the first object that a query finds; the value stays empty when there is none.
// The flags make the query return before its result is complete; Next then waits, for a limited time.
void askFirst(const Com& com, IWbemServices& services, const std::wstring& query, const wchar_t* property,
              OwnedVariant& value) {
    ComObject<IEnumWbemClassObject> answers;
    if (FAILED(services.ExecQuery(Bstr(com, L"WQL").get(), Bstr(com, query).get(),
                                  WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, answers.put())))
        return;
    ComObject<IWbemClassObject> object;
    ULONG count = 0;
    if (answers.get()->Next(kNextLimitMs, 1, object.put(), &count) != WBEM_S_NO_ERROR || count == 0) return;
    object.get()->Get(property, 0, value.put(), nullptr, nullptr);
}

}  // namespace

std::string diskFromManagementService(const std::wstring& drive) {
    const Com com;
    if (!com.isReady()) return {};
    const ComObject<IWbemServices> services = connectManagement(com, L"ROOT\\CIMV2");
    if (!services) return {};

    // Nothing needs to be escaped: the drive is a letter and a colon, the partition is named like "Disk #0, Partition
    // #1". Of several partitions the first one counts.
    OwnedVariant partition(com);
    askFirst(com, *services.get(),
             L"ASSOCIATORS OF {Win32_LogicalDisk.DeviceID='" + drive + L"'} WHERE ResultClass=Win32_DiskPartition",
             L"DeviceID", partition);
    const std::wstring partitionName = textIn(partition.get());
    if (partitionName.empty()) return {};
    OwnedVariant disk(com);
    askFirst(
        com, *services.get(),
        L"ASSOCIATORS OF {Win32_DiskPartition.DeviceID='" + partitionName + L"'} WHERE ResultClass=Win32_DiskDrive",
        L"Index", disk);
    const std::int64_t number = numberIn(disk.get());
    return number < 0 ? std::string() : R"(\\.\PHYSICALDRIVE)" + std::to_string(number);
}

}  // namespace xo::sysinfo
