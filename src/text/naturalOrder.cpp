// Comparison in the order of the user's language, with digits as numbers:
// https://learn.microsoft.com/windows/win32/api/stringapiset/nf-stringapiset-comparestringex
#include <limits>

#include "platform/wideText.h"
#include "platform/windows.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {
namespace {

// CompareStringEx returns 0 for a failure and 1 to 3 for less, equal and greater. The results here are these minus 2.
constexpr int kFailed = -2;
constexpr int kLess = -1;

// CompareStringEx fails for a null pointer even when the size is 0.
const wchar_t* orEmpty(const wchar_t* text, std::uint64_t size) { return text || size != 0 ? text : L""; }

int compareNatural(const std::string& a, const std::string& b, bool caseInsensitive) {
    // Of a longer text toWide gives an empty one, which would then be compared in its place.
    constexpr auto kMost = static_cast<std::size_t>((std::numeric_limits<int>::max)());
    if (a.size() > kMost || b.size() > kMost) return kFailed;
    const std::wstring wideA = platform::toWide(a);
    const std::wstring wideB = platform::toWide(b);
    return xoStringUtils::CompareUTF16Natural(wideA.data(), wideA.size(), wideB.data(), wideB.size(), caseInsensitive);
}

}  // namespace

int xoStringUtils::CompareUTF8Natural(const std::string& a, const std::string& b, bool caseInsensitive) {
    return compareNatural(a, b, caseInsensitive);
}

int xoStringUtils::CompareUTF16Natural(const wchar_t* a, std::uint64_t sizeOfA, const wchar_t* b, std::uint64_t sizeOfB,
                                       bool caseInsensitive) {
    constexpr std::uint64_t kMost = (std::numeric_limits<int>::max)();
    if (sizeOfA > kMost || sizeOfB > kMost) return kFailed;
    const DWORD flags = SORT_DIGITSASNUMBERS | (caseInsensitive ? DWORD{NORM_IGNORECASE} : DWORD{0});
    return ::CompareStringEx(LOCALE_NAME_USER_DEFAULT, flags, orEmpty(a, sizeOfA), static_cast<int>(sizeOfA),
                             orEmpty(b, sizeOfB), static_cast<int>(sizeOfB), /*lpVersionInformation=*/nullptr,
                             /*lpReserved=*/nullptr, /*lParam=*/0) -
           2;
}

// After a failed comparison neither text precedes the other. If both did, std::sort would be undefined.
bool xoStringUtils::UTF8NaturalSortFunction(const std::string& a, const std::string& b) {
    return compareNatural(a, b, false) == kLess;
}

bool xoStringUtils::UTF8NaturalSortFunctionCaseInsensitive(const std::string& a, const std::string& b) {
    return compareNatural(a, b, true) == kLess;
}

}  // namespace xo
