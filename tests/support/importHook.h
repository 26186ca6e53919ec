// Replaces a function that one loaded module imports from another, for as long as the object lives. So a test sees the
// exact arguments of a system call, makes it fail, or counts it.
#ifndef XO_TESTS_IMPORTHOOK_H
#define XO_TESTS_IMPORTHOOK_H

#include <cstdint>
#include <cstring>

#include "platform/windows.h"

namespace xo::tests {

class ImportHook {
public:
    template <class Function>
    ImportHook(const char* importingModule, const char* functionName, Function* replacement)
        : mSlot(findSlot(importingModule, functionName)) {
        if (mSlot) mOriginal = put(reinterpret_cast<void*>(replacement));
    }
    ~ImportHook() {
        if (mSlot) put(mOriginal);
    }
    ImportHook(const ImportHook&) = delete;
    ImportHook& operator=(const ImportHook&) = delete;

    // False when the module does not import the function: the test must then say so.
    bool isInstalled() const { return mSlot != nullptr; }

    template <class Function>
    Function* original() const {
        return reinterpret_cast<Function*>(mOriginal);
    }

private:
    static void** findSlot(const char* moduleName, const char* functionName) {
        auto* const base = reinterpret_cast<std::uint8_t*>(::GetModuleHandleA(moduleName));
        if (!base) return nullptr;
        const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
        const auto* const nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
        const auto& directory = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        const auto* module = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
        for (; module->Name; ++module) {
            const auto* name = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + module->OriginalFirstThunk);
            auto* slot = reinterpret_cast<IMAGE_THUNK_DATA*>(base + module->FirstThunk);
            for (; name->u1.AddressOfData; ++name, ++slot) {
                if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
                const auto* const byName = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData);
                if (std::strcmp(reinterpret_cast<const char*>(byName->Name), functionName) == 0)
                    return reinterpret_cast<void**>(&slot->u1.Function);
            }
        }
        return nullptr;
    }

    void* put(void* function) {
        DWORD protection = 0;
        ::VirtualProtect(mSlot, sizeof *mSlot, PAGE_READWRITE, &protection);
        void* const before = *mSlot;
        *mSlot = function;
        ::VirtualProtect(mSlot, sizeof *mSlot, protection, &protection);
        return before;
    }

    void** mSlot;
    void* mOriginal = nullptr;
};

}  // namespace xo::tests

#endif
