// The names of the enumerators of xoStringUtils and xoMathUtils, for xoEnumHelper.h.
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoMathUtils.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {
namespace {

constexpr xoEnumEntry<xoStringUtils::xoCharSet> kCharSets[] = {{xoStringUtils::CharSetNative, "Native"},
                                                               {xoStringUtils::CharSetUtf8, "Utf8"},
                                                               {xoStringUtils::CharSetAscii, "Ascii"}};
constexpr xoEnumEntry<xoStringUtils::SoftwareVersionComparisonResult> kComparisonResults[] = {
    {xoStringUtils::SoftwareVersionInvalid, "Invalid"},
    {xoStringUtils::SoftwareVersionEqual, "Equal"},
    {xoStringUtils::SoftwareVersionOlder, "Older"},
    {xoStringUtils::SoftwareVersionNewer, "Newer"}};
constexpr xoEnumEntry<xoMathUtils::xoByteUnit> kByteUnits[] = {{xoMathUtils::ByteUnitBinary, "Binary"},
                                                               {xoMathUtils::ByteUnitDecimal, "Decimal"},
                                                               {xoMathUtils::ByteUnitWindows, "Windows"}};

}  // namespace

xoEnumList<xoStringUtils::xoCharSet> xoEnumEntries(xoStringUtils::xoCharSet) { return kCharSets; }

xoEnumList<xoStringUtils::SoftwareVersionComparisonResult> xoEnumEntries(
    xoStringUtils::SoftwareVersionComparisonResult) {
    return {kComparisonResults, /*areFlags=*/true};
}

xoEnumList<xoMathUtils::xoByteUnit> xoEnumEntries(xoMathUtils::xoByteUnit) { return kByteUnits; }

}  // namespace xo
