// Opens the standard handles of a child:
// https://learn.microsoft.com/windows/win32/procthread/creating-a-child-process-with-redirected-input-and-output
#include "process/redirection.h"

#include <utility>

#include "pipe/pipePair.h"
#include "platform/openFile.h"
#include "platform/wideText.h"
#include "process/commandLine.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoSystemError.h"

namespace xo {
namespace process {
namespace {

using platform::FileHandle;

// Where the two ends of one standard handle are stored.
struct Slot {
    // The child's end and this process's end, both in StandardHandles.
    FileHandle& theirs;
    FileHandle& ours;
    DWORD standardHandle;  // STD_INPUT_HANDLE and the like
};

// Returns the error, after a DEBUG line if it is one.
DWORD logged(const std::string& path, DWORD error) {
    if (error != ERROR_SUCCESS)
        xoLogObject(xoLogDebug) << "xoProcess cannot open \"" << path << "\": " << SystemError(error).toString();
    return error;
}

// A path that is not UTF-8 is refused: converted, it would name another file.
DWORD openFile(const std::string& path, DWORD access, DWORD share, DWORD creation, FileHandle& file) {
    if (!isPlainText(path)) return logged(path, ERROR_INVALID_NAME);
    const std::wstring widePath = platform::toApiPath(path);
    file = platform::openFile(widePath, access, share, creation);
    return logged(path, file ? ERROR_SUCCESS : ::GetLastError());
}

// The null device: a read is at the end at once, and written bytes are discarded.
DWORD openNull(DWORD access, FileHandle& file) {
    return openFile("NUL", access, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING, file);
}

DWORD openPipe(bool isReadByUs, const Slot& slot) {
    pipe::PipePair pair = pipe::makePair(isReadByUs);
    slot.theirs = std::move(pair.theirs);
    slot.ours = std::move(pair.ours);
    return logged("pipe", pair.error);
}

// Copies the standard handle of this process. A copy, because the handles for the child are closed after the start.
// Without a handle, or with one that was closed, the child gets none: that is no error.
DWORD copyOwn(const Slot& slot, bool& hasConsole) {
    const HANDLE own = ::GetStdHandle(slot.standardHandle);
    if (!own || own == INVALID_HANDLE_VALUE) return ERROR_SUCCESS;
    const HANDLE self = ::GetCurrentProcess();
    platform::KernelHandle copy;
    if (!::DuplicateHandle(self, own, self, copy.put(), /*dwDesiredAccess=*/0, /*bInheritHandle=*/FALSE,
                           DUPLICATE_SAME_ACCESS))
        return ERROR_SUCCESS;
    DWORD mode = 0;
    // Succeeds only for a console handle.
    if (::GetConsoleMode(copy.get(), &mode)) hasConsole = true;
    slot.theirs.reset(copy.release());
    return ERROR_SUCCESS;
}

DWORD openInput(const InputChoice& choice, const Slot& slot, bool& hasConsole) {
    switch (choice.kind) {
        case InputChoice::Kind::None: return ERROR_SUCCESS;
        case InputChoice::Kind::Null: return openNull(GENERIC_READ, slot.theirs);
        case InputChoice::Kind::Inherit: return copyOwn(slot, hasConsole);
        // Sharing excludes writers, so that the input cannot change under the child.
        case InputChoice::Kind::File:
            return openFile(choice.text, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING, slot.theirs);
        case InputChoice::Kind::Device:
            if (!choice.device) return ERROR_INVALID_PARAMETER;
            break;
        case InputChoice::Kind::Text:
        case InputChoice::Kind::Pipe: break;
    }
    return openPipe(/*isReadByUs=*/false, slot);
}

// FILE_APPEND_DATA without FILE_WRITE_DATA makes Windows append each write at the end, even if several handles write.
// So the file can be the output and the error output at once. Otherwise the file is replaced, and a second opening
// fails.
DWORD openOutputFile(const OutputChoice& choice, FileHandle& file) {
    if (choice.append)
        return openFile(choice.path, FILE_APPEND_DATA | SYNCHRONIZE, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_ALWAYS,
                        file);
    return openFile(choice.path, GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS, file);
}

DWORD openOutput(const OutputChoice& choice, const Slot& slot, bool& hasConsole) {
    switch (choice.kind) {
        case OutputChoice::Kind::None: return ERROR_SUCCESS;
        case OutputChoice::Kind::Null: return openNull(GENERIC_WRITE, slot.theirs);
        case OutputChoice::Kind::Inherit: return copyOwn(slot, hasConsole);
        case OutputChoice::Kind::File: return openOutputFile(choice, slot.theirs);
        // Allowed for the error output only, which the caller handles.
        case OutputChoice::Kind::Merged: return ERROR_INVALID_PARAMETER;
        case OutputChoice::Kind::Lines:
            if (!choice.handler) return ERROR_INVALID_PARAMETER;
            break;
        case OutputChoice::Kind::Device:
            if (!choice.device) return ERROR_INVALID_PARAMETER;
            break;
        case OutputChoice::Kind::Text:
        case OutputChoice::Kind::Pipe: break;
    }
    return openPipe(/*isReadByUs=*/true, slot);
}

}  // namespace

// Stops at the first error. The handles that are open by then are closed by their owner.
DWORD openStandardHandles(const Redirection& wanted, StandardHandles& handles) {
    DWORD error = ERROR_SUCCESS;
    if (wanted.input)
        error = openInput(*wanted.input, {handles.input, handles.ourInput, STD_INPUT_HANDLE}, handles.hasConsole);
    if (error == ERROR_SUCCESS && wanted.output)
        error = openOutput(*wanted.output, {handles.output, handles.ourOutput, STD_OUTPUT_HANDLE}, handles.hasConsole);
    if (error != ERROR_SUCCESS || !wanted.errorOutput) return error;
    handles.isMerged = wanted.errorOutput->kind == OutputChoice::Kind::Merged;
    if (handles.isMerged) return ERROR_SUCCESS;
    return openOutput(*wanted.errorOutput, {handles.error, handles.ourError, STD_ERROR_HANDLE}, handles.hasConsole);
}

}  // namespace process

namespace {

using process::InputChoice;
using process::OutputChoice;

// A choice of a kind, with all other members at their defaults.
template <class Choice>
Choice choiceOf(typename Choice::Kind kind) {
    Choice choice;
    choice.kind = kind;
    return choice;
}

}  // namespace

xoProcess::Input::Input(InputChoice choice) : mChoice(std::make_shared<const InputChoice>(std::move(choice))) {}

xoProcess::Input xoProcess::Input::None() { return Input(choiceOf<InputChoice>(InputChoice::Kind::None)); }

xoProcess::Input xoProcess::Input::Null() { return Input(choiceOf<InputChoice>(InputChoice::Kind::Null)); }

xoProcess::Input xoProcess::Input::Inherit() { return Input(choiceOf<InputChoice>(InputChoice::Kind::Inherit)); }

xoProcess::Input xoProcess::Input::Pipe() { return Input(choiceOf<InputChoice>(InputChoice::Kind::Pipe)); }

xoProcess::Input xoProcess::Input::FileUtf8(const std::string& path) {
    InputChoice choice = choiceOf<InputChoice>(InputChoice::Kind::File);
    choice.text = path;
    return Input(std::move(choice));
}

xoProcess::Input xoProcess::Input::Text(std::string bytes) {
    InputChoice choice = choiceOf<InputChoice>(InputChoice::Kind::Text);
    choice.text = std::move(bytes);
    return Input(std::move(choice));
}

xoProcess::Input xoProcess::Input::Device(xoIoDevice* device) {
    InputChoice choice = choiceOf<InputChoice>(InputChoice::Kind::Device);
    choice.device = device;
    return Input(std::move(choice));
}

xoProcess::Output::Output(OutputChoice choice) : mChoice(std::make_shared<const OutputChoice>(std::move(choice))) {}

xoProcess::Output xoProcess::Output::None() { return Output(choiceOf<OutputChoice>(OutputChoice::Kind::None)); }

xoProcess::Output xoProcess::Output::Null() { return Output(choiceOf<OutputChoice>(OutputChoice::Kind::Null)); }

xoProcess::Output xoProcess::Output::Inherit() { return Output(choiceOf<OutputChoice>(OutputChoice::Kind::Inherit)); }

xoProcess::Output xoProcess::Output::Pipe() { return Output(choiceOf<OutputChoice>(OutputChoice::Kind::Pipe)); }

xoProcess::Output xoProcess::Output::Merged() { return Output(choiceOf<OutputChoice>(OutputChoice::Kind::Merged)); }

xoProcess::Output xoProcess::Output::FileUtf8(const std::string& path, bool append) {
    OutputChoice choice = choiceOf<OutputChoice>(OutputChoice::Kind::File);
    choice.path = path;
    choice.append = append;
    return Output(std::move(choice));
}

xoProcess::Output xoProcess::Output::Text(std::uint64_t maxBytes) {
    OutputChoice choice = choiceOf<OutputChoice>(OutputChoice::Kind::Text);
    choice.maxBytes = maxBytes;
    return Output(std::move(choice));
}

xoProcess::Output xoProcess::Output::Lines(LineHandler handler) {
    OutputChoice choice = choiceOf<OutputChoice>(OutputChoice::Kind::Lines);
    choice.handler = std::move(handler);
    return Output(std::move(choice));
}

xoProcess::Output xoProcess::Output::Device(xoIoDevice* device) {
    OutputChoice choice = choiceOf<OutputChoice>(OutputChoice::Kind::Device);
    choice.device = device;
    return Output(std::move(choice));
}

}  // namespace xo
