// A file with one buffer, which serves either reading ahead or gathering small writes.
#include "xoSystem/xoIoDeviceFile.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <string_view>

#include "stream/deviceMessage.h"
#include "stream/openedFile.h"
#include "stream/seekTarget.h"
#include "stream/shortCopy.h"

namespace xo {
namespace {

constexpr std::uint64_t kCapacity = xoIoDeviceFile::kBufferBytes;

}  // namespace

// The buffer holds either bytes that were read ahead or bytes that are not in the file yet.
struct xoIoDeviceFile::Private {
    enum class Holds : unsigned char { Nothing, Read, Unwritten };

    std::unique_ptr<char[]> buffer;  // kCapacity bytes, from the first transfer that needs it on
    std::uint64_t bufferAt = 0;      // the position of its first byte in the file; not used with OpenAppend
    std::uint64_t filled = 0;        // how many bytes it holds
    std::uint64_t readAt = 0;
    std::uint64_t writeAt = 0;  // bufferAt + filled while the buffer holds unwritten bytes
    Holds holds = Holds::Nothing;
    bool hasFailed = false;  // the error flag; while it is raised, the buffer holds nothing
    bool hasLost = false;    // a write failed, and that is in the log
    DWORD error = ERROR_SUCCESS;
    stream::OpenedFile file;
    std::string path;

    bool open(const std::string& newPath, OpenMode mode, Share share);
    bool close();
    std::uint64_t size() const;

    bool canTransfer();
    bool allocate();
    bool release();
    bool writeTo(std::uint64_t position, const char* bytes, std::uint64_t size);
    std::uint64_t write(const char* bytes, std::uint64_t size);
    std::uint64_t append(const char* bytes, std::uint64_t size);

    std::uint64_t takeBuffered(char* bytes, std::uint64_t size);
    std::uint64_t readFrom(std::uint64_t position, char* bytes, std::uint64_t size);
    bool readAhead();
    std::uint64_t read(char* bytes, std::uint64_t size);

    bool allows(bool isAllowed, const char* operation, const char* allowed);
    void fail(DWORD code);
    bool failWrite(DWORD code);
    void log(xoLogType type, const char* what, DWORD code, const char* reason = nullptr) const noexcept;
};

// ---- opening and closing

bool xoIoDeviceFile::Private::open(const std::string& newPath, OpenMode mode, Share share) {
    close();
    readAt = writeAt = 0;
    hasFailed = hasLost = false;
    error = ERROR_NOT_ENOUGH_MEMORY;  // stays if an exception leaves the block
    std::string fullPath;             // newPath may be the path of this device
    try {
        error = file.open(newPath, mode, share, fullPath);
    } catch (const std::exception&) {  // std::bad_alloc or std::length_error
    }
    path.swap(fullPath);
    if (error == ERROR_SUCCESS) return true;
    hasFailed = true;
    file.close();
    log(xoLogDebug, "cannot open", error);
    return false;
}

bool xoIoDeviceFile::Private::close() {
    if (!file.isOpen()) return false;
    release();
    // A new file takes the place of the old one only after no error at all. For other files only writes matter here.
    bool isWhole = file.isReplacement() ? !hasFailed : !hasLost;
    const DWORD code = isWhole ? file.commit() : DWORD{ERROR_SUCCESS};
    if (code != ERROR_SUCCESS) isWhole = failWrite(code);
    file.close();
    readAt = writeAt = 0;
    return isWhole;
}

std::uint64_t xoIoDeviceFile::Private::size() const {
    if (!file.isOpen()) return 0;
    // Bytes that the buffer still holds count as part of the file.
    const std::uint64_t onDisk = file.size();
    if (holds != Holds::Unwritten) return onDisk;
    return file.appends() ? onDisk + filled : (std::max)(onDisk, bufferAt + filled);
}

// ---- failing

// Logs the reason, or without one the system's text for the code.
void xoIoDeviceFile::Private::log(xoLogType type, const char* what, DWORD code, const char* reason) const noexcept {
    stream::writeLine(type, type == xoLogDebug ? "IoDeviceFile" : nullptr, [&](xoLogObject& line) {
        line << "xoIoDeviceFile " << what << " \"" << std::string_view(path)
             << "\": " << std::string_view(reason ? reason : SystemError(code).toString());
    });
}

// The first error is the one that getError() returns: later ones are mostly its consequences.
void xoIoDeviceFile::Private::fail(DWORD code) {
    holds = Holds::Nothing;
    hasFailed = true;
    if (error == ERROR_SUCCESS) error = code;
}

bool xoIoDeviceFile::Private::failWrite(DWORD code) {
    fail(code);
    if (!hasLost) log(xoLogCritical, "cannot write", code);
    hasLost = true;
    return false;
}

// Using a file that is not open is an error of its own; it stays until the next open.
bool xoIoDeviceFile::Private::canTransfer() {
    if (!file.isOpen()) fail(ERROR_INVALID_HANDLE);
    return !hasFailed;
}

// Reports an operation that the mode does not allow.
bool xoIoDeviceFile::Private::allows(bool isAllowed, const char* operation, const char* allowed) {
    if (isAllowed) return true;
    release();  // first, because fail() discards what waits in the buffer
    log(xoLogCritical, operation, ERROR_ACCESS_DENIED, allowed);
    fail(ERROR_ACCESS_DENIED);
    return false;
}

// ---- writing

bool xoIoDeviceFile::Private::allocate() {
    if (!buffer) buffer.reset(new (std::nothrow) char[kCapacity]);  // make_unique would fill it with zeros
    return static_cast<bool>(buffer);
}

bool xoIoDeviceFile::Private::writeTo(std::uint64_t position, const char* bytes, std::uint64_t size) {
    const DWORD code = file.write(position, bytes, size);
    return code == ERROR_SUCCESS || failWrite(code);
}

// Empties the buffer; what is not in the file yet is written.
bool xoIoDeviceFile::Private::release() {
    const Holds held = holds;
    holds = Holds::Nothing;
    return held != Holds::Unwritten || writeTo(bufferAt, buffer.get(), filled);
}

// The general case of writeBytes: the buffer holds no unwritten bytes, or has no space for the piece behind them.
std::uint64_t xoIoDeviceFile::Private::write(const char* bytes, std::uint64_t size) {
    if (!bytes || size == 0 || !canTransfer()) return 0;
    if (!allows(file.writes(), "writeBytes on", "the file is open for reading")) {
        hasLost = true;  // it has been logged, and close() has to return false
        return 0;
    }
    if (holds == Holds::Unwritten && size <= kCapacity - filled) return append(bytes, size);
    // The buffer may hold bytes read ahead of the same place, which the write makes out of date.
    if (!release()) return 0;
    // Windows has signed positions, so that none lies behind the largest 64-bit one.
    if (size > stream::kLastPosition - writeAt) return failWrite(ERROR_INVALID_PARAMETER);
    // A piece as large as the buffer goes to the file without a copy.
    if (size >= kCapacity) {
        if (!writeTo(writeAt, bytes, size)) return 0;
        writeAt += size;
        return size;
    }
    if (!allocate()) return failWrite(ERROR_NOT_ENOUGH_MEMORY);
    holds = Holds::Unwritten;
    bufferAt = writeAt;
    filled = 0;
    return append(bytes, size);
}

// The buffer holds unwritten bytes, or none, and has space for these.
std::uint64_t xoIoDeviceFile::Private::append(const char* bytes, std::uint64_t size) {
    std::memcpy(buffer.get() + filled, bytes, static_cast<std::size_t>(size));
    filled += size;
    writeAt += size;
    return size;
}

// ---- reading

// Returns how many bytes it took: 0 when the position lies outside of what was read ahead.
std::uint64_t xoIoDeviceFile::Private::takeBuffered(char* bytes, std::uint64_t size) {
    const std::uint64_t at = readAt - bufferAt;  // wraps round to a large number for a position before the buffer
    if (holds != Holds::Read || at >= filled) return 0;
    const std::uint64_t count = (std::min)(size, filled - at);
    std::memcpy(bytes, buffer.get() + at, static_cast<std::size_t>(count));
    readAt += count;
    return count;
}

// Reads from the file, past the buffer. An error raises the flag.
std::uint64_t xoIoDeviceFile::Private::readFrom(std::uint64_t position, char* bytes, std::uint64_t size) {
    DWORD code = ERROR_SUCCESS;
    const std::uint64_t got = file.read(position, bytes, size, code);
    if (code != ERROR_SUCCESS) fail(code);
    return got;
}

// False at the end of the file and after an error.
bool xoIoDeviceFile::Private::readAhead() {
    holds = Holds::Nothing;
    if (!allocate()) fail(ERROR_NOT_ENOUGH_MEMORY);
    if (hasFailed) return false;
    filled = readFrom(readAt, buffer.get(), kCapacity);
    bufferAt = readAt;
    if (filled != 0) holds = Holds::Read;
    return filled != 0;
}

// The general case of readBytes: a piece that was not read ahead as a whole.
std::uint64_t xoIoDeviceFile::Private::read(char* bytes, std::uint64_t size) {
    if (!bytes || size == 0 || !canTransfer()) return 0;
    if (!allows(file.reads(), "readBytes on", "the file is open for writing")) return 0;
    if (holds == Holds::Unwritten && !release()) return 0;
    std::uint64_t done = takeBuffered(bytes, size);
    while (done < size) {
        const std::uint64_t rest = size - done;
        if (rest >= kCapacity) {  // goes to the caller without a copy in between
            const std::uint64_t got = readFrom(readAt, bytes + done, rest);
            readAt += got;
            done += got;
            if (got == 0) break;
        } else {
            if (!readAhead()) break;
            done += takeBuffered(bytes + done, rest);
        }
    }
    return done;
}

// ---- the interface

xoIoDeviceFile::xoIoDeviceFile() : mPrivate(new Private) {}

xoIoDeviceFile::~xoIoDeviceFile() {
    // Without close() the caller has not said that the content is whole, so the old file stays. The new one is deleted
    // when its handle is closed.
    if (mPrivate->file.isReplacement()) return;
    mPrivate->close();
}

bool xoIoDeviceFile::openUtf8(const std::string& path, OpenMode mode, Share share) {
    return mPrivate->open(path, mode, share);
}

bool xoIoDeviceFile::close() { return mPrivate->close(); }

bool xoIoDeviceFile::flush() {
    Private& self = *mPrivate;
    if (!self.file.isOpen() || self.hasFailed) return false;
    return self.holds != Private::Holds::Unwritten || self.release();
}

bool xoIoDeviceFile::flushToDisk() {
    if (!flush()) return false;
    if (!mPrivate->file.writes()) return true;
    const DWORD code = mPrivate->file.flushToDisk();
    return code == ERROR_SUCCESS || mPrivate->failWrite(code);
}

bool xoIoDeviceFile::resize(std::uint64_t bytes) {
    Private& self = *mPrivate;
    if (!self.file.isOpen() || self.hasFailed || bytes > stream::kLastPosition) return false;
    if (!self.allows(self.file.writes(), "resize on", "the file is open for reading")) return false;
    // FILE_APPEND_DATA alone does not include the right to set the end of the file.
    if (self.file.appends() || !self.release()) return false;
    const DWORD code = self.file.resize(bytes);
    if (code != ERROR_SUCCESS && self.error == ERROR_SUCCESS) self.error = code;
    return code == ERROR_SUCCESS;
}

bool xoIoDeviceFile::isOpen() const { return mPrivate->file.isOpen(); }

const std::string& xoIoDeviceFile::getPathUtf8() const { return mPrivate->path; }

std::uint64_t xoIoDeviceFile::getSize() const { return mPrivate->size(); }

SystemError xoIoDeviceFile::getError() const { return {mPrivate->error}; }

// Numbers and words that the buffer holds or has space for take the quick path, everything else the other one.
std::uint64_t xoIoDeviceFile::readBytes(char* buffer, std::uint64_t size) {
    Private& self = *mPrivate;
    const std::uint64_t at = self.readAt - self.bufferAt;
    if (size > stream::kFew || self.holds != Private::Holds::Read || at > self.filled || size > self.filled - at ||
        !buffer)
        return self.read(buffer, size);
    stream::copyFew(buffer, self.buffer.get() + at, static_cast<std::size_t>(size));
    self.readAt += size;
    return size;
}

std::uint64_t xoIoDeviceFile::writeBytes(const char* buffer, std::uint64_t size) {
    Private& self = *mPrivate;
    if (size > stream::kFew || self.holds != Private::Holds::Unwritten || size > kCapacity - self.filled || !buffer)
        return self.write(buffer, size);
    stream::copyFew(self.buffer.get() + self.filled, buffer, static_cast<std::size_t>(size));
    self.filled += size;
    self.writeAt += size;
    return size;
}

bool xoIoDeviceFile::hasError() const { return mPrivate->hasFailed; }

bool xoIoDeviceFile::atEnd() const {
    const Private& self = *mPrivate;
    // The usual answer, without a call to the system.
    if (self.holds == Private::Holds::Read && self.readAt - self.bufferAt < self.filled) return false;
    return self.readAt >= self.size();
}

bool xoIoDeviceFile::seekg(std::int64_t offset, SeekStart start) {
    Private& self = *mPrivate;
    if (!self.file.isOpen() || self.hasFailed) return false;
    if (!self.allows(self.file.reads(), "seekg on", "the file is open for writing")) return false;
    // The size is needed only for a seek from the end, and costs a call to the system.
    const auto target = stream::seekTarget(self.readAt, start == SeekFromEnd ? self.size() : 0, offset, start);
    if (target) self.readAt = *target;
    return target.has_value();
}

bool xoIoDeviceFile::seekp(std::int64_t offset, SeekStart start) {
    Private& self = *mPrivate;
    if (!self.file.isOpen() || self.hasFailed || self.file.appends()) return false;
    if (!self.allows(self.file.writes(), "seekp on", "the file is open for reading")) return false;
    const auto target = stream::seekTarget(self.writeAt, start == SeekFromEnd ? self.size() : 0, offset, start);
    if (!target) return false;
    // Seeking to the present position keeps gathering writes.
    if (*target == self.writeAt) return true;
    if (self.holds == Private::Holds::Unwritten && !self.release()) return false;
    self.writeAt = *target;
    return true;
}

std::uint64_t xoIoDeviceFile::tellg() { return mPrivate->readAt; }

std::uint64_t xoIoDeviceFile::tellp() { return mPrivate->file.appends() ? mPrivate->size() : mPrivate->writeAt; }

}  // namespace xo
