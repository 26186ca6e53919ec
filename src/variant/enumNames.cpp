// The names of the enumerators of variants and tables, for xoEnumHelper.h.
#include "xoSystem/xoAsciiTableBuilder.h"
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoVariantValue.h"

namespace xo {
namespace {

constexpr xoEnumEntry<xoVariant::Type> kTypes[] = {
    {xoVariant::UNKNOWN, "UNKNOWN"}, {xoVariant::INTEGER, "INTEGER"},   {xoVariant::REAL, "REAL"},
    {xoVariant::STRING, "STRING"},   {xoVariant::BOOL, "BOOL"},         {xoVariant::VEC2D, "VEC2D"},
    {xoVariant::VEC3D, "VEC3D"},     {xoVariant::VEC4D, "VEC4D"},       {xoVariant::STRINGLIST, "STRINGLIST"},
    {xoVariant::MAP, "MAP"},         {xoVariant::LIST, "LIST"},         {xoVariant::MAT3D, "MAT3D"},
    {xoVariant::MAT4D, "MAT4D"},     {xoVariant::DATETIME, "DATETIME"}, {xoVariant::USERDATA, "USERDATA"}};
constexpr xoEnumEntry<AsciiTableBuilder::Style> kStyles[] = {{AsciiTableBuilder::StyleAscii, "Ascii"},
                                                             {AsciiTableBuilder::StyleBox, "Box"},
                                                             {AsciiTableBuilder::StyleMarkdown, "Markdown"},
                                                             {AsciiTableBuilder::StylePlain, "Plain"}};
constexpr xoEnumEntry<AsciiTableBuilder::Align> kAligns[] = {{AsciiTableBuilder::AlignAuto, "Auto"},
                                                             {AsciiTableBuilder::AlignLeft, "Left"},
                                                             {AsciiTableBuilder::AlignRight, "Right"},
                                                             {AsciiTableBuilder::AlignCenter, "Center"}};
constexpr xoEnumEntry<AsciiTableBuilder::Overflow> kOverflows[] = {{AsciiTableBuilder::OverflowWrap, "Wrap"},
                                                                   {AsciiTableBuilder::OverflowCutEnd, "CutEnd"},
                                                                   {AsciiTableBuilder::OverflowCutMiddle, "CutMiddle"}};

}  // namespace

xoEnumList<xoVariant::Type> xoEnumEntries(xoVariant::Type) { return kTypes; }

xoEnumList<AsciiTableBuilder::Style> xoEnumEntries(AsciiTableBuilder::Style) { return kStyles; }

xoEnumList<AsciiTableBuilder::Align> xoEnumEntries(AsciiTableBuilder::Align) { return kAligns; }

xoEnumList<AsciiTableBuilder::Overflow> xoEnumEntries(AsciiTableBuilder::Overflow) { return kOverflows; }

}  // namespace xo
