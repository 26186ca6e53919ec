// The names of the enumerators of the stream classes, for xoEnumHelper.
#include "xoSystem/xoDataStream.h"
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoIoDeviceBase.h"
#include "xoSystem/xoIoDeviceDelegable.h"
#include "xoSystem/xoIoDeviceFile.h"

namespace xo {
namespace {

constexpr xoEnumEntry<xoDataStream::Endianness> kEndiannesses[] = {{xoDataStream::EndiannessLittle, "Little"},
                                                                   {xoDataStream::EndiannessBig, "Big"}};
constexpr xoEnumEntry<xoIoDevice::SeekStart> kSeekStarts[] = {
    {xoIoDevice::SeekFromBegin, "Begin"}, {xoIoDevice::SeekFromCurrent, "Current"}, {xoIoDevice::SeekFromEnd, "End"}};
constexpr xoEnumEntry<xoIoDeviceDelegable::DelegableFlag> kDelegableFlags[] = {
    {xoIoDeviceDelegable::DelegableFlagRead, "Read"},
    {xoIoDeviceDelegable::DelegableFlagWrite, "Write"},
    {xoIoDeviceDelegable::DelegableFlagReadWrite, "ReadWrite"}};
constexpr xoEnumEntry<xoIoDeviceFile::OpenMode> kOpenModes[] = {
    {xoIoDeviceFile::OpenRead, "Read"},     {xoIoDeviceFile::OpenWrite, "Write"},
    {xoIoDeviceFile::OpenAppend, "Append"}, {xoIoDeviceFile::OpenReadWrite, "ReadWrite"},
    {xoIoDeviceFile::OpenNew, "New"},       {xoIoDeviceFile::OpenReplace, "Replace"}};
constexpr xoEnumEntry<xoIoDeviceFile::Share> kShares[] = {{xoIoDeviceFile::ShareDefault, "Default"},
                                                          {xoIoDeviceFile::ShareNone, "None"},
                                                          {xoIoDeviceFile::ShareRead, "Read"},
                                                          {xoIoDeviceFile::ShareAll, "All"}};

}  // namespace

xoEnumList<xoDataStream::Endianness> xoEnumEntries(xoDataStream::Endianness) { return kEndiannesses; }

xoEnumList<xoIoDevice::SeekStart> xoEnumEntries(xoIoDevice::SeekStart) { return kSeekStarts; }

xoEnumList<xoIoDeviceFile::OpenMode> xoEnumEntries(xoIoDeviceFile::OpenMode) { return kOpenModes; }

xoEnumList<xoIoDeviceFile::Share> xoEnumEntries(xoIoDeviceFile::Share) { return kShares; }

xoEnumList<xoIoDeviceDelegable::DelegableFlag> xoEnumEntries(xoIoDeviceDelegable::DelegableFlag) {
    return {kDelegableFlags, /*areFlags=*/true};
}

}  // namespace xo
