// The handles that a new process inherits.
#ifndef XO_PROCESS_ATTRIBUTELIST_H
#define XO_PROCESS_ATTRIBUTELIST_H

#include <vector>

#include "platform/windows.h"

namespace xo::process {

class AttributeList {
public:
    AttributeList() = default;
    ~AttributeList() {
        if (mIsMade) ::DeleteProcThreadAttributeList(list());
    }
    AttributeList(const AttributeList&) = delete;
    AttributeList& operator=(const AttributeList&) = delete;

    // Each handle once.
    void add(HANDLE handle) { mHandles.push_back(handle); }
    bool isEmpty() const { return mHandles.empty(); }

    // What is listed must be inheritable too.
    bool makeInheritable() const {
        for (const HANDLE handle : mHandles)
            if (!::SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT)) return false;
        return true;
    }

    // The list in the form of STARTUPINFOEXW, valid as long as this object; null when Windows refuses it.
    LPPROC_THREAD_ATTRIBUTE_LIST get() {
        // The first call always fails, and returns the size that the list needs.
        SIZE_T size = 0;
        ::InitializeProcThreadAttributeList(/*lpAttributeList=*/nullptr, /*dwAttributeCount=*/1, 0, &size);
        mMemory.resize(size);
        mIsMade = ::InitializeProcThreadAttributeList(list(), /*dwAttributeCount=*/1, 0, &size);
        const bool isComplete =
            mIsMade && ::UpdateProcThreadAttribute(list(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, mHandles.data(),
                                                   mHandles.size() * sizeof(HANDLE), /*lpPreviousValue=*/nullptr,
                                                   /*lpReturnSize=*/nullptr);
        return isComplete ? list() : nullptr;
    }

private:
    LPPROC_THREAD_ATTRIBUTE_LIST list() { return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(mMemory.data()); }

    std::vector<HANDLE> mHandles;  // in use as long as the list
    std::vector<char> mMemory;
    bool mIsMade = false;
};

}  // namespace xo::process

#endif
