// One read or write of a pipe at a time, with a limit and cancellation.
#ifndef XO_PIPE_PIPETRANSFER_H
#define XO_PIPE_PIPETRANSFER_H

#include "pipe/cancellation.h"
#include "xoSystem/xoNamedPipe.h"

namespace xo::pipe {

// The result that stands for an error code of reading or writing.
xoNamedPipe::Result resultOf(DWORD error);

// One direction of a pipe that was opened for overlapped operations. No operation outlives its call.
class Lane {
public:
    bool isUsable() const { return static_cast<bool>(mEvent); }

    // Read at least one byte, or write all of them. done is the number of bytes that were moved, whatever the result.
    xoNamedPipe::Result read(HANDLE pipe, char* buffer, std::uint64_t size, const Deadline& deadline,
                             const Cancellation& cancellation, std::uint64_t& done);
    xoNamedPipe::Result write(HANDLE pipe, const char* buffer, std::uint64_t size, const Deadline& deadline,
                              const Cancellation& cancellation, std::uint64_t& done);

private:
    xoNamedPipe::Result finish(HANDLE pipe, DWORD error, const Deadline& deadline, const Cancellation& cancellation,
                               std::uint64_t& done);

    // Reset by hand, because both a wait and GetOverlappedResult look at it:
    // https://learn.microsoft.com/windows/win32/api/ioapiset/nf-ioapiset-getoverlappedresult
    platform::KernelHandle mEvent{::CreateEventW(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                                                 /*bInitialState=*/FALSE,
                                                 /*lpName=*/nullptr)};
    OVERLAPPED mOverlapped{};
};

}  // namespace xo::pipe

#endif
