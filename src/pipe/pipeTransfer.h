// Reads and writes pipes, with a time limit and cancellation.
#ifndef XO_PIPE_PIPETRANSFER_H
#define XO_PIPE_PIPETRANSFER_H

#include "pipe/cancellation.h"
#include "xoSystem/xoNamedPipe.h"

namespace xo::pipe {

// The result for an error code of reading or writing. A peer that has left is ResultEnd, not a failure.
xoNamedPipe::Result resultOf(DWORD error);

// One direction of a pipe that was opened for overlapped operations, used by one thread at a time. When a call returns,
// no operation is pending, so the caller's buffer is free.
class Lane {
public:
    // False when the event could not be made; then no other function may be called.
    bool isUsable() const { return static_cast<bool>(mEvent); }

    // Read at least one byte, or write all of them. done is the number of bytes that were moved, whatever the result.
    xoNamedPipe::Result read(HANDLE pipe, char* buffer, std::uint64_t size, const Deadline& deadline,
                             const Cancellation& cancellation, std::uint64_t& done);
    xoNamedPipe::Result write(HANDLE pipe, const char* buffer, std::uint64_t size, const Deadline& deadline,
                              const Cancellation& cancellation, std::uint64_t& done);

private:
    // Waits for the end of a started operation, or cancels it at the deadline or on request.
    xoNamedPipe::Result finish(HANDLE pipe, DWORD error, const Deadline& deadline, const Cancellation& cancellation,
                               std::uint64_t& done);

    // A manual-reset event: a wait would reset another one, and GetOverlappedResult might then wait without end.
    // https://learn.microsoft.com/windows/win32/api/ioapiset/nf-ioapiset-getoverlappedresult
    platform::KernelHandle mEvent{::CreateEventW(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                                                 /*bInitialState=*/FALSE,
                                                 /*lpName=*/nullptr)};
    OVERLAPPED mOverlapped{};
};

}  // namespace xo::pipe

#endif
