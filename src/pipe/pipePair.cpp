// A pipe between this process and a child. Anonymous pipes do not support overlapped operations:
// https://learn.microsoft.com/windows/win32/ipc/anonymous-pipe-operations
#include "pipe/pipePair.h"

#include "pipe/pipeName.h"
#include "pipe/pipeSecurity.h"
#include "platform/openFile.h"

namespace xo::pipe {

PipePair makePair(bool isReadByUs) {
    constexpr DWORD kSystemBufferBytes = 65536;
    constexpr DWORD kMode = PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS;
    PipePair pair;
    // Invalid when the user of this process cannot be determined.
    SecurityAttributes security(sameUserDescriptor());
    if (!security) {
        pair.error = ERROR_ACCESS_DENIED;
        return pair;
    }
    const std::wstring name = randomName();
    const DWORD ourAccess = isReadByUs ? PIPE_ACCESS_INBOUND : PIPE_ACCESS_OUTBOUND;
    // The flag for the first instance fails if the name exists, so nobody can have made this pipe beforehand.
    pair.ours = platform::FileHandle(::CreateNamedPipeW(
        name.c_str(), ourAccess | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE, kMode,
        /*nMaxInstances=*/1, kSystemBufferBytes, kSystemBufferBytes, /*nDefaultTimeOut=*/0, security.get()));
    pair.error = pair.ours ? ERROR_SUCCESS : ::GetLastError();
    if (!pair.ours) return pair;

    // Runtime libraries read the attributes of a standard handle and set the mode of a pipe. The generic right of one
    // direction does not include the right to both, so the other one is added.
    const DWORD theirAccess = isReadByUs ? GENERIC_WRITE | FILE_READ_ATTRIBUTES : GENERIC_READ | FILE_WRITE_ATTRIBUTES;
    pair.theirs = platform::openFile(name, theirAccess, /*share=*/0, OPEN_EXISTING,
                                     SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION);
    pair.error = pair.theirs ? ERROR_SUCCESS : ::GetLastError();
    return pair;
}

}  // namespace xo::pipe
