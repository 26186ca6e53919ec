// The process and user at the other end of a pipe.
#include "pipe/pipePeer.h"

#include <exception>

#include "pipe/pipeSecurity.h"
#include "platform/handle.h"

namespace xo::pipe {
namespace {

using platform::KernelHandle;

// Lets the thread act as the client of a pipe while the object exists, and restores the thread's former identity then.
class Impersonation {
public:
    // Not started when the thread's identity cannot be kept: it could not be restored.
    explicit Impersonation(HANDLE pipe) {
        const BOOL isOther =
            ::OpenThreadToken(::GetCurrentThread(), TOKEN_IMPERSONATE, /*OpenAsSelf=*/TRUE, mBefore.put());
        // The error of a thread that acts as its process; mBefore has no token then.
        mIsPossible = isOther || ::GetLastError() == ERROR_NO_TOKEN;
        mIsActive = mIsPossible && ::ImpersonateNamedPipeClient(pipe);
    }
    // A thread that cannot stop acting as another user must not continue:
    // https://learn.microsoft.com/windows/win32/api/securitybaseapi/nf-securitybaseapi-reverttoself
    ~Impersonation() {
        if (mIsActive && !::SetThreadToken(/*Thread=*/nullptr, mBefore.get())) std::terminate();
    }
    // Whether Windows has refused it, as it does until the server has read something from the pipe.
    bool isRefused() const { return mIsPossible && !mIsActive; }
    Impersonation(const Impersonation&) = delete;
    Impersonation& operator=(const Impersonation&) = delete;

    // The client's token. None when the thread does not act as the client, and for an anonymous client.
    // OpenAsSelf, because a client that allows identification only cannot be used for opening an object.
    KernelHandle token() const {
        KernelHandle found;
        if (mIsActive) ::OpenThreadToken(::GetCurrentThread(), TOKEN_QUERY, /*OpenAsSelf=*/TRUE, found.put());
        return found;
    }

private:
    KernelHandle mBefore;  // none when the thread acts as its process
    bool mIsPossible = false;
    bool mIsActive = false;
};

// None when the process has ended, or belongs to a user whose processes this one must not open.
KernelHandle tokenOf(DWORD processId) {
    KernelHandle token;
    const KernelHandle process(::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, /*bInheritHandle=*/FALSE, processId));
    if (process) ::OpenProcessToken(process.get(), TOKEN_QUERY, token.put());
    return token;
}

}  // namespace

// The process number might be that of another process by now, so it never stands in for a token that cannot be opened.
Peer findClient(HANDLE pipe) {
    Peer peer;
    ::GetNamedPipeClientProcessId(pipe, &peer.processId);
    KernelHandle token;
    {
        const Impersonation client(pipe);
        peer.isFinal = !client.isRefused();
        token = client.token();
    }
    if (!peer.isFinal) token = tokenOf(peer.processId);
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
