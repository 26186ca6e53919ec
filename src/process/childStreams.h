// Moves bytes between a running child and what its host has chosen for its standard handles.
#ifndef XO_PROCESS_CHILDSTREAMS_H
#define XO_PROCESS_CHILDSTREAMS_H

#include <memory>
#include <optional>

#include "process/lineSplitter.h"
#include "process/redirection.h"

namespace xo::process {

// An operation of a pipe that goes on while nobody looks. It uses the memory of its owner until it has ended.
class PendingOperation {
public:
    enum class State { Idle, Running, Done, Aborted, Failed };

    HANDLE event() const { return mEvent.get(); }
    bool isRunning() const { return mIsRunning; }

    // Begin an operation; see what has become of it with look().
    void read(HANDLE pipe, char* buffer, DWORD size);
    void write(HANDLE pipe, const char* bytes, DWORD size);

    // Done: bytes were moved, once for each operation. Aborted: the thread that began it has ended, or it was
    // cancelled.
    State look(HANDLE pipe, DWORD& moved);

    // Ends the operation. Done when it had moved something before.
    State cancel(HANDLE pipe, DWORD& moved);

private:
    void begin();
    void end(BOOL isDone, DWORD error);
    State result(HANDLE pipe, bool wait, DWORD& moved);

    // Reset by hand, because both a wait and GetOverlappedResult look at it:
    // https://learn.microsoft.com/windows/win32/api/ioapiset/nf-ioapiset-getoverlappedresult
    platform::KernelHandle mEvent{::CreateEventW(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE,
                                                 /*bInitialState=*/FALSE,
                                                 /*lpName=*/nullptr)};
    OVERLAPPED mOverlapped{};
    bool mIsRunning = false;
    bool mHasFailed = false;  // to begin
};

// What a child writes: this process reads it and passes it on.
class OutputChannel {
public:
    OutputChannel(platform::FileHandle ours, std::shared_ptr<const OutputChoice> choice);
    ~OutputChannel();
    OutputChannel(const OutputChannel&) = delete;
    OutputChannel& operator=(const OutputChannel&) = delete;

    // One read, and what follows from it. False when there is nothing to do now, or never more.
    bool step();

    // The child has ended: what is in the pipe now is the rest.
    void limitToRest();

    HANDLE pendingEvent() const { return mOperation.isRunning() ? mOperation.event() : nullptr; }
    bool wasCut() const { return mWasCut; }
    const std::string& text() const { return mText; }

private:
    void pass();
    void keep(const char* bytes, std::size_t size);
    void end();

    platform::FileHandle mPipe;  // until the end of the output
    std::shared_ptr<const OutputChoice> mChoice;
    PendingOperation mOperation;
    std::unique_ptr<char[]> mBuffer;
    const char* mAt = nullptr;  // [mAt, mEnd) of the buffer has arrived and is not passed on
    const char* mEnd = nullptr;
    std::optional<std::uint64_t> mRest;  // bytes still to be read, once the child has ended
    bool mIsFinished = false;

    std::string mText;                   // of the choice Text
    std::optional<LineSplitter> mLines;  // of the choice Lines
    bool mWasCut = false;
};

// What a child reads: this process writes it.
class InputChannel {
public:
    InputChannel(platform::FileHandle ours, std::shared_ptr<const InputChoice> choice);
    ~InputChannel() { close(); }
    InputChannel(const InputChannel&) = delete;
    InputChannel& operator=(const InputChannel&) = delete;

    // One write, and what follows from it. False when there is nothing to do now, or never more.
    bool step();

    void close();
    HANDLE pendingEvent() const { return mOperation.isRunning() ? mOperation.event() : nullptr; }

private:
    bool refill();

    platform::FileHandle mPipe;  // until everything is written, or the child reads no more
    std::shared_ptr<const InputChoice> mChoice;
    PendingOperation mOperation;
    std::unique_ptr<char[]> mBuffer;  // of the choice Device
    const char* mAt = nullptr;        // [mAt, mEnd) is to be written
    const char* mEnd = nullptr;
    bool mIsLast = false;  // nothing follows it
};

// All of a child.
class ChildStreams {
public:
    // Takes the pipes of the handles whose choice is moved here.
    ChildStreams(StandardHandles& handles, const Redirection& choices);

    // Moves what can be moved without waiting, or a part of it. True when there may be more. Throws what handlers and
    // devices throw; the next call goes on behind that.
    bool move();

    // Once the child has ended: moves all that is left.
    void finish();

    // Appends the events that are set when move() has something to do.
    void appendEvents(HANDLE* events, DWORD& count) const;

    const OutputChannel* output() const { return mOutput.get(); }
    const OutputChannel* error() const { return mError.get(); }

private:
    std::unique_ptr<InputChannel> mInput;
    std::unique_ptr<OutputChannel> mOutput;
    std::unique_ptr<OutputChannel> mError;
    bool mIsMoving = false;  // a handler must not look at its own child
};

}  // namespace xo::process

#endif
