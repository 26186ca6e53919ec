// xoIoDeviceFile: a device over a file on a disk, with a buffer of its own.
//
//     xo::xoIoDeviceFile file;
//     if (!file.openUtf8(path, xo::xoIoDeviceFile::OpenReplace)) return cannotOpen(file.getError());
//     xo::xoDataStream stream(&file, xo::xoDataStream::EndiannessLittle);
//     stream << kVersion << name << scale;
//     if (!file.close()) return cannotSave(file.getError());     // the old file is still there then
//
// The device has one position to read from and one to write to. Both are 0 after opening. Bytes that were written are
// read back at once, also those that are still in the buffer.
//
// A failure gives 0 or false. getError() tells the first failure of openUtf8, of a transfer or of resize. A transfer
// that fails also raises the error flag; from then on nothing is read or written until the next openUtf8. Bytes of the
// buffer are transferred by flush, seekp, resize and close too. The first write that fails leaves one CRITICAL line in
// the log, whenever it shows: in one of these, in writeBytes or in the destructor. Nothing throws except the
// constructor. A device is used by one thread at a time.
#ifndef XOSYSTEM_XOIODEVICEFILE_H
#define XOSYSTEM_XOIODEVICEFILE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoIoDeviceBase.h"
#include "xoSystem/xoSystemError.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

class XOSYSTEM_API xoIoDeviceFile : public xoIoDevice {
public:
    // How a file is opened, and for what.
    enum OpenMode : int {
        OpenRead = 0,       // the file must exist
        OpenWrite = 1,      // created, or emptied; only writes
        OpenAppend = 2,     // created, or kept; only writes, always behind what the file then holds
        OpenReadWrite = 3,  // created, or kept
        OpenNew = 4,        // created; fails if it exists; reads and writes
        OpenReplace = 5,    // written to a new file, which takes the place of the old one at close(); only writes
    };

    // What others may do with the file meanwhile. OpenReplace ignores it: the old file stays open to everyone.
    enum Share : int {
        ShareDefault = 0,  // ShareAll for OpenRead, ShareRead for all others
        ShareNone = 1,     // nobody else may open it
        ShareRead = 2,     // others may read
        ShareAll = 3,      // others may read, write, rename and delete
    };

    // The bytes of the buffer. It is allocated at the first transfer that needs it; transfers of that size or more pass
    // it by.
    static constexpr std::size_t kBufferBytes = 65536;

    // No file is open. Throws std::bad_alloc without memory.
    xoIoDeviceFile();
    // Closes the file. With OpenReplace it drops what was written and the old file stays.
    ~xoIoDeviceFile() override;
    xoIoDeviceFile(const xoIoDeviceFile&) = delete;
    xoIoDeviceFile& operator=(const xoIoDeviceFile&) = delete;

    // Closes what is open, as close() does, and opens the file. The path is UTF-8; each broken sequence in it becomes
    // U+FFFD. A relative path is made absolute here, so that the file stays the same when the working folder changes.
    // False, with a DEBUG line (qualifier "IoDeviceFile"), when the file cannot be opened, for an empty path, for one
    // with a NUL inside, and for whatever is no file on a disk: a folder, a pipe, a console, "NUL".
    bool openUtf8(const std::string& path, OpenMode mode, Share share = ShareDefault);

    // True only if every byte written since openUtf8 has reached the system, and with OpenReplace only if the new file
    // has taken the place of the old one. False when no file is open.
    //
    // A replaced file keeps its permissions, attributes and time of creation, and a link stays a link. If a new file
    // cannot take its place (other hard links, an encrypted file, a folder that takes no new file, a program that keeps
    // the old one open without FILE_SHARE_DELETE), the old file is overwritten in place instead.
    bool close();

    // Give the buffer to the system, and with flushToDisk what the system keeps of the file to the disk.
    bool flush();
    bool flushToDisk();

    // Cuts the file, or adds zeros. Both positions stay. False, without the error flag, if the disk is full, with
    // OpenAppend, and for a size above 2^63-1. With OpenRead, and if the bytes of the buffer cannot be written first,
    // it logs a CRITICAL line and raises the flag.
    bool resize(std::uint64_t bytes);

    // True from a successful openUtf8 to close().
    bool isOpen() const;
    // The absolute path of the last openUtf8, with backslashes.
    const std::string& getPathUtf8() const;
    // Bytes in the buffer included. 0 when no file is open.
    std::uint64_t getSize() const;
    // The first failure since openUtf8, also of openUtf8 itself; 0 without one. A call in the wrong direction gives
    // ERROR_ACCESS_DENIED (5), a transfer while no file is open ERROR_INVALID_HANDLE (6). What returns false for
    // another reason, such as a seek before 0 or the flush of a file that is not open, sets no error.
    SystemError getError() const;

    // Fewer bytes than asked for mean that the file ends, or that the error flag is raised. In a mode that only writes,
    // this and seekg log a CRITICAL line and raise the error flag; so do writeBytes and seekp with OpenRead.
    std::uint64_t readBytes(char* buffer, std::uint64_t size) override;
    // An error may show only at a later call. A piece smaller than the buffer is never divided between two writes to
    // the file, so several devices may append whole lines to one file: each flush lands behind what others appended.
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override;
    // Raised by a failed transfer, by a failed openUtf8, by a call in the wrong direction and by a transfer while no
    // file is open.
    bool hasError() const override;
    // Whether the position to read from is at or behind the end that the file has now. True when no file is open.
    bool atEnd() const override;

    // Any position from 0 to 2^63-1, also behind the end: the gap reads as zeros once something was written behind it.
    // Otherwise false, and the position stays. With OpenAppend seekp gives false.
    bool seekg(std::int64_t offset, SeekStart start) override;
    bool seekp(std::int64_t offset, SeekStart start) override;
    // tellp is the size of the file with OpenAppend.
    std::uint64_t tellg() override;
    std::uint64_t tellp() override;

private:
    struct Private;

    std::unique_ptr<Private> mPrivate;
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoIoDeviceFile::OpenMode> xoEnumEntries(xoIoDeviceFile::OpenMode);
XOSYSTEM_API xoEnumList<xoIoDeviceFile::Share> xoEnumEntries(xoIoDeviceFile::Share);

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
