// The private record of xoNamedPipe, for the sources that it is spread over.
#ifndef XO_PIPE_PIPERECORD_H
#define XO_PIPE_PIPERECORD_H

#include <atomic>
#include <optional>

#include "pipe/pipePeer.h"
#include "pipe/pipeTransfer.h"

namespace xo {

struct xoNamedPipe::Private {
    enum class End { None, Client, Server, Child };

    // A message that has arrived in part.
    struct Incoming {
        unsigned char head[4];
        std::size_t headBytes = 0;  // that are in head
        std::string body;           // grown as bytes arrive
        std::size_t bodyBytes = 0;  // that are in body
    };

    // The connection.
    platform::FileHandle handle;  // while connected
    End end = End::None;
    bool canRead = true;
    bool canWrite = true;
    pipe::Cancellation cancellation;
    mutable std::optional<pipe::Peer> peer;  // once it was asked for

    // What the host has set.
    unsigned readLimitMs = kNoLimit;
    unsigned writeLimitMs = kNoLimit;
    std::uint32_t maxMessageBytes = kDefaultMaxMessageBytes;
    ServerTrust trust = TrustSameUserAndSystem;

    // Of the thread that reads, apart from the flags.
    pipe::Lane readLane;
    std::unique_ptr<char[]> readBuffer;  // of bufferBytes, from the first use on
    std::size_t readAt = 0;              // [readAt, readEnd) has arrived and is not read yet
    std::size_t readEnd = 0;
    std::uint64_t readTotal = 0;
    Incoming incoming;
    std::atomic<Result> readResult{ResultFailed};
    std::atomic<bool> hasReadError{false};

    // Of the thread that writes, apart from the flags.
    pipe::Lane writeLane;
    std::unique_ptr<char[]> writeBuffer;  // of bufferBytes, from the first use on
    std::size_t writeUsed = 0;            // bytes in the buffer that are not sent yet
    std::size_t writeSpace = 0;           // bytes that the buffer can still take; 0 unless connected and without error
    std::uint64_t writeTotal = 0;
    std::atomic<DWORD> writer{0};  // the thread that wrote last; 0 while the buffer is empty
    std::atomic<Result> writeResult{ResultFailed};
    std::atomic<bool> hasWriteError{false};

    std::uint32_t bufferBytes = kDefaultBufferBytes;

    // Begins a connection over the handle, which was opened for overlapped operations.
    void attach(platform::FileHandle connected, End newEnd, std::uint32_t newBufferBytes);
    // Forgets the results, errors and cancellation of the connection before.
    void clear();
    Result connect(const std::wstring& name, const pipe::Deadline& deadline, ConnectMode mode);
    Result admit(platform::FileHandle opened);
    bool close();
    const pipe::Peer& askPeer() const;

    // Sends what the calling thread has written, before it reads.
    void sendOwn() {
        if (writer.load(std::memory_order_relaxed) != 0) sendIfWriter();
    }
    void sendIfWriter();
    bool canBeginReading();
    std::uint64_t takeBuffered(char* buffer, std::uint64_t size);
    Result fill(const pipe::Deadline& deadline);
    std::uint64_t read(char* buffer, std::uint64_t size, std::uint64_t atLeast, const pipe::Deadline& deadline);
    bool failReading(Result result);
    bool readHead(const pipe::Deadline& deadline);
    bool readBody(std::size_t length, const pipe::Deadline& deadline);

    bool canBeginWriting();
    bool send(const pipe::Deadline& deadline);
    bool transmit(const char* bytes, std::uint64_t size, const pipe::Deadline& deadline);
    std::uint64_t write(const char* buffer, std::uint64_t size);
    void gather(const char* bytes, std::size_t size);
    bool failWriting(Result result);
};

}  // namespace xo

#endif
