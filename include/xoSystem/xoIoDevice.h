// All byte devices: what the binary data stream and the CSV stream write to and read from.
//
//     std::ofstream file(path, std::ios::binary);
//     xo::xoIoDeviceStdStreamProxy device(/*in=*/nullptr, &file);
//     xo::xoIoDeviceByteCounter counter;
//     counter.beginDelegation(&device);
//     counter << "goes through the counter into the file";
//     const bool ok = counter.good() && counter.endDelegation();
//
// Each class has a header of its own; this one includes them all. No device owns the devices or streams that it is
// given: they outlive its use of them. A device and everything that it forwards to are used by one thread at a time.
//
// Errors are a count of 0, a false result, and an error flag. The flag of a delegable device and of a signaler stays
// until a delegation begins anew. Nothing throws, except a signaler whose signal does, and without memory the
// constructors and the functions that return bytes, which throw std::bad_alloc. An operation that a device does not
// support writes a CRITICAL line to the log, if there is one.
#ifndef XOSYSTEM_XOIODEVICE_H
#define XOSYSTEM_XOIODEVICE_H

#include "xoSystem/xoIoDeviceBase.h"
#include "xoSystem/xoIoDeviceBroadcast.h"
#include "xoSystem/xoIoDeviceByteCounter.h"
#include "xoSystem/xoIoDeviceDelegable.h"
#include "xoSystem/xoIoDeviceFile.h"
#include "xoSystem/xoIoDeviceMemory.h"
#include "xoSystem/xoIoDeviceSignaler.h"
#include "xoSystem/xoIoDeviceStdStreamProxy.h"
#include "xoSystem/xoIoDeviceWriteStreamModifier.h"

#endif
