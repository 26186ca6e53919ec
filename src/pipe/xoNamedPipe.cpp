// Reading and writing of a connected pipe: bytes through two buffers, and messages, which are preceded by their length.
#include "xoSystem/xoNamedPipe.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "pipe/pipeRecord.h"
#include "stream/deviceMessage.h"
#include "stream/shortCopy.h"
#include "xoSystem/xoLog.h"

namespace xo {
namespace {

constexpr std::size_t kHeadBytes = 4;             // the length of a message
constexpr std::size_t kFirstBodyBytes = 0x10000;  // the first allocation for a message of any length

// Little-endian on every machine.
void writeHead(unsigned char (&head)[kHeadBytes], std::uint32_t length) {
    for (std::size_t i = 0; i != kHeadBytes; ++i) head[i] = static_cast<unsigned char>(length >> 8 * i);
}

std::uint32_t lengthIn(const unsigned char (&head)[kHeadBytes]) {
    std::uint32_t length = 0;
    for (std::size_t i = 0; i != kHeadBytes; ++i) length |= static_cast<std::uint32_t>(head[i]) << 8 * i;
    return length;
}

// False when memory is short: the length is the peer's, so that is no reason to throw.
bool resize(std::string& text, std::size_t size) {
    try {
        text.resize(size);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace

// ---- reading ----

void xoNamedPipe::Private::sendIfWriter() {
    if (writer.load(std::memory_order_relaxed) == ::GetCurrentThreadId()) send(pipe::Deadline(writeLimitMs));
}

// Sends first what this thread has written: the peer may wait for it before it answers.
bool xoNamedPipe::Private::canBeginReading() {
    sendOwn();
    if (hasReadError) return false;
    if (!handle) return failReading(ResultFailed);
    if (!canRead) {
        stream::report("xoNamedPipe cannot read");
        return failReading(ResultFailed);
    }
    if (!readBuffer) readBuffer.reset(new (std::nothrow) char[bufferBytes]);
    return readBuffer || failReading(ResultFailed);
}

bool xoNamedPipe::Private::failReading(Result result) {
    readResult = result;
    hasReadError = true;
    return false;
}

// At most size bytes of those in the buffer; 0 when it is empty.
std::uint64_t xoNamedPipe::Private::takeBuffered(char* buffer, std::uint64_t size) {
    const std::size_t count = (std::min)(static_cast<std::size_t>(size), readEnd - readAt);
    stream::copyShort(buffer, readBuffer.get() + readAt, count);
    readAt += count;
    return count;
}

// Called only while the buffer is empty. After a time-out the buffer may have bytes: an operation may end while it is
// cancelled.
xoNamedPipe::Result xoNamedPipe::Private::fill(const pipe::Deadline& deadline) {
    readAt = readEnd = 0;
    std::uint64_t arrived = 0;
    const Result result = readLane.read(handle.get(), readBuffer.get(), bufferBytes, deadline, cancellation, arrived);
    readEnd = static_cast<std::size_t>(arrived);
    return result;
}

// Waits until atLeast bytes have arrived, and takes at most size bytes, size >= atLeast. Returns fewer than atLeast at
// the end, at the deadline, and on failure, with the reason in readResult.
std::uint64_t xoNamedPipe::Private::read(char* buffer, std::uint64_t size, std::uint64_t atLeast,
                                         const pipe::Deadline& deadline) {
    std::uint64_t got = takeBuffered(buffer, size);
    Result result = ResultOk;
    while (got < atLeast && result == ResultOk) {
        const std::uint64_t rest = size - got;
        // At least a buffer's size is read directly into the caller's memory.
        if (rest >= bufferBytes) {
            std::uint64_t arrived = 0;
            result = readLane.read(handle.get(), buffer + got, rest, deadline, cancellation, arrived);
            got += arrived;
        } else {
            result = fill(deadline);
            got += takeBuffered(buffer + got, rest);
        }
    }
    readTotal += got;
    readResult = got >= atLeast ? ResultOk : result;
    // Neither the end nor a time-out is an error: reading can continue.
    if (readResult == ResultFailed) hasReadError = true;
    return got;
}

bool xoNamedPipe::waitForData(unsigned timeoutMs) {
    Private& self = *mPrivate;
    if (!self.canBeginReading()) return false;
    Result result = ResultOk;
    const pipe::Deadline deadline(timeoutMs);
    // Repeated, because the peer may write an empty block, which ends a read without bytes.
    while (self.readAt == self.readEnd && result == ResultOk) result = self.fill(deadline);
    self.readResult = result;
    if (result == ResultFailed) self.hasReadError = true;
    return result == ResultOk;
}

std::uint64_t xoNamedPipe::readSome(char* buffer, std::uint64_t size) {
    Private& self = *mPrivate;
    if (!buffer || size == 0 || !self.canBeginReading()) return 0;
    return self.read(buffer, size, /*atLeast=*/1, pipe::Deadline(self.readLimitMs));
}

std::uint64_t xoNamedPipe::readBytes(char* buffer, std::uint64_t size) {
    Private& self = *mPrivate;
    if (!buffer || size == 0) return 0;
    // The quick way for a value that is in the buffer. It needs no other check: the buffer is empty unless connected.
    if (size <= self.readEnd - self.readAt && !self.hasReadError) {
        self.sendOwn();
        self.readResult.store(ResultOk, std::memory_order_relaxed);
        self.readTotal += size;
        return self.takeBuffered(buffer, size);
    }
    if (!self.canBeginReading()) return 0;
    return self.read(buffer, size, /*atLeast=*/size, pipe::Deadline(self.readLimitMs));
}

// Keeps the bytes that have arrived, so that the next call can continue after a time-out.
bool xoNamedPipe::Private::readHead(const pipe::Deadline& deadline) {
    const std::size_t missing = kHeadBytes - incoming.headBytes;
    if (missing == 0) return true;
    auto* const at = reinterpret_cast<char*>(incoming.head) + incoming.headBytes;
    const std::uint64_t got = read(at, missing, missing, deadline);
    incoming.headBytes += static_cast<std::size_t>(got);
    return got == missing;
}

// The memory grows with what has arrived, because the announced length may be false.
bool xoNamedPipe::Private::readBody(std::size_t length, const pipe::Deadline& deadline) {
    while (incoming.bodyBytes < length) {
        // Doubled each time, so that copying stays proportional to the length.
        const std::size_t size = (std::min)(length, (std::max)(2 * incoming.bodyBytes, kFirstBodyBytes));
        if (!resize(incoming.body, size)) return failReading(ResultFailed);
        const std::size_t missing = size - incoming.bodyBytes;
        const std::uint64_t got = read(incoming.body.data() + incoming.bodyBytes, missing, missing, deadline);
        incoming.bodyBytes += static_cast<std::size_t>(got);
        if (got < missing) return false;
    }
    return true;
}

bool xoNamedPipe::readMessage(std::string& message) {
    Private& self = *mPrivate;
    if (!self.canBeginReading()) return false;
    const pipe::Deadline deadline(self.readLimitMs);
    if (!self.readHead(deadline)) return false;
    const std::uint32_t length = lengthIn(self.incoming.head);
    // Its bytes stay in the pipe, and no later message can be found behind them. So the error stays.
    if (length > self.maxMessageBytes) {
        xoLogObject(xoLogWarning) << "xoNamedPipe refused a message of " << length << " bytes (more than "
                                  << self.maxMessageBytes << ")";
        return self.failReading(ResultTooLong);
    }
    if (!self.readBody(length, deadline)) return false;
    message.swap(self.incoming.body);
    message.resize(length);
    // The caller's memory is used again for the next message, unless there is so much of it that it should not be kept.
    if (self.incoming.body.capacity() > self.bufferBytes)
        self.incoming.body = {};
    else
        self.incoming.body.clear();
    self.incoming.headBytes = self.incoming.bodyBytes = 0;
    self.readResult = ResultOk;
    return true;
}

bool xoNamedPipe::atEnd() const {
    const Private& self = *mPrivate;
    if (!self.handle || !self.canRead) return true;
    if (self.readAt != self.readEnd) return false;
    DWORD available = 0;
    // Fails once the peer has closed its end and nothing is left to read.
    return !::PeekNamedPipe(self.handle.get(), /*lpBuffer=*/nullptr, /*nBufferSize=*/0, /*lpBytesRead=*/nullptr,
                            &available, /*lpBytesLeftThisMessage=*/nullptr);
}

// ---- writing ----

bool xoNamedPipe::Private::failWriting(Result result) {
    writeResult = result;
    hasWriteError = true;
    writeSpace = writeUsed = 0;  // without free space every write comes to canBeginWriting, which refuses it
    writer = 0;
    return false;
}

bool xoNamedPipe::Private::canBeginWriting() {
    if (hasWriteError) return false;
    if (!handle) return failWriting(ResultFailed);
    if (!canWrite) {
        stream::report("xoNamedPipe cannot write");
        return failWriting(ResultFailed);
    }
    if (!writeBuffer) {
        writeBuffer.reset(new (std::nothrow) char[bufferBytes]);
        if (!writeBuffer) return failWriting(ResultFailed);
    }
    writeSpace = bufferBytes - writeUsed;
    return true;
}

bool xoNamedPipe::Private::transmit(const char* bytes, std::uint64_t size, const pipe::Deadline& deadline) {
    std::uint64_t written = 0;
    const Result result = writeLane.write(handle.get(), bytes, size, deadline, cancellation, written);
    // An unknown part may have been sent, and later bytes would be misplaced behind it. So the error stays.
    if (result != ResultOk) return failWriting(result);
    writeResult = ResultOk;
    return true;
}

bool xoNamedPipe::Private::send(const pipe::Deadline& deadline) {
    if (writeUsed == 0) return true;
    if (!transmit(writeBuffer.get(), writeUsed, deadline)) return false;
    writeUsed = 0;
    writeSpace = bufferBytes;
    writer = 0;
    return true;
}

void xoNamedPipe::Private::gather(const char* bytes, std::size_t size) {
    stream::copyShort(writeBuffer.get() + writeUsed, bytes, size);
    writeUsed += size;
    writeSpace -= size;
    // Relaxed: a thread only compares the value with its own number, and sees its own store in any case.
    writer.store(::GetCurrentThreadId(), std::memory_order_relaxed);
}

std::uint64_t xoNamedPipe::Private::write(const char* buffer, std::uint64_t size) {
    if (!canBeginWriting()) return 0;
    const pipe::Deadline deadline(writeLimitMs);
    // What is buffered is sent first, so that the bytes stay in order.
    if (size > writeSpace && !send(deadline)) return 0;
    if (size >= bufferBytes) {
        if (!transmit(buffer, size, deadline)) return 0;
    } else {
        gather(buffer, static_cast<std::size_t>(size));
        if (writeSpace == 0 && !send(deadline)) return 0;
    }
    writeResult = ResultOk;
    writeTotal += size;
    return size;
}

std::uint64_t xoNamedPipe::writeBytes(const char* buffer, std::uint64_t size) {
    Private& self = *mPrivate;
    if (!buffer || size == 0) return 0;
    // The quick way for a value that leaves some of the buffer free. writeSpace is 0 while anything must be checked.
    if (size >= self.writeSpace) return self.write(buffer, size);
    self.gather(buffer, static_cast<std::size_t>(size));
    self.writeResult.store(ResultOk, std::memory_order_relaxed);
    self.writeTotal += size;
    return size;
}

bool xoNamedPipe::writeMessage(const std::string& message) { return writeMessage(message.data(), message.size()); }

bool xoNamedPipe::writeMessage(const char* data, std::uint64_t size) {
    Private& self = *mPrivate;
    if (!self.canBeginWriting()) return false;
    if (!data && size != 0) return self.writeResult = ResultFailed, false;
    if (size > self.maxMessageBytes) return self.writeResult = ResultTooLong, false;
    const pipe::Deadline deadline(self.writeLimitMs);
    unsigned char head[kHeadBytes];
    writeHead(head, static_cast<std::uint32_t>(size));
    if (kHeadBytes + size > self.writeSpace && !self.send(deadline)) return false;
    // Fits: an empty buffer always has more than kHeadBytes.
    self.gather(reinterpret_cast<const char*>(head), kHeadBytes);
    // A short message goes out in one operation with its length, a long one in a second operation without a copy.
    const bool isShort = size <= self.writeSpace;
    if (isShort && size != 0) self.gather(data, static_cast<std::size_t>(size));
    if (!self.send(deadline) || !(isShort || self.transmit(data, size, deadline))) return false;
    self.writeTotal += kHeadBytes + size;
    return true;
}

bool xoNamedPipe::flush() {
    Private& self = *mPrivate;
    return self.canBeginWriting() && self.send(pipe::Deadline(self.writeLimitMs));
}

// ---- state ----

xoNamedPipe::Result xoNamedPipe::getReadResult() const { return mPrivate->readResult; }

xoNamedPipe::Result xoNamedPipe::getWriteResult() const { return mPrivate->writeResult; }

bool xoNamedPipe::hasError() const { return mPrivate->hasReadError || mPrivate->hasWriteError; }

bool xoNamedPipe::seekg(std::int64_t, SeekStart) {
    // The error flag is not raised: reading and writing are not affected.
    stream::report("xoNamedPipe cannot seek");
    return false;
}

bool xoNamedPipe::seekp(std::int64_t offset, SeekStart start) { return seekg(offset, start); }

std::uint64_t xoNamedPipe::tellg() { return mPrivate->readTotal; }

std::uint64_t xoNamedPipe::tellp() { return mPrivate->writeTotal; }

}  // namespace xo
