// A server keeps several instances of its pipe waiting, so that several clients can connect at the same time.
#include <algorithm>
#include <atomic>
#include <deque>
#include <memory>
#include <new>
#include <utility>

#include "pipe/pipeAccess.h"
#include "pipe/pipeName.h"
#include "pipe/pipeRecord.h"
#include "pipe/pipeSecurity.h"
#include "platform/slimLock.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoSystemError.h"

namespace xo {
namespace pipe {
namespace {

using platform::FileHandle;
using platform::KernelHandle;

// One instance of a pipe, which waits for one client. It does not move: Windows writes to mOverlapped while a wait is
// pending.
class Instance {
public:
    explicit Instance(FileHandle handle) : mHandle(std::move(handle)) {}
    // The end of the operation is awaited also when CancelIoEx finds nothing to cancel: a client has connected then,
    // and the thread that began the operation may still have to write its result to mOverlapped.
    ~Instance() {
        if (!mIsPending) return;
        ::CancelIoEx(mHandle.get(), &mOverlapped);
        DWORD unused = 0;
        ::GetOverlappedResult(mHandle.get(), &mOverlapped, &unused, /*bWait=*/TRUE);
    }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    // Starts to wait for a client. event() is set when one has connected, and also when the wait has failed. Returns
    // ERROR_SUCCESS, or why the wait did not start.
    DWORD await() {
        if (!mEvent) return ERROR_NOT_ENOUGH_MEMORY;
        mOverlapped = {};
        mOverlapped.hEvent = mEvent.get();
        const BOOL isDone = ::ConnectNamedPipe(mHandle.get(), &mOverlapped);
        const DWORD error = isDone ? ERROR_PIPE_CONNECTED : ::GetLastError();
        mIsPending = error == ERROR_IO_PENDING;
        if (mIsPending) return ERROR_SUCCESS;
        // A client may come between CreateNamedPipeW and this call (ERROR_PIPE_CONNECTED), and may have left again
        // (ERROR_NO_DATA). Windows does not set the event then.
        if (error != ERROR_PIPE_CONNECTED && error != ERROR_NO_DATA) return error;
        ::SetEvent(mEvent.get());
        return ERROR_SUCCESS;
    }

    HANDLE event() const { return mEvent.get(); }

    // Whether the wait was aborted, because the thread that started it has ended: Windows cancels the operations of a
    // thread that ends. Called only once the event is set.
    bool mustAwaitAgain() {
        DWORD unused = 0;
        if (!mIsPending || ::GetOverlappedResult(mHandle.get(), &mOverlapped, &unused, /*bWait=*/FALSE)) return false;
        return ::GetLastError() == ERROR_OPERATION_ABORTED;
    }

    // Whether a client is connected, or has left bytes that can be read. Called only once the event is set.
    bool hasClient() {
        mIsPending = false;
        DWORD available = 0;
        return ::PeekNamedPipe(mHandle.get(), /*lpBuffer=*/nullptr, /*nBufferSize=*/0, /*lpBytesRead=*/nullptr,
                               &available, /*lpBytesLeftThisMessage=*/nullptr);
    }

    // The connection. No operation is pending when it is taken.
    FileHandle take() { return std::move(mHandle); }

private:
    FileHandle mHandle;
    KernelHandle mEvent{::CreateEventW(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE, /*bInitialState=*/FALSE,
                                       /*lpName=*/nullptr)};
    OVERLAPPED mOverlapped{};
    bool mIsPending = false;
};

// Whether a pipe of that name exists. On Windows FILE_FLAG_FIRST_PIPE_INSTANCE fails for a name that is taken, but Wine
// 8 ignores the flag, so the name is checked beforehand.
bool exists(const std::wstring& name) {
    if (::WaitNamedPipeW(name.c_str(), NMPWAIT_NOWAIT)) return true;
    return ::GetLastError() != ERROR_FILE_NOT_FOUND;
}

// Waits a moment for a name that exists: one that was given up just now exists until both ends of its last connection
// are closed.
bool isTaken(const std::wstring& name) {
    constexpr DWORD kMomentMs = 200;
    const Deadline deadline(kMomentMs);
    while (exists(name)) {
        if (deadline.remainingMs() == 0) return true;
        ::Sleep(1);
    }
    return false;
}

// For a name that is taken, creating the first instance fails with ERROR_ACCESS_DENIED, or with ERROR_PIPE_BUSY if the
// other server allows no further instance.
xoNamedPipe::Result resultOfListening(DWORD error) {
    switch (error) {
        case ERROR_SUCCESS: return xoNamedPipe::ResultOk;
        case ERROR_ACCESS_DENIED:
        case ERROR_PIPE_BUSY: return xoNamedPipe::ResultRefused;
        case ERROR_INVALID_NAME:
        case ERROR_INVALID_SECURITY_DESCR: return xoNamedPipe::ResultInvalid;
        default: return xoNamedPipe::ResultFailed;
    }
}

}  // namespace
}  // namespace pipe

struct xoNamedPipeServer::Private {
    // Instances that are missing, to be logged once the lock is free: a handler of the log may call the server.
    struct Shortage {
        std::size_t present = 0;
        unsigned wanted = 0;  // 0: nothing to log
    };

    // What the host has set.
    Access access = AccessSameUser;
    std::string descriptor;
    unsigned backlog = kDefaultBacklog;
    std::uint32_t bufferBytes = xoNamedPipe::kDefaultBufferBytes;

    // These are used without the lock.
    std::atomic<bool> isListening{false};
    std::atomic<xoNamedPipe::Result> result{xoNamedPipe::ResultFailed};
    pipe::Cancellation closing;
    // The calls of close() that have not had the lock yet.
    std::atomic<int> closers{0};

    // Held by waitForConnection() for its whole wait. close() therefore sets `closing` first, which ends that wait, and
    // takes the lock then. So listenUtf8(), which clears `closing`, must not clear it for a close() that waits for the
    // lock.
    platform::SlimLock lock;
    std::wstring name XO_GUARDED_BY(lock);
    std::unique_ptr<pipe::SecurityAttributes> security XO_GUARDED_BY(lock);
    unsigned wantedInstances XO_GUARDED_BY(lock) = 0;
    std::uint32_t instanceBufferBytes XO_GUARDED_BY(lock) = 0;
    std::deque<std::unique_ptr<pipe::Instance>> instances XO_GUARDED_BY(lock);  // the oldest first
    // Whether the log has the line about missing instances, so that it is not repeated by every call.
    bool hasWarned XO_GUARDED_BY(lock) = false;

    // Opens the pipe. Returns the error code; nothing is open after a failure.
    DWORD listen(const std::string& bareName) XO_REQUIRES(lock);
    // Makes the instances. Returns the error code of the first one that fails; those before it are left to the caller.
    DWORD begin(const std::wstring& fullName) XO_REQUIRES(lock);
    // Adds one instance that waits for a client; returns its error code. Lack of memory is one of the errors.
    DWORD addInstance(DWORD flags) XO_REQUIRES(lock);
    DWORD tryToAddInstance(DWORD flags) XO_REQUIRES(lock);
    // Adds instances until there are wantedInstances. Fewer are not an error: a later call tries again.
    void refill(Shortage& shortage) XO_REQUIRES(lock);
    // Waits until a client is connected, and sets the connection. With ResultOk and no connection there is a shortage
    // to log before the wait goes on.
    xoNamedPipe::Result accept(const pipe::Deadline& deadline, platform::FileHandle& connection, Shortage& shortage)
        XO_REQUIRES(lock);
    platform::FileHandle takeClient(std::size_t index, Shortage& shortage) XO_REQUIRES(lock);
    void close();
};

xoNamedPipeServer::xoNamedPipeServer() : mPrivate(std::make_unique<Private>()) {}

xoNamedPipeServer::~xoNamedPipeServer() { mPrivate->close(); }

void xoNamedPipeServer::setAccess(Access access) { mPrivate->access = access; }

void xoNamedPipeServer::setSecurityDescriptor(const std::string& sddl) { mPrivate->descriptor = sddl; }

void xoNamedPipeServer::setBacklog(unsigned instances) {
    mPrivate->backlog = (std::min)((std::max)(instances, 1u), kMaxBacklog);
}

void xoNamedPipeServer::setBufferBytes(std::uint32_t bytes) {
    mPrivate->bufferBytes = (std::min)((std::max)(bytes, kMinBufferBytes), kMaxBufferBytes);
}

bool xoNamedPipeServer::listenUtf8(const std::string& name) {
    Private& self = *mPrivate;
    self.close();
    DWORD error = ERROR_SUCCESS;
    {
        const platform::SlimLocker locker(self.lock);
        self.closing.clear();
        if (self.closers != 0) self.closing.request();
        error = self.listen(name);
    }
    self.result = pipe::resultOfListening(error);
    if (error == ERROR_SUCCESS) return true;
    try {
        xoLogObject(xoLogCritical) << "xoNamedPipeServer cannot listen on \"" << name
                                   << "\": " << SystemError(error).toString();
    } catch (const std::bad_alloc&) {  // the line lacks the text of the error
    }
    return false;
}

DWORD xoNamedPipeServer::Private::listen(const std::string& bareName) {
    DWORD error = ERROR_NOT_ENOUGH_MEMORY;
    try {
        error = begin(pipe::fullName(bareName));
    } catch (const std::bad_alloc&) {  // for the name or the descriptor
    }
    if (error != ERROR_SUCCESS) instances.clear();
    isListening = error == ERROR_SUCCESS;
    return error;
}

// Copies the settings of the host, so that later changes take effect at the next listenUtf8() only.
DWORD xoNamedPipeServer::Private::begin(const std::wstring& fullName) {
    if (fullName.empty()) return ERROR_INVALID_NAME;
    if (!closing.event()) return ERROR_NOT_ENOUGH_MEMORY;
    const std::string byAccess = access == AccessLocalUsers ? pipe::localUsersDescriptor() : pipe::sameUserDescriptor();
    security = std::make_unique<pipe::SecurityAttributes>(descriptor.empty() ? byAccess : descriptor);
    if (!*security) return ERROR_INVALID_SECURITY_DESCR;
    if (pipe::isTaken(fullName)) return ERROR_ACCESS_DENIED;
    name = fullName;
    wantedInstances = backlog;
    instanceBufferBytes = bufferBytes;
    hasWarned = false;
    DWORD error = addInstance(FILE_FLAG_FIRST_PIPE_INSTANCE);
    while (error == ERROR_SUCCESS && instances.size() < wantedInstances) error = addInstance(0);
    return error;
}

DWORD xoNamedPipeServer::Private::addInstance(DWORD flags) {
    try {
        return tryToAddInstance(flags);
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

DWORD xoNamedPipeServer::Private::tryToAddInstance(DWORD flags) {
    platform::FileHandle handle(::CreateNamedPipeW(
        name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | flags,
        PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, PIPE_UNLIMITED_INSTANCES,
        instanceBufferBytes, instanceBufferBytes, /*nDefaultTimeOut=*/0, security->get()));
    if (!handle) return ::GetLastError();
    auto instance = std::make_unique<pipe::Instance>(std::move(handle));
    const DWORD error = instance->await();
    if (error == ERROR_SUCCESS) instances.push_back(std::move(instance));
    return error;
}

void xoNamedPipeServer::Private::refill(Shortage& shortage) {
    while (instances.size() < wantedInstances) {
        if (addInstance(0) == ERROR_SUCCESS) continue;
        if (!std::exchange(hasWarned, true)) shortage = {instances.size(), wantedInstances};
        return;
    }
    hasWarned = false;
}

bool xoNamedPipeServer::waitForConnection(xoNamedPipe& pipe, unsigned timeoutMs) {
    Private& self = *mPrivate;
    // Not under the lock: closing sends the buffer and may wait for a peer.
    pipe.close();
    const pipe::Deadline deadline(timeoutMs);
    platform::FileHandle connection;
    std::uint32_t bufferBytes = 0;
    xoNamedPipe::Result result = xoNamedPipe::ResultOk;
    for (bool isFirst = true; result == xoNamedPipe::ResultOk && !connection; isFirst = false) {
        Private::Shortage shortage;
        {
            const platform::SlimLocker locker(self.lock);
            if (self.isListening)
                result = self.accept(deadline, connection, shortage);
            else  // since the call, or closed meanwhile
                result = isFirst ? xoNamedPipe::ResultFailed : xoNamedPipe::ResultCanceled;
            bufferBytes = self.instanceBufferBytes;
        }
        if (shortage.wanted != 0)
            xoLogObject(xoLogWarning) << "xoNamedPipeServer has " << shortage.present << " of " << shortage.wanted
                                      << " instances";
    }
    if (connection) pipe::PipeAccess::attachAccepted(pipe, std::move(connection), bufferBytes);
    // An end without its events does not connect.
    const bool isConnected = pipe.isConnected();
    self.result = result == xoNamedPipe::ResultOk && !isConnected ? xoNamedPipe::ResultFailed : result;
    return isConnected;
}

xoNamedPipe::Result xoNamedPipeServer::Private::accept(const pipe::Deadline& deadline, platform::FileHandle& connection,
                                                       Shortage& shortage) {
    while (!connection) {
        refill(shortage);
        if (instances.empty()) return xoNamedPipe::ResultFailed;
        if (shortage.wanted != 0) return xoNamedPipe::ResultOk;
        // Fits the limit of WaitForMultipleObjects, 64 handles.
        HANDLE events[1 + kMaxBacklog] = {closing.event()};
        DWORD count = 1;
        for (const auto& instance : instances) events[count++] = instance->event();
        // Of several events that are set, the wait returns the lowest index: closing, then the oldest instance.
        const DWORD waited = ::WaitForMultipleObjects(count, events, /*bWaitAll=*/FALSE, deadline.remainingMs());
        if (waited == WAIT_OBJECT_0) return xoNamedPipe::ResultCanceled;
        if (waited == WAIT_TIMEOUT) return xoNamedPipe::ResultTimeout;
        if (waited > WAIT_OBJECT_0 + instances.size()) return xoNamedPipe::ResultFailed;
        connection = takeClient(waited - WAIT_OBJECT_0 - 1, shortage);
    }
    return xoNamedPipe::ResultOk;
}

// Takes the connection of an instance whose event is set. Owns nothing when its client has left, or when the instance
// waits again; the caller then continues to wait.
platform::FileHandle xoNamedPipeServer::Private::takeClient(std::size_t index, Shortage& shortage) {
    const auto at = instances.begin() + static_cast<std::ptrdiff_t>(index);
    if ((*at)->mustAwaitAgain()) {
        if ((*at)->await() != ERROR_SUCCESS) instances.erase(at);
        return {};
    }
    const std::unique_ptr<pipe::Instance> instance = std::move(*at);
    instances.erase(at);
    refill(shortage);  // before the instance of a client that has left is closed, so that the name always stays taken
    return instance->hasClient() ? instance->take() : platform::FileHandle();
}

void xoNamedPipeServer::Private::close() {
    ++closers;
    closing.request();
    const platform::SlimLocker locker(lock);  // once the thread that waits has left
    --closers;
    isListening = false;
    instances.clear();
}

void xoNamedPipeServer::close() { mPrivate->close(); }

bool xoNamedPipeServer::isListening() const { return mPrivate->isListening; }

xoNamedPipe::Result xoNamedPipeServer::getResult() const { return mPrivate->result; }

}  // namespace xo
