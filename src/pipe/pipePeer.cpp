// The process and user at the other end of a pipe.
#include "pipe/pipePeer.h"

#include <exception>

#include "pipe/pipeSecurity.h"
#include "platform/handle.h"

namespace xo::pipe {
namespace {

using platform::KernelHandle;

// Lets the thread act as the client for as long as the object lives, and then as before.
class Impersonation {
public:
    explicit Impersonation(HANDLE pipe) {
        ::OpenThreadToken(::GetCurrentThread(), TOKEN_IMPERSONATE, /*OpenAsSelf=*/TRUE, mBefore.put());
        mIsActive = ::ImpersonateNamedPipeClient(pipe);
    }
    // A thread that cannot stop acting as somebody else must not go on:
    // https://learn.microsoft.com/windows/win32/api/securitybaseapi/nf-securitybaseapi-reverttoself
    ~Impersonation() {
        if (mIsActive && !::SetThreadToken(/*Thread=*/nullptr, mBefore.get())) std::terminate();
    }
    Impersonation(const Impersonation&) = delete;
    Impersonation& operator=(const Impersonation&) = delete;

    // The client's token; none when Windows does not let the server know the client, which it does only once the
    // server has read something.
    KernelHandle token() const {
        KernelHandle found;
        if (mIsActive) ::OpenThreadToken(::GetCurrentThread(), TOKEN_QUERY, /*OpenAsSelf=*/TRUE, found.put());
        return found;
    }

private:
    KernelHandle mBefore;  // none when the thread acts as its process
    BOOL mIsActive = FALSE;
};

KernelHandle tokenOf(DWORD processId) {
    KernelHandle token;
    const KernelHandle process(::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, /*bInheritHandle=*/FALSE, processId));
    if (process) ::OpenProcessToken(process.get(), TOKEN_QUERY, token.put());
    return token;
}

}  // namespace

// The token by which the client connected comes first; that of its process is a substitute for it.
Peer findClient(HANDLE pipe) {
    Peer peer;
    ::GetNamedPipeClientProcessId(pipe, &peer.processId);
    KernelHandle token = Impersonation(pipe).token();
    if (!token) token = tokenOf(peer.processId);
    if (!token) return peer;
    peer.user = userOf(token.get());
    peer.isElevated = isElevated(token.get());
    return peer;
}

Peer findServer(HANDLE pipe) {
    Peer peer;
    ::GetNamedPipeServerProcessId(pipe, &peer.processId);
    peer.user = ownerOf(pipe);
    const KernelHandle token = tokenOf(peer.processId);
    peer.isElevated = token && isElevated(token.get());
    return peer;
}

}  // namespace xo::pipe
