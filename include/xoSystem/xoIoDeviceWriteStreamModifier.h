// xoIoDeviceWriteStreamModifier: sends what is written through a transforming device, such as a compressor or a cipher,
// before it reaches the attached device.
//
//     Compressor compressor;  // an xoIoDeviceDelegable
//     xo::xoIoDeviceWriteStreamModifier compressed(&compressor);
//     compressed.beginDelegation(&file);
//     ...
//     const bool ok = compressed.endDelegation();
//
// The transforming device, called the modifier, is written as a reader: its readBytes reads plain bytes from the device
// that it is attached to, which is this object, and returns transformed ones.
#ifndef XOSYSTEM_XOIODEVICEWRITESTREAMMODIFIER_H
#define XOSYSTEM_XOIODEVICEWRITESTREAMMODIFIER_H

#include <cstdint>
#include <memory>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoIoDeviceDelegable.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

// Written bytes are kept until 2202009 of them wait, 2.1 times a block of 1 MiB. Then the modifier is begun, if it was
// not yet, and asked for blocks, which are written to the attached device, until fewer bytes wait. endDelegation()
// forwards the rest and must be called: the destructor discards what waits.
//
// The object reserves 6 MiB of address space, and uses the memory behind it as data passes through.
class XOSYSTEM_API xoIoDeviceWriteStreamModifier : public xoIoDeviceDelegable {
public:
    // The modifier is not owned. Null counts as one that cannot be begun. Throws std::bad_alloc without memory.
    explicit xoIoDeviceWriteStreamModifier(xoIoDeviceDelegable* modifier);
    ~xoIoDeviceWriteStreamModifier() override;
    xoIoDeviceWriteStreamModifier(const xoIoDeviceWriteStreamModifier&) = delete;
    xoIoDeviceWriteStreamModifier& operator=(const xoIoDeviceWriteStreamModifier&) = delete;

    // For the modifier: takes waiting bytes. While 2202009 or more wait, and during endDelegation(), it returns as many
    // as asked for; otherwise one a call, so that the modifier gets little of a rest that may still grow. 0 means that
    // no bytes wait. A null buffer takes nothing.
    std::uint64_t readBytes(char* buffer, std::uint64_t size) override;

    // Accepts the bytes, which may reach the device much later, so an error may show at a later write or at the end.
    // With no device attached the bytes wait for the next one. A null buffer with a size other than 0, and bytes for
    // which there is no memory, are an error.
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override;
    bool hasError() const override;  // its own flag, or the device's
    bool atEnd() const override;     // always false

    // Not supported: log, return false or 0, raise no flag.
    bool seekg(std::int64_t offset, SeekStart start) override;
    bool seekp(std::int64_t offset, SeekStart start) override;
    std::uint64_t tellg() override;
    std::uint64_t tellp() override;

    // Refused while a device is attached. Bytes that still wait are kept for the new device.
    bool beginDelegation(xoIoDevice* device) override;

    // Begins the modifier, if it was not yet, asks it for bytes until it has none, ends it and detaches the device.
    // With no device attached it returns false and changes nothing while bytes wait.
    bool endDelegation() override;
    void clearDelegation() override;

private:
    struct Private;
    std::unique_ptr<Private> mPrivate;
};

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
