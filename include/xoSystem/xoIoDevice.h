// Byte devices: where the binary data stream and the CSV stream write to and read from, and devices that stand between.
//
//     std::ofstream file(path, std::ios::binary);
//     xo::xoIoDeviceStdStreamProxy device(/*in=*/nullptr, &file);
//     xo::xoIoDeviceByteCounter counter;
//     counter.beginDelegation(&device);
//     counter << "goes through the counter into the file";
//     const bool ok = counter.good() && counter.endDelegation();
//     xo::xoLogObject(xo::xoLogInfo) << counter.getWrittenBytes() << " bytes";
//
// A device has two positions, one to read from (g) and one to write to (p). A program's own devices derive from
// xoIoDevice. No device owns the devices or streams that it is given: they outlive its use of them. A device and all
// that it stands on belong to one thread at a time.
//
// Failure is a count of 0, a false result, and an error flag that stays until a delegation begins anew. Nothing here
// throws, except a signaler whose signal does. What a device cannot do writes a CRITICAL line to the log, if there is
// one.
#ifndef XOSYSTEM_XOIODEVICE_H
#define XOSYSTEM_XOIODEVICE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "xoSystem/xoExport.h"

namespace xo {

class XOSYSTEM_API xoIoDevice {
public:
    // Any other value seeks nothing.
    enum SeekStart : int { SeekFromBegin = 0, SeekFromCurrent = 1, SeekFromEnd = 2 };

    virtual ~xoIoDevice();

    // Reads up to that many bytes and returns how many it read; fewer than asked tell of the end or of an error.
    virtual std::uint64_t readBytes(char* buffer, std::uint64_t size) = 0;

    // Writes all of the bytes and returns their number, or 0 when that failed; some may have been written then.
    virtual std::uint64_t writeBytes(const char* buffer, std::uint64_t size) = 0;

    // The error flag.
    virtual bool hasError() const = 0;

    // Whether there is nothing more to read. Some devices know only after a read that came back short.
    virtual bool atEnd() const = 0;

    // Move the position to read from and the position to write to. False when the device could not or cannot at all.
    virtual bool seekg(std::int64_t offset, SeekStart start) = 0;
    virtual bool seekp(std::int64_t offset, SeekStart start) = 0;

    // The position to read from and the position to write to, in bytes.
    virtual std::uint64_t tellg() = 0;
    virtual std::uint64_t tellp() = 0;

    // Write a text's bytes, without its end or its length. A null pointer writes nothing. Success shows in good().
    xoIoDevice& operator<<(const char* text);
    xoIoDevice& operator<<(const std::string& text);

    // Reads that many bytes and drops them. Returns how many there were.
    std::uint64_t skipBytes(std::uint64_t count);

    // No error flag.
    bool good() const { return !hasError(); }

protected:
    xoIoDevice() = default;
    xoIoDevice(const xoIoDevice&) = default;
    xoIoDevice& operator=(const xoIoDevice&) = default;
};

// A device that passes bytes through to another one, to which it is attached for a while.
class XOSYSTEM_API xoIoDeviceDelegable : public xoIoDevice {
public:
    // What passes through. The library sets these and never looks at them.
    enum DelegableFlag : int { DelegableFlagRead = 1, DelegableFlagWrite = 2, DelegableFlagReadWrite = 3 };

    // Attaches the device and clears the error. An attached device is let go first, as it is. False when refused.
    virtual bool beginDelegation(xoIoDevice* device) = 0;

    // Hands on what is still held back and lets the device go. False after an error of this object's own.
    virtual bool endDelegation() = 0;

    // Lets the device go, and does nothing else.
    virtual void clearDelegation() = 0;

    // Tell one class of delegables from another: the library's have 769 and 770.
    int getType() const { return mType; }
    DelegableFlag getFlags() const { return mFlags; }

protected:
    // A class of the program's own chooses a type that no other has.
    xoIoDeviceDelegable(DelegableFlag flags, int type) : mType(type), mFlags(flags) {}
    xoIoDeviceDelegable(int flags, int type) : xoIoDeviceDelegable(static_cast<DelegableFlag>(flags), type) {}

private:
    int mType;
    DelegableFlag mFlags;
};

// Writes the same bytes to several devices. It cannot read. Once its error flag is raised, it stays.
class XOSYSTEM_API xoIoDeviceBroadcast : public xoIoDevice {
public:
    // Null pointers are left out. With no device at all, writes succeed.
    explicit xoIoDeviceBroadcast(const std::vector<xoIoDevice*>& devices);

    // Not supported: logs, raises the error flag, returns 0 or false.
    std::uint64_t readBytes(char* buffer, std::uint64_t size) override;
    bool seekg(std::int64_t offset, SeekStart start) override;
    std::uint64_t tellg() override;

    // Not supported either: logs and returns false.
    bool atEnd() const override;

    // In the order of the devices; ends at the first that fails or reports an error, so that later ones miss the bytes.
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override;
    bool hasError() const override;

    // Moves every device, also after one has failed.
    bool seekp(std::int64_t offset, SeekStart start) override;

    // The position that the devices have in common; when they differ, 0 and the error flag.
    std::uint64_t tellp() override;

private:
    std::vector<xoIoDevice*> mDevices;
    bool mError = false;
};

// Reads from a standard stream and writes to another, or to the same one, opened in binary mode. Either may be null.
//
// A failed input stream (a read beyond its end fails it) is no error here; an output stream that failed is. What the
// output stream holds in its buffer is not yet written: for the last word on success flush or close it and ask it. A
// stream that is set to throw does not throw through this class, and gcount() of the input stream means nothing. The
// buffer of a file stream may be as small as 512 bytes; a larger one, set before the file is opened, pays.
class XOSYSTEM_API xoIoDeviceStdStreamProxy : public xoIoDevice {
public:
    // Not owned; for a file that is read and written, both are the same object.
    xoIoDeviceStdStreamProxy(std::istream* in, std::ostream* out) : mIn(in), mOut(out) {}
    xoIoDeviceStdStreamProxy(const xoIoDeviceStdStreamProxy&) = default;
    xoIoDeviceStdStreamProxy& operator=(const xoIoDeviceStdStreamProxy&) = default;
    ~xoIoDeviceStdStreamProxy() override;

    // A read that yields nothing marks the input stream as ended, so that atEnd() tells it.
    std::uint64_t readBytes(char* buffer, std::uint64_t size) override;
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override;
    bool hasError() const override;
    bool atEnd() const override;

    // True means that there is no error, false that there is one or no stream. A stream that failed does not move:
    // after a read beyond the end, clear() it before seeking back.
    bool seekg(std::int64_t offset, SeekStart start) override;
    bool seekp(std::int64_t offset, SeekStart start) override;

    // All ones when the stream does not know its position, 0 without a stream.
    std::uint64_t tellg() override;
    std::uint64_t tellp() override;

private:
    std::istream* mIn;
    std::ostream* mOut;
};

// Counts the bytes that pass. Without a device it accepts and counts writes; a read raises the error flag.
class XOSYSTEM_API xoIoDeviceByteCounter : public xoIoDeviceDelegable {
public:
    xoIoDeviceByteCounter() : xoIoDeviceDelegable(DelegableFlagReadWrite, 770) {}

    // The bytes read since the delegation began, and the furthest that the write position has been.
    std::uint64_t getReadBytes() const { return mReadBytes; }
    std::uint64_t getWrittenBytes() const { return upToDateWriteEnd(); }

    std::uint64_t readBytes(char* buffer, std::uint64_t size) override;

    // Counts the bytes also when the device then fails to take them.
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override;
    bool hasError() const override;
    bool atEnd() const override;  // the device's; true without one

    // Not supported: logs, raises the error flag, returns false.
    bool seekg(std::int64_t offset, SeekStart start) override;

    // Moves its own write position, whatever becomes of the device's. The counter takes the furthest position so far
    // for the end. A position never falls below 0, except that a negative offset from the begin is taken as it is.
    bool seekp(std::int64_t offset, SeekStart start) override;

    std::uint64_t tellg() override;  // the bytes read
    std::uint64_t tellp() override;  // its own write position

    // Starts all counts from 0. They stay readable after the end.
    bool beginDelegation(xoIoDevice* device) override;
    bool endDelegation() override;
    void clearDelegation() override;

private:
    std::uint64_t upToDateWriteEnd() const { return mWritePosition > mWriteEnd ? mWritePosition : mWriteEnd; }
    void updateWriteEnd() { mWriteEnd = upToDateWriteEnd(); }

    std::uint64_t mWritePosition = 0;
    std::uint64_t mWriteEnd = 0;  // the highest write position before the last seek
    std::uint64_t mReadBytes = 0;
    xoIoDevice* mDevice = nullptr;  // null when not delegating
    bool mError = false;
};

// Calls a function each time that about so many bytes were written, just before the write that completes them, for
// instance to insert a mark or to begin a new file.
class XOSYSTEM_API xoIoDeviceSignaler : public xoIoDevice {
public:
    // Gets the attached device, maybe null.
    using Signal = std::function<void(xoIoDevice*)>;

    // The signal is not owned and may be null. A threshold of 0 signals at each write.
    xoIoDeviceSignaler(Signal* signal, std::size_t threshold) : mSignal(signal), mThreshold(threshold) {}

    // Takes effect at the next write. Called by the signal itself it has no lasting effect.
    void setSignal(Signal* signal) { mSignal = signal; }

    std::uint64_t readBytes(char* buffer, std::uint64_t size) override;  // without a device: error, 0

    // Adds the size to the count. A count that reaches the threshold first calls the signal, with the attached device
    // (maybe null), and restarts at 0; writes that the signal makes to this object do not call it again. Then writes.
    // What the signal throws comes out here, with nothing written; a signal that wraps no function throws
    // std::bad_function_call.
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override;
    bool hasError() const override;
    bool atEnd() const override;  // the device's; true without one

    // Not supported: log, raise the error flag, return false. The messages name the byte counter.
    bool seekg(std::int64_t offset, SeekStart start) override;
    bool seekp(std::int64_t offset, SeekStart start) override;

    std::uint64_t tellg() override;  // the device's; 0 without one
    std::uint64_t tellp() override;  //

    // As in xoIoDeviceDelegable. The count goes on where it was.
    virtual bool beginDelegation(xoIoDevice* device);
    virtual bool endDelegation();
    virtual void clearDelegation();

private:
    void signal();

    Signal* mSignal;
    xoIoDevice* mDevice = nullptr;  // null when not delegating
    std::uint64_t mThreshold;
    std::uint64_t mCount = 0;
    bool mError = false;
};

// Sends what is written through a transforming device, such as a compressor or a cipher, before it reaches the attached
// device. The transformer, called the modifier, is written as a reader: its readBytes reads plain bytes from the device
// that it is attached to (which is this object) and returns transformed ones.
//
//     Compressor compressor;  // an xoIoDeviceDelegable
//     xo::xoIoDeviceWriteStreamModifier compressed(&compressor);
//     compressed.beginDelegation(&file);
//     ...
//     const bool ok = compressed.endDelegation();
//
// Written bytes gather until 2202009 wait, 2.1 times a block of 1 MiB; then the modifier is begun, if it was not yet,
// and asked for blocks, each of which is written on, until fewer wait. endDelegation() hands over the rest and must be
// called: the destructor drops what waits. The object keeps 6 MiB of address space; of the memory behind it only what
// data has passed through.
class XOSYSTEM_API xoIoDeviceWriteStreamModifier : public xoIoDeviceDelegable {
public:
    // The modifier is not owned. Null counts as one that cannot be begun.
    explicit xoIoDeviceWriteStreamModifier(xoIoDeviceDelegable* modifier);
    ~xoIoDeviceWriteStreamModifier() override;
    xoIoDeviceWriteStreamModifier(const xoIoDeviceWriteStreamModifier&) = delete;
    xoIoDeviceWriteStreamModifier& operator=(const xoIoDeviceWriteStreamModifier&) = delete;

    // For the modifier: takes waiting bytes, as many as asked for while 2202009 or more wait, else one a call; all
    // during endDelegation(). 0 means that there are none for now.
    std::uint64_t readBytes(char* buffer, std::uint64_t size) override;

    // Accepts the bytes, which may reach the device much later; so an error shows at a later write or at the end. With
    // no device attached the bytes wait for the next one.
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override;
    bool hasError() const override;
    bool atEnd() const override;  // always false

    // Not supported: log, return false or 0, raise no flag.
    bool seekg(std::int64_t offset, SeekStart start) override;
    bool seekp(std::int64_t offset, SeekStart start) override;
    std::uint64_t tellg() override;
    std::uint64_t tellp() override;

    // False, and nothing changes, while a device is attached. Bytes that still wait are kept for this device.
    bool beginDelegation(xoIoDevice* device) override;

    // Begins the modifier, if it was not yet, asks it for bytes until it has none, ends it and lets the device go.
    bool endDelegation() override;
    void clearDelegation() override;

private:
    std::size_t pendingCount() const { return mPending.size() - mPendingStart; }
    bool appendPending(const char* buffer, std::uint64_t size);
    void processPendingData();
    bool startModifier();
    bool moveBlock();

    xoIoDeviceDelegable* mModifier;
    xoIoDevice* mDevice = nullptr;  // null when not delegating
    std::vector<char> mPending;     // from mPendingStart on; what stands before was handed out
    std::size_t mPendingStart = 0;
    std::unique_ptr<char[]> mOutput;  // one block
    std::uint64_t mThreshold;
    bool mModifierNotStarted = true;
    bool mError = false;
    bool mAtEnd = false;
};

}  // namespace xo

#endif
