// Overlapped reads and writes that end by their time limit or a cancellation.
#include "pipe/pipeTransfer.h"

#include <algorithm>

namespace xo::pipe {
namespace {

// Windows copies data that is pending in a pipe into kernel memory. Pieces limit that, and sizes fit a DWORD.
constexpr std::uint64_t kLargestPiece = 1 << 20;

DWORD pieceOf(std::uint64_t size) { return static_cast<DWORD>((std::min)(size, kLargestPiece)); }

}  // namespace

xoNamedPipe::Result resultOf(DWORD error) {
    switch (error) {
        case ERROR_SUCCESS: return xoNamedPipe::ResultOk;
        case ERROR_BROKEN_PIPE:
        case ERROR_NO_DATA:  // "the pipe is being closed"
        case ERROR_PIPE_NOT_CONNECTED: return xoNamedPipe::ResultEnd;
        default: return xoNamedPipe::ResultFailed;
    }
}

xoNamedPipe::Result Lane::read(HANDLE pipe, char* buffer, std::uint64_t size, const Deadline& deadline,
                               const Cancellation& cancellation, std::uint64_t& done) {
    done = 0;
    if (cancellation.isRequested()) return xoNamedPipe::ResultCanceled;
    mOverlapped = {};
    mOverlapped.hEvent = mEvent.get();
    const BOOL isDone = ::ReadFile(pipe, buffer, pieceOf(size), /*lpNumberOfBytesRead=*/nullptr, &mOverlapped);
    const DWORD error = isDone ? ERROR_SUCCESS : ::GetLastError();
    return finish(pipe, error, deadline, cancellation, done);
}

xoNamedPipe::Result Lane::write(HANDLE pipe, const char* buffer, std::uint64_t size, const Deadline& deadline,
                                const Cancellation& cancellation, std::uint64_t& done) {
    done = 0;
    while (done != size) {
        if (cancellation.isRequested()) return xoNamedPipe::ResultCanceled;
        mOverlapped = {};
        mOverlapped.hEvent = mEvent.get();
        const BOOL isDone =
            ::WriteFile(pipe, buffer + done, pieceOf(size - done), /*lpNumberOfBytesWritten=*/nullptr, &mOverlapped);
        const DWORD error = isDone ? ERROR_SUCCESS : ::GetLastError();
        std::uint64_t written = 0;
        const xoNamedPipe::Result result = finish(pipe, error, deadline, cancellation, written);
        done += written;
        if (result != xoNamedPipe::ResultOk) return result;
    }
    return xoNamedPipe::ResultOk;
}

// `error` is the error code of ReadFile or WriteFile.
xoNamedPipe::Result Lane::finish(HANDLE pipe, DWORD error, const Deadline& deadline, const Cancellation& cancellation,
                                 std::uint64_t& done) {
    if (error != ERROR_SUCCESS && error != ERROR_IO_PENDING) return resultOf(error);
    xoNamedPipe::Result given = xoNamedPipe::ResultOk;  // set when the limit or a cancellation ends the wait
    if (error == ERROR_IO_PENDING) {
        const HANDLE handles[] = {mEvent.get(), cancellation.event()};
        const DWORD waited = ::WaitForMultipleObjects(2, handles, /*bWaitAll=*/FALSE, deadline.remainingMs());
        if (waited != WAIT_OBJECT_0) {
            given = waited == WAIT_TIMEOUT ? xoNamedPipe::ResultTimeout : xoNamedPipe::ResultCanceled;
            ::CancelIoEx(pipe, &mOverlapped);
        }
    }
    // An operation that ended before it could be cancelled counts as done: its bytes are not lost. A cancelled one uses
    // the buffer until it has ended, so its end is waited for.
    DWORD moved = 0;
    const BOOL isDone = ::GetOverlappedResult(pipe, &mOverlapped, &moved, /*bWait=*/given != xoNamedPipe::ResultOk);
    const DWORD endError = isDone ? ERROR_SUCCESS : ::GetLastError();
    done = moved;
    if (endError == ERROR_OPERATION_ABORTED && given != xoNamedPipe::ResultOk) return given;
    return resultOf(endError);
}

}  // namespace xo::pipe
