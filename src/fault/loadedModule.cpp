#include "fault/loadedModule.h"

#include <algorithm>
#include <cstddef>

#include "platform/modulePath.h"
#include "platform/wideText.h"

namespace xo::fault {
namespace {

// What the debug directory says about a program database.
struct DatabaseRecord {
    DWORD signature;
    GUID guid;
    DWORD age;
    char name[1];
};

template <class T>
const T* at(HMODULE module, DWORD offset) {
    return reinterpret_cast<const T*>(reinterpret_cast<const std::byte*>(module) + offset);
}

bool isInSystemFolder(const std::wstring& file) {
    const std::wstring folder =
        platform::readWide([](wchar_t* buffer, UINT size) { return ::GetSystemDirectoryW(buffer, size); }) + L'\\';
    return ::CompareStringOrdinal(file.c_str(), static_cast<int>((std::min)(file.size(), folder.size())),
                                  folder.c_str(), static_cast<int>(folder.size()), /*bIgnoreCase=*/TRUE) == CSTR_EQUAL;
}

// GCC's runtime carries 20 MB of a debug format that DbgHelp does not know.
bool isOfRuntime(HMODULE module) {
    return module == ::GetModuleHandleW(L"libstdc++-6.dll") || module == ::GetModuleHandleW(L"libgcc_s_seh-1.dll");
}

// lld writes such a record as a mere build identifier. Wine's DbgHelp takes every file on the search path for the
// nameless database, and frees memory that is not its own.
bool hasNamelessDatabase(HMODULE module) {
    constexpr DWORD kSignature = 0x53445352;  // "RSDS"
    const IMAGE_DATA_DIRECTORY& directory =
        moduleHeaders(module).OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_DEBUG];
    const auto* const entries = at<IMAGE_DEBUG_DIRECTORY>(module, directory.VirtualAddress);
    return std::any_of(entries, entries + directory.Size / sizeof *entries,
                       [module](const IMAGE_DEBUG_DIRECTORY& entry) {
                           if (entry.Type != IMAGE_DEBUG_TYPE_CODEVIEW || entry.AddressOfRawData == 0) return false;
                           const auto& record = *at<DatabaseRecord>(module, entry.AddressOfRawData);
                           return record.signature == kSignature && record.name[0] == '\0';
                       });
}

}  // namespace

HMODULE moduleAt(std::uint64_t address) {
    if (address == 0) return nullptr;  // it would stand for the program
    HMODULE module = nullptr;
    constexpr DWORD kFlags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    return ::GetModuleHandleExW(kFlags, reinterpret_cast<const wchar_t*>(address), &module) ? module : nullptr;
}

std::wstring moduleFile(HMODULE module) { return module ? platform::modulePath(module) : std::wstring(); }

const IMAGE_NT_HEADERS& moduleHeaders(HMODULE module) {
    const auto* const dos = at<IMAGE_DOS_HEADER>(module, 0);
    return *at<IMAGE_NT_HEADERS>(module, static_cast<DWORD>(dos->e_lfanew));
}

bool hasOnlyExports(HMODULE module, const std::wstring& file) {
    return isInSystemFolder(file) || isOfRuntime(module) || hasNamelessDatabase(module);
}

}  // namespace xo::fault
