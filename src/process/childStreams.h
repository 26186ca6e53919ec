// Moves bytes between a running child and what its host has chosen for its standard handles.
#ifndef XO_PROCESS_CHILDSTREAMS_H
#define XO_PROCESS_CHILDSTREAMS_H

#include <memory>
#include <optional>
#include <utility>

#include "process/lineSplitter.h"
#include "process/redirection.h"

namespace xo::process {

// An overlapped operation that continues between two looks at the child. Windows uses the event, mOverlapped and the
// given memory until the operation has ended, so the owner must call cancel() before it releases them.
class PendingOperation {
public:
    enum class State { Idle, Running, Done, Aborted, Failed };

    HANDLE event() const { return mEvent.get(); }
    bool isRunning() const { return mIsRunning; }

    // Start an operation, only while none is running. look() reports its end, and also a failure to start.
    void read(HANDLE pipe, char* buffer, DWORD size);
    void write(HANDLE pipe, const char* bytes, DWORD size);

    // The state without waiting. Done is returned once for each operation, with the number of bytes moved. Aborted: it
    // was cancelled, or the thread that started it has ended.
    State look(HANDLE pipe, DWORD& moved);

    // Cancels the operation and waits for its end. Done when it had ended before.
    State cancel(HANDLE pipe, DWORD& moved);

    // The error code of the operation that look() or cancel() has reported as Failed last.
    DWORD error() const { return mError; }

private:
    void begin();
    void end(BOOL isDone, DWORD error);
    State result(HANDLE pipe, bool wait, DWORD& moved);

    // A manual-reset event: a wait would reset another one, and GetOverlappedResult might then wait without end.
    // https://learn.microsoft.com/windows/win32/api/ioapiset/nf-ioapiset-getoverlappedresult
    platform::KernelHandle mEvent{::CreateEventW(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                                                 /*bInitialState=*/FALSE,
                                                 /*lpName=*/nullptr)};
    OVERLAPPED mOverlapped{};
    bool mIsRunning = false;
    bool mHasFailed = false;  // to start; look() reports it once
    DWORD mError = ERROR_SUCCESS;
};

// Reads what a child writes, and passes it to the text, line handler or device of the host.
class OutputChannel {
public:
    OutputChannel(platform::FileHandle ours, std::shared_ptr<const OutputChoice> choice);
    ~OutputChannel();
    OutputChannel(const OutputChannel&) = delete;
    OutputChannel& operator=(const OutputChannel&) = delete;

    // Takes the result of one read and passes it on. False when nothing can be done now, or the output has ended.
    // Throws what a handler or device throws.
    bool step();

    // Called when the child has ended: limits the output to the bytes that are in the pipe now.
    void limitToRest();

    // Set when the running read ends; null when none is running.
    HANDLE pendingEvent() const { return mOperation.isRunning() ? mOperation.event() : nullptr; }
    bool wasCut() const { return mWasCut; }
    const std::string& text() const { return mText; }
    std::string takeText() { return std::move(mText); }

private:
    // Pass on the bytes [mAt, mEnd), append to the text within its limit, and end the output.
    void pass();
    void keep(const char* bytes, std::size_t size);
    void end();
    // Called when Windows refuses to read. What is still in the pipe is lost, unless the pipe is at its end.
    void noteFailure(DWORD error) { mWasCut = mWasCut || error != ERROR_BROKEN_PIPE; }

    platform::FileHandle mPipe;  // until the end of the output
    std::shared_ptr<const OutputChoice> mChoice;
    PendingOperation mOperation;
    std::unique_ptr<char[]> mBuffer;
    const char* mAt = nullptr;  // [mAt, mEnd) of the buffer has arrived but is not passed on yet
    const char* mEnd = nullptr;
    std::optional<std::uint64_t> mRest;  // bytes still to be read, once the child has ended
    bool mIsFinished = false;

    std::string mText;                   // of the choice Text
    std::optional<LineSplitter> mLines;  // of the choice Lines
    bool mWasCut = false;                // bytes were dropped
};

// Writes the text or the data of a device that a child reads.
class InputChannel {
public:
    InputChannel(platform::FileHandle ours, std::shared_ptr<const InputChoice> choice);
    ~InputChannel() { close(); }
    InputChannel(const InputChannel&) = delete;
    InputChannel& operator=(const InputChannel&) = delete;

    // Takes the result of one write and starts the next one. False when nothing can be done now, or the input is
    // closed. Throws what a device throws.
    bool step();

    // Ends the input: the child reads what is in the pipe, and then its end.
    void close();
    HANDLE pendingEvent() const { return mOperation.isRunning() ? mOperation.event() : nullptr; }

private:
    // Reads the next bytes from the device. False when there are none.
    bool refill();

    platform::FileHandle mPipe;  // until everything is written, or the child reads no more
    std::shared_ptr<const InputChoice> mChoice;
    PendingOperation mOperation;
    std::unique_ptr<char[]> mBuffer;  // of the choice Device
    const char* mAt = nullptr;        // [mAt, mEnd) is to be written
    const char* mEnd = nullptr;
    bool mIsLast = false;  // nothing follows [mAt, mEnd)
};

// The channels of one child. All functions run on the thread that looks at the child.
class ChildStreams {
public:
    // Takes those pipes out of `handles` whose data this object moves. Those of the choice Pipe stay there.
    ChildStreams(StandardHandles& handles, const Redirection& choices);

    // Moves a limited amount of what can be moved without waiting. True when there may be more. Throws what handlers
    // and devices throw; the next call continues behind that.
    bool move();

    // Called when the child has ended: moves all that is left.
    void finish();

    // Appends at most three events, which are set when move() has something to do.
    void appendEvents(HANDLE* events, DWORD& count) const;

    // The texts of the outputs, which are empty then.
    std::string takeOutputText() { return mOutput ? mOutput->takeText() : std::string(); }
    std::string takeErrorText() { return mError ? mError->takeText() : std::string(); }

    const OutputChannel* output() const { return mOutput.get(); }
    const OutputChannel* error() const { return mError.get(); }

private:
    std::unique_ptr<InputChannel> mInput;
    std::unique_ptr<OutputChannel> mOutput;
    std::unique_ptr<OutputChannel> mError;
    bool mIsMoving = false;  // a handler may call a function that looks at its own child; move() does nothing then
};

}  // namespace xo::process

#endif
