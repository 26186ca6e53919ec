// How the library's image is linked, read from its header in memory.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "platform/windows.h"
#include "xoSystem/xoInit.h"

namespace {

TEST(Image, IsHardened) {
    HMODULE module = nullptr;  // the DLL, or the program where the library is linked into it
    constexpr DWORD kFlags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    ASSERT_TRUE(::GetModuleHandleExW(kFlags, reinterpret_cast<LPCWSTR>(&xo::terminateXoSystem), &module));
    const auto* const base = reinterpret_cast<const std::uint8_t*>(module);
    const auto& headers =
        *reinterpret_cast<const IMAGE_NT_HEADERS*>(base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);

    constexpr WORD kWanted = IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE | IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA |
                             IMAGE_DLLCHARACTERISTICS_NX_COMPAT;
    EXPECT_EQ(headers.OptionalHeader.DllCharacteristics & kWanted, kWanted);
    EXPECT_EQ(headers.FileHeader.Characteristics & IMAGE_FILE_RELOCS_STRIPPED, 0) << "it could not be moved";
    EXPECT_GT(headers.OptionalHeader.ImageBase, ULONGLONG{0xFFFFFFFF});

    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(&headers);
    ASSERT_GT(headers.FileHeader.NumberOfSections, 3);
    for (int rest = headers.FileHeader.NumberOfSections; rest > 0; --rest, ++section) {
        const bool isData = (section->Characteristics & (IMAGE_SCN_MEM_WRITE | IMAGE_SCN_MEM_SHARED)) != 0;
        const bool isCode = (section->Characteristics & IMAGE_SCN_MEM_EXECUTE) != 0;
        EXPECT_FALSE(isData && isCode) << std::string(reinterpret_cast<const char*>(section->Name), 8);
    }
}

}  // namespace
