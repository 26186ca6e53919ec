// Describes modules by their headers in memory. Another thread may unload a module at any time, so they are read under
// callSilently.
#include "fault/loadedModule.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "fault/guardedCall.h"
#include "platform/modulePath.h"
#include "platform/ordinalText.h"
#include "platform/systemFolder.h"

namespace xo::fault {
namespace {

// The record of the debug directory that names a program database (.pdb). Its layout is not in the headers of Windows.
struct DatabaseRecord {
    DWORD signature;
    GUID guid;
    DWORD age;
    char name[1];
};

// The data at an offset from the start of the module, which must be mapped.
template <class T>
const T* at(HMODULE module, DWORD offset) {
    return reinterpret_cast<const T*>(reinterpret_cast<const std::byte*>(module) + offset);
}

// Modules of Windows: their program databases are usually not on the machine, and searching for them takes time.
bool isInSystemFolder(std::wstring_view file) {
    const std::wstring folder = platform::systemFolder() + L'\\';
    return platform::equalsIgnoringCase(file.substr(0, folder.size()), folder);
}

// GCC's runtime contains 20 MB of debug information in a format that DbgHelp does not know.
bool isOfRuntime(HMODULE module) {
    return module == ::GetModuleHandleW(L"libstdc++-6.dll") || module == ::GetModuleHandleW(L"libgcc_s_seh-1.dll");
}

// The argument and results of readImage.
struct Image {
    HMODULE module;
    DWORD size;
    bool hasNamelessDatabase;
};

// lld writes a record without a file name when it stores only a build identifier. For such a record Wine's DbgHelp
// takes any file on the search path, and frees memory that it does not own.
bool isNamelessDatabase(HMODULE module, const IMAGE_DEBUG_DIRECTORY& entry) {
    constexpr DWORD kSignature = 0x53445352;  // "RSDS"
    if (entry.Type != IMAGE_DEBUG_TYPE_CODEVIEW || entry.AddressOfRawData == 0) return false;
    const auto& record = *at<DatabaseRecord>(module, entry.AddressOfRawData);
    return record.signature == kSignature && record.name[0] == '\0';
}

void readImage(void* argument) {
    Image& image = *static_cast<Image*>(argument);
    const auto* const dos = at<IMAGE_DOS_HEADER>(image.module, 0);
    const auto& header = at<IMAGE_NT_HEADERS>(image.module, static_cast<DWORD>(dos->e_lfanew))->OptionalHeader;
    const IMAGE_DATA_DIRECTORY& directory = header.DataDirectory[IMAGE_DIRECTORY_ENTRY_DEBUG];
    const auto* const entries = at<IMAGE_DEBUG_DIRECTORY>(image.module, directory.VirtualAddress);
    image.size = header.SizeOfImage;
    image.hasNamelessDatabase =
        std::any_of(entries, entries + directory.Size / sizeof *entries,
                    [&image](const IMAGE_DEBUG_DIRECTORY& entry) { return isNamelessDatabase(image.module, entry); });
}

}  // namespace

HMODULE moduleAt(std::uint64_t address) {
    // For null GetModuleHandleExW returns the program.
    // https://learn.microsoft.com/windows/win32/api/libloaderapi/nf-libloaderapi-getmodulehandleexw
    if (address == 0) return nullptr;
    HMODULE module = nullptr;
    constexpr DWORD kFlags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    return ::GetModuleHandleExW(kFlags, reinterpret_cast<const wchar_t*>(address), &module) ? module : nullptr;
}

std::wstring moduleFile(HMODULE module) { return module ? platform::modulePath(module) : std::wstring(); }

std::optional<LoadedModule> describeModule(HMODULE module) {
    Image image{module, 0, false};
    if (!callSilently(&readImage, &image)) return {};
    std::wstring file = moduleFile(module);
    const bool hasOnlyExports = isInSystemFolder(file) || isOfRuntime(module) || image.hasNamelessDatabase;
    return LoadedModule{std::move(file), image.size, hasOnlyExports};
}

}  // namespace xo::fault
