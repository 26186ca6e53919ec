// xoIoDeviceDelegable: the base of devices that forward to another device, to which they are attached for a while.
#ifndef XOSYSTEM_XOIODEVICEDELEGABLE_H
#define XOSYSTEM_XOIODEVICEDELEGABLE_H

#include "xoSystem/xoExport.h"
#include "xoSystem/xoIoDeviceBase.h"

namespace xo {

template <class E>
class xoEnumList;

class XOSYSTEM_API xoIoDeviceDelegable : public xoIoDevice {
public:
    // The direction that is forwarded. The library sets these flags and never tests them.
    enum DelegableFlag : int { DelegableFlagRead = 1, DelegableFlagWrite = 2, DelegableFlagReadWrite = 3 };

    // Detaches by clearDelegation(), attaches the device, which is not owned, and clears the error flag. With null it
    // attaches none and succeeds all the same. False, with nothing changed, when a class refuses the device.
    virtual bool beginDelegation(xoIoDevice* device) = 0;

    // Forwards what is still held back and detaches. Returns true if the error flag of this object itself is not
    // raised, also when no device is attached. (xoIoDeviceWriteStreamModifier then returns false while bytes wait.)
    virtual bool endDelegation() = 0;

    // Detaches and does nothing else. With nothing attached it has no effect.
    virtual void clearDelegation() = 0;

    // Tells classes apart: 769 is xoIoDeviceWriteStreamModifier, 770 xoIoDeviceByteCounter.
    int getType() const { return mType; }
    DelegableFlag getFlags() const { return mFlags; }

protected:
    // A class of the program's own chooses a type that no other one has.
    xoIoDeviceDelegable(DelegableFlag flags, int type) : mType(type), mFlags(flags) {}
    xoIoDeviceDelegable(int flags, int type) : xoIoDeviceDelegable(static_cast<DelegableFlag>(flags), type) {}

private:
    int mType;
    DelegableFlag mFlags;
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoIoDeviceDelegable::DelegableFlag> xoEnumEntries(xoIoDeviceDelegable::DelegableFlag);

}  // namespace xo

#endif
