// The handles that this process has open. Wine's own count of them reads 0.
#ifndef XO_TESTS_OPENHANDLES_H
#define XO_TESTS_OPENHANDLES_H

#include <cstdint>
#include <map>
#include <string>

#include "platform/windows.h"

#include <winternl.h>

namespace xo::tests {

template <class Visit>
void forEachHandle(Visit visit) {
    DWORD flags = 0;
    for (std::uintptr_t value = 4; value < 0x1000; value += 4)
        if (::GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) visit(reinterpret_cast<HANDLE>(value));
}

inline int openHandles() {
    int count = 0;
    forEachHandle([&](HANDLE) { ++count; });
    return count;
}

// "Event 12, File 3, ...": tells in a failed test what was left open.
inline std::wstring handleKinds() {
    std::map<std::wstring, int> counts;
    forEachHandle([&](HANDLE handle) {
        alignas(PUBLIC_OBJECT_TYPE_INFORMATION) char buffer[1024];
        const NTSTATUS status = ::NtQueryObject(handle, ObjectTypeInformation, buffer, sizeof buffer, nullptr);
        const UNICODE_STRING& name = reinterpret_cast<const PUBLIC_OBJECT_TYPE_INFORMATION*>(buffer)->TypeName;
        ++counts[status < 0 ? L"?" : std::wstring(name.Buffer, name.Length / sizeof(wchar_t))];
    });
    std::wstring text;
    for (const auto& [kind, count] : counts)
        text.append(text.empty() ? L"" : L", ").append(kind).append(L" ").append(std::to_wstring(count));
    return text;
}

}  // namespace xo::tests

#endif
