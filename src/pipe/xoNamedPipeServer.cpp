// A server keeps several instances of its pipe waiting, so that clients that come together need not retry.
#include <algorithm>
#include <atomic>
#include <deque>
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

// One instance of a pipe, which waits for its client from the beginning.
class Instance {
public:
    explicit Instance(FileHandle handle) : mHandle(std::move(handle)) {}
    ~Instance() {
        DWORD unused = 0;
        if (mIsPending && ::CancelIoEx(mHandle.get(), &mOverlapped))
            ::GetOverlappedResult(mHandle.get(), &mOverlapped, &unused, /*bWait=*/TRUE);
    }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    // The event of event() is set once a client has come, and also when nobody can come any more. ERROR_SUCCESS, or why
    // there is no waiting.
    DWORD await() {
        if (!mEvent) return ERROR_NOT_ENOUGH_MEMORY;
        mOverlapped = {};
        mOverlapped.hEvent = mEvent.get();
        const BOOL isDone = ::ConnectNamedPipe(mHandle.get(), &mOverlapped);
        const DWORD error = isDone ? ERROR_PIPE_CONNECTED : ::GetLastError();
        mIsPending = error == ERROR_IO_PENDING;
        if (mIsPending) return ERROR_SUCCESS;
        if (error != ERROR_PIPE_CONNECTED && error != ERROR_NO_DATA) return error;  // the latter: came and left
        ::SetEvent(mEvent.get());
        return ERROR_SUCCESS;
    }

    HANDLE event() const { return mEvent.get(); }

    // The thread that began the waiting has ended, which has ended the waiting.
    bool mustAwaitAgain() {
        DWORD unused = 0;
        if (!mIsPending || ::GetOverlappedResult(mHandle.get(), &mOverlapped, &unused, /*bWait=*/FALSE)) return false;
        return ::GetLastError() == ERROR_OPERATION_ABORTED;
    }

    // A client that is there, or has left something to read. Only once the event is set.
    bool hasClient() {
        mIsPending = false;
        DWORD available = 0;
        return ::PeekNamedPipe(mHandle.get(), /*lpBuffer=*/nullptr, /*nBufferSize=*/0, /*lpBytesRead=*/nullptr,
                               &available, /*lpBytesLeftThisMessage=*/nullptr);
    }

    FileHandle take() { return std::move(mHandle); }

private:
    FileHandle mHandle;
    KernelHandle mEvent{::CreateEventW(/*lpEventAttributes=*/nullptr, /*bManualReset=*/TRUE, /*bInitialState=*/FALSE,
                                       /*lpName=*/nullptr)};
    OVERLAPPED mOverlapped{};
    bool mIsPending = false;
};

// Whether a pipe of that name exists. Wine 8 ignores FILE_FLAG_FIRST_PIPE_INSTANCE, so it must be asked before.
bool exists(const std::wstring& name) {
    if (::WaitNamedPipeW(name.c_str(), NMPWAIT_NOWAIT)) return true;
    return ::GetLastError() != ERROR_FILE_NOT_FOUND;
}

// A name that was in use until just now may still be so for a moment, because both ends of a connection keep it.
bool isTaken(const std::wstring& name) {
    constexpr DWORD kMomentMs = 200;
    const Deadline deadline(kMomentMs);
    while (exists(name)) {
        if (deadline.remainingMs() == 0) return true;
        ::Sleep(1);
    }
    return false;
}

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
    // What the host has set.
    Access access = AccessSameUser;
    std::string descriptor;
    unsigned backlog = kDefaultBacklog;
    std::uint32_t bufferBytes = xoNamedPipe::kDefaultBufferBytes;

    std::atomic<bool> isListening{false};
    std::atomic<xoNamedPipe::Result> result{xoNamedPipe::ResultFailed};
    pipe::Cancellation closing;

    // Held by the thread that waits, until closing makes it leave.
    platform::SlimLock lock;
    std::wstring name XO_GUARDED_BY(lock);
    std::optional<pipe::SecurityAttributes> security XO_GUARDED_BY(lock);
    unsigned wantedInstances XO_GUARDED_BY(lock) = 0;
    std::uint32_t instanceBufferBytes XO_GUARDED_BY(lock) = 0;
    std::deque<std::unique_ptr<pipe::Instance>> instances XO_GUARDED_BY(lock);  // the oldest first
    bool hasWarned XO_GUARDED_BY(lock) = false;

    DWORD begin(const std::wstring& fullName) XO_REQUIRES(lock);
    DWORD addInstance(DWORD flags) XO_REQUIRES(lock);
    void refill() XO_REQUIRES(lock);
    xoNamedPipe::Result accept(const pipe::Deadline& deadline, platform::FileHandle& connection) XO_REQUIRES(lock);
    platform::FileHandle takeClient(std::size_t index) XO_REQUIRES(lock);
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
        error = self.begin(pipe::fullName(name));
        if (error != ERROR_SUCCESS) self.instances.clear();
        self.isListening = error == ERROR_SUCCESS;
    }
    self.result = pipe::resultOfListening(error);
    if (error == ERROR_SUCCESS) return true;
    xoLogObject(xoLogCritical) << "xoNamedPipeServer cannot listen on \"" << name
                               << "\": " << SystemError(error).toString();
    return false;
}

// The settings of the host are copied, so that later changes take effect at the next start only.
DWORD xoNamedPipeServer::Private::begin(const std::wstring& fullName) {
    if (fullName.empty()) return ERROR_INVALID_NAME;
    if (!closing.event()) return ERROR_NOT_ENOUGH_MEMORY;
    const std::string byAccess = access == AccessLocalUsers ? pipe::localUsersDescriptor() : pipe::sameUserDescriptor();
    security.emplace(descriptor.empty() ? byAccess : descriptor);
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

// One that fails now may succeed at the next call.
void xoNamedPipeServer::Private::refill() {
    while (instances.size() < wantedInstances) {
        if (addInstance(0) == ERROR_SUCCESS) continue;
        if (!std::exchange(hasWarned, true))
            xoLogObject(xoLogWarning) << "xoNamedPipeServer has " << instances.size() << " of " << wantedInstances
                                      << " instances";
        return;
    }
    hasWarned = false;
}

bool xoNamedPipeServer::waitForConnection(xoNamedPipe& pipe, unsigned timeoutMs) {
    Private& self = *mPrivate;
    pipe.close();
    const pipe::Deadline deadline(timeoutMs);
    platform::FileHandle connection;
    std::uint32_t bufferBytes = 0;
    {
        const platform::SlimLocker locker(self.lock);
        self.result = self.accept(deadline, connection);
        bufferBytes = self.instanceBufferBytes;
    }
    if (!connection) return false;
    pipe::PipeAccess::attachAccepted(pipe, std::move(connection), bufferBytes);
    return pipe.isConnected();
}

xoNamedPipe::Result xoNamedPipeServer::Private::accept(const pipe::Deadline& deadline,
                                                       platform::FileHandle& connection) {
    if (!isListening) return xoNamedPipe::ResultFailed;
    while (!connection) {
        refill();
        if (instances.empty()) return xoNamedPipe::ResultFailed;
        HANDLE events[1 + kMaxBacklog] = {closing.event()};
        DWORD count = 1;
        for (const auto& instance : instances) events[count++] = instance->event();
        // Of several events that are set, the first one counts: closing, then the client that came first.
        const DWORD waited = ::WaitForMultipleObjects(count, events, /*bWaitAll=*/FALSE, deadline.remainingMs());
        if (waited == WAIT_OBJECT_0) return xoNamedPipe::ResultCanceled;
        if (waited == WAIT_TIMEOUT) return xoNamedPipe::ResultTimeout;
        if (waited > WAIT_OBJECT_0 + instances.size()) return xoNamedPipe::ResultFailed;
        connection = takeClient(waited - WAIT_OBJECT_0 - 1);
    }
    return xoNamedPipe::ResultOk;
}

// The connection of an instance whose event is set; none when its client has left.
platform::FileHandle xoNamedPipeServer::Private::takeClient(std::size_t index) {
    const auto at = instances.begin() + static_cast<std::ptrdiff_t>(index);
    if ((*at)->mustAwaitAgain()) {
        if ((*at)->await() != ERROR_SUCCESS) instances.erase(at);
        return {};
    }
    const std::unique_ptr<pipe::Instance> instance = std::move(*at);
    instances.erase(at);
    refill();  // before a client that has left gives its instance up: the name stays taken
    return instance->hasClient() ? instance->take() : platform::FileHandle();
}

void xoNamedPipeServer::Private::close() {
    closing.request();
    const platform::SlimLocker locker(lock);  // once the thread that waits has left
    isListening = false;
    instances.clear();
}

void xoNamedPipeServer::close() { mPrivate->close(); }

bool xoNamedPipeServer::isListening() const { return mPrivate->isListening; }

xoNamedPipe::Result xoNamedPipeServer::getResult() const { return mPrivate->result; }

}  // namespace xo
