// The handles that a new process inherits.
#ifndef XO_PROCESS_ATTRIBUTELIST_H
#define XO_PROCESS_ATTRIBUTELIST_H

#include <vector>

#include "platform/windows.h"

namespace xo::process {

// Refers to handles, which must stay open until the process is made.
class AttributeList {
public:
    AttributeList() = default;
    ~AttributeList() {
        if (mIsMade) ::DeleteProcThreadAttributeList(get());
    }
    AttributeList(const AttributeList&) = delete;
    AttributeList& operator=(const AttributeList&) = delete;

    // Each handle may be added only once: Windows refuses a list with duplicates.
    void add(HANDLE handle) { mHandles.push_back(handle); }
    bool isEmpty() const { return mHandles.empty(); }

    // Listed handles must also be inheritable. False with the reason in GetLastError.
    bool makeInheritable() const {
        for (const HANDLE handle : mHandles)
            if (!::SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT)) return false;
        return true;
    }

    // Makes the list of all added handles; call it once. False with the reason in GetLastError.
    bool make() {
        // The first call always fails, and returns the size that the list needs.
        SIZE_T size = 0;
        ::InitializeProcThreadAttributeList(/*lpAttributeList=*/nullptr, /*dwAttributeCount=*/1, 0, &size);
        mMemory.resize(size);
        mIsMade = ::InitializeProcThreadAttributeList(get(), /*dwAttributeCount=*/1, 0, &size);
        return mIsMade && ::UpdateProcThreadAttribute(get(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST,
                                                      static_cast<void*>(mHandles.data()),
                                                      mHandles.size() * sizeof(HANDLE), /*lpPreviousValue=*/nullptr,
                                                      /*lpReturnSize=*/nullptr);
    }

    // For STARTUPINFOEXW, after make(); valid as long as this object.
    LPPROC_THREAD_ATTRIBUTE_LIST get() { return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(mMemory.data()); }

private:
    std::vector<HANDLE> mHandles;  // the list refers to this array, which must not change after make()
    std::vector<char> mMemory;     // the list itself, of a size that Windows decides
    bool mIsMade = false;
};

}  // namespace xo::process

#endif
