// Moves bytes between a child and its host by overlapped operations, on the thread of the host.
#include "process/childStreams.h"

#include <algorithm>
#include <new>

#include "xoSystem/xoIoDeviceBase.h"

namespace xo::process {
namespace {

constexpr std::size_t kBufferBytes = 65536;  // as large as the buffer of the pipe (pipePair.cpp)
constexpr int kMostRounds = 16;  // in one call of move(), which would not return while a child writes quickly

// Sets a flag while it exists, also when a handler throws.
class FlagGuard {
public:
    explicit FlagGuard(bool& flag) : mFlag(flag) { mFlag = true; }
    ~FlagGuard() { mFlag = false; }
    FlagGuard(const FlagGuard&) = delete;
    FlagGuard& operator=(const FlagGuard&) = delete;

private:
    bool& mFlag;
};

}  // namespace

// ---- PendingOperation ----

void PendingOperation::begin() {
    mOverlapped = {};
    mOverlapped.hEvent = mEvent.get();
}

// An operation that ended at once counts as running: its event is set too, and look() reports its result.
void PendingOperation::end(BOOL isDone, DWORD error) {
    mHasFailed = !isDone && error != ERROR_IO_PENDING;
    mError = error;
    mIsRunning = !mHasFailed;
}

void PendingOperation::read(HANDLE pipe, char* buffer, DWORD size) {
    begin();
    const BOOL isDone = ::ReadFile(pipe, buffer, size, /*lpNumberOfBytesRead=*/nullptr, &mOverlapped);
    end(isDone, ::GetLastError());
}

void PendingOperation::write(HANDLE pipe, const char* bytes, DWORD size) {
    begin();
    const BOOL isDone = ::WriteFile(pipe, bytes, size, /*lpNumberOfBytesWritten=*/nullptr, &mOverlapped);
    end(isDone, ::GetLastError());
}

PendingOperation::State PendingOperation::result(HANDLE pipe, bool wait, DWORD& moved) {
    moved = 0;
    if (mHasFailed) return mHasFailed = false, State::Failed;
    if (!mIsRunning) return State::Idle;
    const BOOL isDone = ::GetOverlappedResult(pipe, &mOverlapped, &moved, wait);
    const DWORD error = isDone ? ERROR_SUCCESS : ::GetLastError();
    if (error == ERROR_IO_INCOMPLETE) return State::Running;
    mIsRunning = false;
    if (isDone) return State::Done;
    mError = error;
    return error == ERROR_OPERATION_ABORTED ? State::Aborted : State::Failed;
}

PendingOperation::State PendingOperation::look(HANDLE pipe, DWORD& moved) {
    return result(pipe, /*wait=*/false, moved);
}

PendingOperation::State PendingOperation::cancel(HANDLE pipe, DWORD& moved) {
    if (mIsRunning) ::CancelIoEx(pipe, &mOverlapped);
    return result(pipe, /*wait=*/true, moved);
}

// ---- OutputChannel ----

OutputChannel::OutputChannel(platform::FileHandle ours, std::shared_ptr<const OutputChoice> choice)
    : mPipe(std::move(ours)), mChoice(std::move(choice)), mBuffer(new char[kBufferBytes]) {
    if (mChoice->kind == OutputChoice::Kind::Lines) mLines.emplace(mChoice->handler);
}

// Waits for the end of the operation, because the system writes to the buffer until then.
OutputChannel::~OutputChannel() {
    DWORD unused = 0;
    mOperation.cancel(mPipe.get(), unused);
}

bool OutputChannel::step() {
    if (mAt != mEnd) return pass(), true;  // what was left by an exception
    if (mIsFinished) return false;
    if (!mPipe || mRest == std::uint64_t{0}) return end(), true;
    if (!mOperation.isRunning()) {
        const std::uint64_t size = (std::min)(mRest.value_or(kBufferBytes), std::uint64_t{kBufferBytes});
        mOperation.read(mPipe.get(), mBuffer.get(), static_cast<DWORD>(size));
    }
    DWORD arrived = 0;
    switch (mOperation.look(mPipe.get(), arrived)) {
        case PendingOperation::State::Running:
            if (!mRest) return false;
            // Not expected, as no more was requested than the pipe contained.
            if (mOperation.cancel(mPipe.get(), arrived) != PendingOperation::State::Done) {
                mWasCut = true;
                return end(), true;
            }
            break;
        case PendingOperation::State::Done: break;
        // Aborted: the next step reads again.
        case PendingOperation::State::Aborted: return true;
        // Mostly ERROR_BROKEN_PIPE, as all processes have closed their end.
        case PendingOperation::State::Failed: noteFailure(mOperation.error()); return end(), true;
        case PendingOperation::State::Idle: return end(), true;
    }
    if (mRest) *mRest -= arrived;
    mAt = mBuffer.get();
    mEnd = mAt + arrived;
    pass();
    return true;
}

// A pending read is cancelled; if it has just ended, its bytes count. What the pipe contains now was written by the
// child or by its own children; what arrives later is not read.
void OutputChannel::limitToRest() {
    if (!mPipe || mRest) return;
    DWORD arrived = 0;
    const PendingOperation::State state = mOperation.cancel(mPipe.get(), arrived);
    if (state == PendingOperation::State::Failed) noteFailure(mOperation.error());
    if (state == PendingOperation::State::Done) {
        mAt = mBuffer.get();
        mEnd = mAt + arrived;
    }
    DWORD available = 0;
    if (!::PeekNamedPipe(mPipe.get(), /*lpBuffer=*/nullptr, /*nBufferSize=*/0, /*lpBytesRead=*/nullptr, &available,
                         /*lpBytesLeftThisMessage=*/nullptr))
        noteFailure(::GetLastError());
    mRest = available;
}

// Handlers and devices may throw. Their bytes count as passed on before the call, so that nothing is passed on twice. A
// device that fails once gets nothing more.
void OutputChannel::pass() {
    if (mLines) return mLines->take(mAt, mEnd);
    const char* const bytes = std::exchange(mAt, mEnd);
    const auto size = static_cast<std::size_t>(mEnd - bytes);
    if (mChoice->kind == OutputChoice::Kind::Text)
        keep(bytes, size);
    else if (mWasCut || mChoice->device->writeBytes(bytes, size) != size)
        mWasCut = true;
}

// A text without a hole: once bytes were dropped, all that follows is dropped, too.
void OutputChannel::keep(const char* bytes, std::size_t size) {
    if (mWasCut) return;
    // Never negative: the text is never longer than maxBytes.
    const std::uint64_t allowed = mChoice->maxBytes - mText.size();
    try {
        mText.append(bytes, static_cast<std::size_t>((std::min)(allowed, std::uint64_t{size})));
        mWasCut = size > allowed;
    } catch (const std::bad_alloc&) {
        mWasCut = true;
    }
}

void OutputChannel::end() {
    // The last line's handler may throw. The pipe is closed by then and mIsFinished is still false, so the next step
    // comes back here, and the handler does not get the line again.
    mPipe.reset();
    if (mLines) mLines->finish();
    mIsFinished = true;
}

// ---- InputChannel ----

InputChannel::InputChannel(platform::FileHandle ours, std::shared_ptr<const InputChoice> choice)
    : mPipe(std::move(ours)), mChoice(std::move(choice)) {
    mIsLast = mChoice->kind == InputChoice::Kind::Text;
    // The text is written from the choice itself, which is shared and does not change.
    if (mIsLast) {
        mAt = mChoice->text.data();
        mEnd = mAt + mChoice->text.size();
    } else {
        mBuffer.reset(new char[kBufferBytes]);
    }
}

bool InputChannel::step() {
    if (!mPipe) return false;
    if (!mOperation.isRunning()) {
        if (mAt == mEnd && !refill()) return close(), true;
        // In pieces, so that a long text does not make the system copy all of it at once.
        const auto size = (std::min)(static_cast<std::size_t>(mEnd - mAt), kBufferBytes);
        mOperation.write(mPipe.get(), mAt, static_cast<DWORD>(size));
    }
    DWORD written = 0;
    switch (mOperation.look(mPipe.get(), written)) {
        case PendingOperation::State::Running: return false;
        case PendingOperation::State::Done: mAt += written; return true;
        default: return close(), true;  // the child has closed its end, or the thread that started the write has ended
    }
}

bool InputChannel::refill() {
    if (mIsLast) return false;
    const std::uint64_t size =
        (std::min)(mChoice->device->readBytes(mBuffer.get(), kBufferBytes), std::uint64_t{kBufferBytes});
    // xoIoDevice returns fewer bytes than requested only at its end, or after an error.
    mIsLast = size < kBufferBytes;
    mAt = mBuffer.get();
    mEnd = mAt + size;
    return size != 0;
}

// The child sees the end of its input when the last handle of this end is closed.
void InputChannel::close() {
    DWORD unused = 0;
    mOperation.cancel(mPipe.get(), unused);
    mPipe.reset();
}

// ---- ChildStreams ----

ChildStreams::ChildStreams(StandardHandles& handles, const Redirection& choices) {
    const auto moves = [](OutputChoice::Kind kind) {
        return kind == OutputChoice::Kind::Text || kind == OutputChoice::Kind::Lines ||
               kind == OutputChoice::Kind::Device;
    };
    if (choices.input && handles.ourInput && choices.input->kind != InputChoice::Kind::Pipe)
        mInput = std::make_unique<InputChannel>(std::move(handles.ourInput), choices.input);
    if (choices.output && handles.ourOutput && moves(choices.output->kind))
        mOutput = std::make_unique<OutputChannel>(std::move(handles.ourOutput), choices.output);
    if (choices.errorOutput && handles.ourError && moves(choices.errorOutput->kind))
        mError = std::make_unique<OutputChannel>(std::move(handles.ourError), choices.errorOutput);
}

// The channels take turns. If one was served to its end first, the child could wait for another one, and neither
// process would continue.
bool ChildStreams::move() {
    if (mIsMoving) return false;
    const FlagGuard guard(mIsMoving);
    bool hasMoved = true;
    for (int round = 0; hasMoved && round < kMostRounds; ++round) {
        hasMoved = mInput && mInput->step();
        if (mOutput && mOutput->step()) hasMoved = true;
        if (mError && mError->step()) hasMoved = true;
    }
    return hasMoved;
}

// The child has ended, but its own children may keep the pipes open, so the end of a pipe is not waited for.
void ChildStreams::finish() {
    if (mIsMoving) return;
    if (mInput) mInput->close();
    for (OutputChannel* const channel : {mOutput.get(), mError.get()})
        if (channel) channel->limitToRest();
    // Ends, because the outputs are limited to what is in the pipes now.
    while (move()) {
    }
}

void ChildStreams::appendEvents(HANDLE* events, DWORD& count) const {
    const auto append = [&](HANDLE event) {
        if (event) events[count++] = event;
    };
    if (mInput) append(mInput->pendingEvent());
    if (mOutput) append(mOutput->pendingEvent());
    if (mError) append(mError->pendingEvent());
}

}  // namespace xo::process
