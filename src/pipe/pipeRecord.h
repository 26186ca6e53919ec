// The private record of xoNamedPipe, whose functions are in two sources.
#ifndef XO_PIPE_PIPERECORD_H
#define XO_PIPE_PIPERECORD_H

#include <atomic>
#include <optional>

#include "pipe/pipePeer.h"
#include "pipe/pipeTransfer.h"

namespace xo {

// One thread may read while another one writes, and any thread may call cancel(). So the members for reading and those
// for writing are disjoint, and what the other thread or a status function reads is atomic. Nothing is locked.
struct xoNamedPipe::Private {
    // Which end this is. It decides how the peer is determined; the end of a child's pipe has none.
    enum class End { None, Client, Server, Child };

    // A message that has arrived in part.
    struct Incoming {
        unsigned char head[4];      // the length of the body, little-endian
        std::size_t headBytes = 0;  // how many of head have arrived
        std::string body;           // grown as bytes arrive
        std::size_t bodyBytes = 0;  // how many of body have arrived
    };

    // The connection.
    platform::FileHandle handle;  // owns nothing unless connected
    End end = End::None;
    bool canRead = true;  // false for one direction of a child's pipe
    bool canWrite = true;
    pipe::Cancellation cancellation;
    mutable std::optional<pipe::Peer> peer;  // set by a question; once it is final, for the whole connection

    // What the host has set.
    unsigned readLimitMs = kNoLimit;
    unsigned writeLimitMs = kNoLimit;
    std::uint32_t maxMessageBytes = kDefaultMaxMessageBytes;
    ServerTrust trust = TrustSameUserAndSystem;

    // Used by the thread that reads. The atomic members may be read by any thread.
    pipe::Lane readLane;
    std::unique_ptr<char[]> readBuffer;  // of bufferBytes, from the first use on
    std::size_t readAt = 0;              // [readAt, readEnd) has arrived and is not read yet
    std::size_t readEnd = 0;
    std::uint64_t readTotal = 0;
    Incoming incoming;
    // An error of reading or writing stays until the next connection.
    std::atomic<Result> readResult{ResultFailed};
    std::atomic<bool> hasReadError{false};

    // Used by the thread that writes. The atomic members may be read by any thread.
    pipe::Lane writeLane;
    std::unique_ptr<char[]> writeBuffer;  // of bufferBytes, from the first use on
    std::size_t writeUsed = 0;            // bytes in the buffer that are not sent yet
    std::size_t writeSpace = 0;           // bytes that the buffer can still take; 0 unless connected and without error
    std::uint64_t writeTotal = 0;
    std::atomic<DWORD> writer{0};  // the thread that wrote last; 0 while the buffer is empty
    std::atomic<Result> writeResult{ResultFailed};
    std::atomic<bool> hasWriteError{false};

    // The size of each buffer. When attach() changes it, it releases both.
    std::uint32_t bufferBytes = kDefaultBufferBytes;

    // Begins a connection over the handle, which was opened for overlapped operations.
    void attach(platform::FileHandle connected, End newEnd, std::uint32_t newBufferBytes);
    // Forgets the results, errors and cancellation of the connection before.
    void clear();
    // Opens the pipe, again and again until the deadline while the server is absent or busy.
    Result connect(const std::wstring& name, const pipe::Deadline& deadline, ConnectMode mode);
    // Attaches a pipe that connect() has opened, or closes it when its owner is not trusted.
    Result admit(platform::FileHandle opened);
    // Sends the buffer and closes the handle. False when written bytes were lost.
    bool close();
    const pipe::Peer& askPeer() const;

    // Sends the buffer if the calling thread has written to it. What another thread has written stays in the buffer:
    // that thread may be writing now.
    void sendOwn() {
        if (writer.load(std::memory_order_relaxed) != 0) sendIfWriter();
    }
    void sendIfWriter();
    // False with the error set when nothing can be read; otherwise the buffer exists.
    bool canBeginReading();
    std::uint64_t takeBuffered(char* buffer, std::uint64_t size);
    Result fill(const pipe::Deadline& deadline);
    std::uint64_t read(char* buffer, std::uint64_t size, std::uint64_t atLeast, const pipe::Deadline& deadline);
    // Sets the result and the error. Returns false, so that a caller can return its value.
    bool failReading(Result result);
    // False when the deadline or the end came first; the next call continues.
    bool readHead(const pipe::Deadline& deadline);
    bool readBody(std::size_t length, const pipe::Deadline& deadline);

    // False with the error set when nothing can be written; otherwise the buffer exists and writeSpace is its free
    // part.
    bool canBeginWriting();
    // Sends the buffer, and bytes directly from the caller's memory. False with the error set.
    bool send(const pipe::Deadline& deadline);
    bool transmit(const char* bytes, std::uint64_t size, const pipe::Deadline& deadline);
    // Writes any number of bytes, and appends bytes that fit into the buffer. Only the first one checks the state.
    std::uint64_t write(const char* buffer, std::uint64_t size);
    void gather(const char* bytes, std::size_t size);
    // Sets the result and the error and discards the buffer. Returns false.
    bool failWriting(Result result);
};

}  // namespace xo

#endif
