#include "xoSystem/xoDataStream.h"
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoIoDeviceBase.h"
#include "xoSystem/xoIoDeviceDelegable.h"

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

}  // namespace

xoEnumList<xoDataStream::Endianness> xoEnumEntries(xoDataStream::Endianness) { return kEndiannesses; }

xoEnumList<xoIoDevice::SeekStart> xoEnumEntries(xoIoDevice::SeekStart) { return kSeekStarts; }

xoEnumList<xoIoDeviceDelegable::DelegableFlag> xoEnumEntries(xoIoDeviceDelegable::DelegableFlag) {
    return {kDelegableFlags, /*areFlags=*/true};
}

}  // namespace xo
