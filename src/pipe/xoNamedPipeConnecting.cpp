// Connects to a server, closes connections, and determines the peer.
#include <algorithm>
#include <new>
#include <utility>

#include "pipe/pipeAccess.h"
#include "pipe/pipeName.h"
#include "pipe/pipeRecord.h"
#include "pipe/pipeSecurity.h"
#include "platform/openFile.h"
#include "platform/wideText.h"
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoLog.h"

namespace xo {
namespace {

constexpr DWORD kLongestBusyWaitMs = 50;  // of WaitNamedPipeW, which a cancellation cannot end
constexpr DWORD kLongestPauseMs = 20;     // between two attempts while there is no pipe of that name

// Not GENERIC_WRITE: that includes the right to make instances of the pipe (FILE_CREATE_PIPE_INSTANCE), which a
// server's descriptor need not grant to clients.
constexpr DWORD kAccess = GENERIC_READ | FILE_WRITE_DATA | FILE_WRITE_ATTRIBUTES;

// The server may learn who this process is but cannot act in its name. Without these flags Windows lets it act.
// https://learn.microsoft.com/windows/win32/secauthz/impersonation-levels
constexpr DWORD kFlags = FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;

// connect() tries again after ResultNotFound and ResultBusy; the other failures are permanent.
xoNamedPipe::Result resultOfOpening(DWORD error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND: return xoNamedPipe::ResultNotFound;
        case ERROR_PIPE_BUSY: return xoNamedPipe::ResultBusy;
        case ERROR_ACCESS_DENIED: return xoNamedPipe::ResultRefused;
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME: return xoNamedPipe::ResultInvalid;
        default: return xoNamedPipe::ResultFailed;
    }
}

// Without the prefix, for the log.
std::string bareName(const std::wstring& name) { return platform::toUtf8(name.substr(name.rfind(L'\\') + 1)); }

}  // namespace

xoNamedPipe::xoNamedPipe() : mPrivate(std::make_unique<Private>()) {}

xoNamedPipe::~xoNamedPipe() { mPrivate->close(); }

// The other object gets the new record, and is then like a new object.
// NOLINTBEGIN(performance-noexcept-move-constructor): the record takes memory
xoNamedPipe::xoNamedPipe(xoNamedPipe&& other) : xoNamedPipe() { mPrivate.swap(other.mPrivate); }

xoNamedPipe& xoNamedPipe::operator=(xoNamedPipe&& other) {
    if (this == &other) return *this;
    // Made first: when memory is short, nothing has changed. The other object needs a record too.
    auto fresh = std::make_unique<Private>();
    mPrivate->close();
    mPrivate = std::exchange(other.mPrivate, std::move(fresh));
    return *this;
}
// NOLINTEND(performance-noexcept-move-constructor)

void xoNamedPipe::setServerTrust(ServerTrust trust) { mPrivate->trust = trust; }

void xoNamedPipe::setTimeLimits(unsigned readMs, unsigned writeMs) {
    mPrivate->readLimitMs = readMs;
    mPrivate->writeLimitMs = writeMs;
}

void xoNamedPipe::setMaxMessageBytes(std::uint32_t bytes) { mPrivate->maxMessageBytes = bytes; }

bool xoNamedPipe::isConnected() const { return static_cast<bool>(mPrivate->handle); }

void xoNamedPipe::cancel() { mPrivate->cancellation.request(); }

void xoNamedPipe::Private::clear() {
    cancellation.clear();
    hasReadError = hasWriteError = false;
    readTotal = writeTotal = 0;
    incoming = {};
    peer.reset();
}

void xoNamedPipe::Private::attach(platform::FileHandle connected, End newEnd, std::uint32_t newBufferBytes) {
    if (newBufferBytes != bufferBytes) {
        readBuffer.reset();
        writeBuffer.reset();
        bufferBytes = newBufferBytes;
    }
    // The events of the record may be missing when memory or handles are short.
    const bool isUsable = readLane.isUsable() && writeLane.isUsable() && cancellation.event();
    if (isUsable) handle = std::move(connected);
    end = newEnd;
    canRead = canWrite = true;
    readResult = writeResult = isUsable ? ResultOk : ResultFailed;
}

bool xoNamedPipe::connectUtf8(const std::string& name, unsigned timeoutMs, ConnectMode mode) {
    Private& self = *mPrivate;
    self.close();
    // Clears earlier requests to cancel before it connects: those that come from now on count.
    self.clear();
    Result result = ResultFailed;
    try {
        result = self.connect(pipe::fullName(name), pipe::Deadline(timeoutMs), mode);
    } catch (const std::bad_alloc&) {  // for the name
    }
    self.readResult = self.writeResult = result;
    if (result == ResultOk) return true;
    xoLogObject(xoLogDebug, "NamedPipe") << "cannot connect to \"" << name
                                         << "\": " << EnumHelper<Result>::ToName(result);
    return false;
}

xoNamedPipe::Result xoNamedPipe::Private::connect(const std::wstring& name, const pipe::Deadline& deadline,
                                                  ConnectMode mode) {
    if (name.empty()) return ResultInvalid;
    DWORD pauseMs = 1;
    while (!cancellation.isRequested()) {
        platform::FileHandle opened = platform::openFile(name, kAccess, /*share=*/0, OPEN_EXISTING, kFlags);
        const DWORD error = opened ? ERROR_SUCCESS : ::GetLastError();
        if (opened) {
            const Result result = admit(std::move(opened));
            if (result == ResultRefused)
                xoLogObject(xoLogWarning) << "xoNamedPipe does not trust the owner of \"" << bareName(name) << "\"";
            return result;
        }
        const Result result = resultOfOpening(error);
        const DWORD remainingMs = deadline.remainingMs();
        const bool mayPass = result == ResultBusy || (result == ResultNotFound && mode != ConnectIfServing);
        if (!mayPass || remainingMs == 0) return result;
        // WaitNamedPipeW returns true once an instance is free. Another client may take it first, so this is tried
        // again at once.
        if (result == ResultBusy && ::WaitNamedPipeW(name.c_str(), (std::min)(remainingMs, kLongestBusyWaitMs)))
            continue;
        // Windows has no notification for a pipe that appears. The pause doubles up to its limit.
        ::WaitForSingleObject(cancellation.event(), (std::min)(remainingMs, pauseMs));
        pauseMs = (std::min)(2 * pauseMs, kLongestPauseMs);
    }
    return ResultCanceled;
}

// Checks the owner before anything is sent: any process may have made a pipe of that name before the server did.
xoNamedPipe::Result xoNamedPipe::Private::admit(platform::FileHandle opened) {
    if (trust != TrustAnyone && !pipe::hasTrustedOwner(opened.get())) return ResultRefused;
    attach(std::move(opened), End::Client, kDefaultBufferBytes);
    return readResult;
}

// DisconnectNamedPipe would discard what the peer has not read yet; closing the handle keeps it.
// https://learn.microsoft.com/windows/win32/api/namedpipeapi/nf-namedpipeapi-disconnectnamedpipe
bool xoNamedPipe::Private::close() {
    if (handle && !hasWriteError) send(pipe::Deadline(writeLimitMs));
    if (handle) handle.reset();
    readAt = readEnd = 0;
    writeUsed = writeSpace = 0;
    writer = 0;
    return !hasWriteError;
}

bool xoNamedPipe::close() { return mPrivate->close(); }

const pipe::Peer& xoNamedPipe::Private::askPeer() const {
    if (peer && peer->isFinal) return *peer;
    if (handle && end == End::Client)
        peer = pipe::findServer(handle.get());
    else if (handle && end == End::Server)
        peer = pipe::findClient(handle.get());
    else
        peer.emplace();
    return *peer;
}

std::uint32_t xoNamedPipe::getPeerProcessId() const { return mPrivate->askPeer().processId; }

std::string xoNamedPipe::getPeerUser() const { return mPrivate->askPeer().user; }

std::string xoNamedPipe::getPeerUserName() const { return pipe::accountName(mPrivate->askPeer().user); }

bool xoNamedPipe::isPeerElevated() const { return mPrivate->askPeer().isElevated; }

void pipe::PipeAccess::attachAccepted(xoNamedPipe& pipe, platform::FileHandle handle, std::uint32_t bufferBytes) {
    xoNamedPipe::Private& record = *pipe.mPrivate;
    record.close();
    record.clear();
    record.attach(std::move(handle), xoNamedPipe::Private::End::Server, bufferBytes);
}

void pipe::PipeAccess::attachOneWay(xoNamedPipe& pipe, platform::FileHandle handle, Direction direction) {
    xoNamedPipe::Private& record = *pipe.mPrivate;
    record.attach(std::move(handle), xoNamedPipe::Private::End::Child, xoNamedPipe::kDefaultBufferBytes);
    record.canRead = direction == Direction::Read;
    record.canWrite = direction == Direction::Write;
}

}  // namespace xo
