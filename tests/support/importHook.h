// Replaces a function that one loaded module imports from another, for as long as the object lives. So a test sees the
// exact arguments of a system call, makes it fail, or counts it. Where the library is linked into the program, its
// imports are the program's, and the test's own calls are replaced with it.
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
        : mSlot(findSlot(importingModule, functionName)),
          mReplacement(reinterpret_cast<void*>(replacement)),
          mBefore(msLast) {
        if (mSlot) mOriginal = put(mReplacement);
        msLast = this;
    }
    ~ImportHook() {
        if (mSlot) put(mOriginal);
        msLast = mBefore;
    }
    ImportHook(const ImportHook&) = delete;
    ImportHook& operator=(const ImportHook&) = delete;

    // False when the module does not import the function: the test must then say so.
    bool isInstalled() const { return mSlot != nullptr; }

    template <class Function>
    Function* original() const {
        return reinterpret_cast<Function*>(mOriginal);
    }

    // What an installed replacement calls to reach the function behind it: by its name it might reach itself.
    template <class Function>
    static Function* behind(Function* replacement) {
        const ImportHook* hook = msLast;
        while (hook->mReplacement != reinterpret_cast<void*>(replacement)) hook = hook->mBefore;
        return hook->original<Function>();
    }

private:
#if defined(XO_LIBRARY_FILE)
    static constexpr char kLibraryFile[] = XO_LIBRARY_FILE;
#else
    static constexpr const char* kLibraryFile = nullptr;  // the library is in the program
#endif

    static void** findSlot(const char* moduleName, const char* functionName) {
        if (moduleName && std::strcmp(moduleName, "xoSystem.dll") == 0) moduleName = kLibraryFile;
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
    void* mReplacement;
    const ImportHook* mBefore;  // hooks are locals and members, so the last one made goes first
    static inline const ImportHook* msLast = nullptr;
};

}  // namespace xo::tests

#endif
