// xoNamedPipe, xoNamedPipeServer: bytes and messages between two processes of one machine, over a named pipe.
//
//     xo::xoNamedPipe pipe;                                                xo::xoNamedPipeServer server;
//     if (!pipe.connectUtf8("catalogue", 5000)) return away();             if (!server.listenUtf8("catalogue"))
//     xo::xoDataStream stream(&pipe, xo::xoDataStream::EndiannessLittle);      return taken();
//     stream << std::string("find") << key;                                xo::xoNamedPipe peer;
//     stream >> answer;   // first sends what was written                  while (server.waitForConnection(peer))
//                                                                              serve(peer);
//
// A pipe is named by a text of 1 to 247 UTF-16 units, valid UTF-8, without NUL, slash and backslash. The prefix of
// pipes of this machine, "//./pipe/", may stand in front of it, with backslashes too, in any case. Windows compares
// names without case. Any other name gives ResultInvalid, and nothing is tried; so do the pipes of other machines.
//
// By default only processes of the same user can connect, whether they are elevated or not, and a client trusts only
// servers of that user and of the system. A server may learn who its client is, but not act in its name. Data is not
// encrypted; it never leaves the machine.
//
// Of an xoNamedPipe one thread may read while another one writes, and any thread may call cancel(). Everything else is
// for one thread at a time. Before another thread goes on with the writing, the first one calls flush(). Of a server
// one thread waits for connections, and any thread may call close(). A connected end does not need its server any more.
//
// Time limits are milliseconds: kNoLimit is no limit, 0 tries once and does not wait. Failures are results, never
// exceptions. A peer that leaves is no failure and leaves no line in the log.
#ifndef XOSYSTEM_XONAMEDPIPE_H
#define XOSYSTEM_XONAMEDPIPE_H

#include <cstdint>
#include <memory>
#include <string>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoIoDeviceBase.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

namespace pipe {
struct PipeAccess;
}

// One end of a connection: the client's, the one that a server has accepted, or that of a child process.
//
// Written bytes are gathered in a buffer until it is full, or flush(), close(), a message, a read or waitForData()
// sends them. A read and waitForData() send only what the calling thread itself has written. Pieces of the size of the
// buffer or more are not copied. A peer that does not read makes the writer wait. Apart from the two buffers and a
// message that has arrived in part, no more than the size of a buffer is kept in memory.
class XOSYSTEM_API xoNamedPipe : public xoIoDevice {
public:
    // What came of a call.
    enum Result : int {
        ResultOk = 0,
        ResultEnd = 1,       // the peer has closed its end
        ResultTimeout = 2,   // the time limit has passed
        ResultCanceled = 3,  // cancel() was called, or the server's close()
        ResultNotFound = 4,  // no pipe of that name, not even within the time limit
        ResultBusy = 5,      // the server accepted no further client within the time limit
        ResultRefused = 6,   // access is denied, the server is not trusted, or the name is taken
        ResultInvalid = 7,   // the name or the security descriptor is invalid
        ResultTooLong = 8,   // the message is longer than the maximum
        ResultFailed = 9     // any other failure, and an object that is not connected
    };

    // What connectUtf8() does without a server.
    enum ConnectMode : int {
        ConnectAwaitServer = 0,  // waits until there is a pipe of that name
        ConnectIfServing = 1     // fails at once when there is none
    };

    // To whom the pipe of a server must belong.
    enum ServerTrust : int {
        TrustSameUserAndSystem = 0,  // the pipe must belong to this user, to administrators or to the system
        TrustAnyone = 1              // nobody is asked whose it is
    };

    static constexpr unsigned kNoLimit = 0xFFFFFFFF;                    // of time
    static constexpr std::uint32_t kDefaultBufferBytes = 65536;         // of each of the two buffers
    static constexpr std::uint32_t kDefaultMaxMessageBytes = 16 << 20;  // 16 MiB

    xoNamedPipe();
    ~xoNamedPipe() override;  // closes

    // Move the connection and all settings, while no other thread and no stream uses either object. The other object is
    // then like a new one. Throw std::bad_alloc, and change nothing, when there is no memory for that.
    // NOLINTBEGIN(performance-noexcept-move-constructor)
    xoNamedPipe(xoNamedPipe&& other);
    xoNamedPipe& operator=(xoNamedPipe&& other);
    // NOLINTEND(performance-noexcept-move-constructor)
    xoNamedPipe(const xoNamedPipe&) = delete;
    xoNamedPipe& operator=(const xoNamedPipe&) = delete;

    // ---- connecting ----

    // Connects to a server; a connected object is closed first. While no pipe of that name exists, or the server has no
    // free instance, it waits without using the processor. False: getReadResult() and getWriteResult() say why, and a
    // DEBUG line of the qualifier "NamedPipe".
    bool connectUtf8(const std::string& name, unsigned timeoutMs = kNoLimit, ConnectMode mode = ConnectAwaitServer);

    // Which servers the next connectUtf8() trusts. Any process may have taken the name before the server that the
    // client expects. A pipe whose owner is not trusted is closed again, with ResultRefused and a WARNING line.
    void setServerTrust(ServerTrust trust);

    // The limits of each of the calls below that read or write, at first kNoLimit. close() and the destructor write.
    void setTimeLimits(unsigned readMs, unsigned writeMs);

    // The length of the longest message that is sent or received.
    void setMaxMessageBytes(std::uint32_t bytes);

    // True from connecting until close(), also after the peer has left.
    bool isConnected() const;

    // Sends what is in the buffer, within the limit for writing, and disconnects. The peer can still read what was sent
    // before; this does not wait for it to do so. False when bytes were lost, in this call or in earlier writes.
    bool close();

    // Ends the wait that is under way, also that of connectUtf8(), and every later one, at once with ResultCanceled,
    // until the object is connected again. May be called from any thread.
    void cancel();

    // ---- reading ----

    // True once a byte can be read without waiting. False: getReadResult() says why.
    bool waitForData(unsigned timeoutMs = kNoLimit);

    // Waits for one byte and returns what is there, at most size bytes. 0: getReadResult() says why, except for a null
    // buffer or a size of 0, which changes no result.
    std::uint64_t readSome(char* buffer, std::uint64_t size);

    // Waits until all bytes are there, the peer has closed its end, or the limit has passed, and returns how many it
    // read. Neither the end nor a time-out raises the error flag, and reading can go on after a time-out. All that the
    // peer has sent before it closed can be read.
    std::uint64_t readBytes(char* buffer, std::uint64_t size) override;

    // Receives one message. False leaves the text unchanged; getReadResult() says why. After a time-out inside a
    // message the next call goes on with it. A message beyond the maximum raises the error flag, with a WARNING line,
    // and nothing more is read. Read bytes between messages only. Memory is taken as bytes arrive, not as announced.
    bool readMessage(std::string& message);

    // Whether the peer has closed its end and everything is read, or the object is not connected. Does not wait.
    bool atEnd() const override;

    // ---- writing ----

    // Returns the size, or 0. A write that fails, is cancelled or exceeds the limit raises the error flag until the
    // object is connected again, because it is not known how much has arrived; later writes return 0.
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override;

    // Send one message at once: its length as four bytes, little-endian, then its bytes. A message may be empty. One
    // beyond the maximum is not sent, with ResultTooLong.
    bool writeMessage(const std::string& message);
    bool writeMessage(const char* data, std::uint64_t size);

    // Sends what is in the buffer. True when there was nothing to send and no error.
    bool flush();

    // ---- state ----

    // The result of the last call that read, or wrote. Connecting sets both.
    Result getReadResult() const;
    Result getWriteResult() const;

    bool hasError() const override;  // of reading or writing; connecting clears it

    // A pipe has no positions: false, with a CRITICAL line. The error flag is not raised.
    bool seekg(std::int64_t offset, SeekStart start) override;
    bool seekp(std::int64_t offset, SeekStart start) override;
    // How many bytes of this connection were read and written by calls of this object.
    std::uint64_t tellg() override;
    std::uint64_t tellp() override;

    // ---- the peer ----
    //
    // Windows is asked once for each connection. Ask for the user of an accepted end after the first read from it,
    // because Windows does not tell before as which user the client has connected. Until then the answers are those for
    // the process that has the client's number, which may be another one by now, and the next call asks again.

    // The process at the other end, 0 when it is not known. Only a hint, because Windows uses numbers again.
    std::uint32_t getPeerProcessId() const;

    // The security identifier of the peer's user, such as "S-1-5-21-...". Empty when it is not known, as for a client
    // that has connected anonymously. At the client's end it is the owner of the pipe.
    std::string getPeerUser() const;

    // "DOMAIN\name". May ask a domain controller, which takes time. Empty when it is not known.
    std::string getPeerUserName() const;

    // Whether the peer runs elevated; false when that is not known. At an accepted end, decide by it only after the
    // first read, see above.
    bool isPeerElevated() const;

private:
    friend struct pipe::PipeAccess;
    struct Private;
    std::unique_ptr<Private> mPrivate;  // never null
};

// Accepts the clients of a pipe. Neither copied nor moved.
class XOSYSTEM_API xoNamedPipeServer {
public:
    // Who may connect. Neither admits other machines.
    enum Access : int {
        AccessSameUser = 0,   // processes of this user, elevated or not: ask isPeerElevated() before elevated work
        AccessLocalUsers = 1  // processes of all users that are logged on at this machine
    };

    // No limit of time; the first backlog and the largest one; the limits of setBufferBytes().
    static constexpr unsigned kNoLimit = 0xFFFFFFFF;
    static constexpr unsigned kDefaultBacklog = 8;
    static constexpr unsigned kMaxBacklog = 60;
    static constexpr std::uint32_t kMinBufferBytes = 4096;
    static constexpr std::uint32_t kMaxBufferBytes = 1 << 20;

    xoNamedPipeServer();
    ~xoNamedPipeServer();  // closes
    xoNamedPipeServer(const xoNamedPipeServer&) = delete;
    xoNamedPipeServer& operator=(const xoNamedPipeServer&) = delete;

    // ---- before listenUtf8(), which uses what they set ----

    // Who may connect; at first AccessSameUser.
    void setAccess(Access access);

    // A descriptor in the security descriptor definition language, in place of that of setAccess(). Empty: by access.
    void setSecurityDescriptor(const std::string& sddl);

    // How many clients may wait for their connection, from 1 to kMaxBacklog. Further ones wait on their side.
    void setBacklog(unsigned instances);

    // The size of the buffers of Windows and of accepted ends, from kMinBufferBytes to kMaxBufferBytes.
    void setBufferBytes(std::uint32_t bytes);

    // ---- serving ----

    // Opens the pipe; a server that listens is closed first. From now on clients can connect. False with a CRITICAL
    // line: ResultRefused when the name is taken, ResultInvalid for a bad name or descriptor. A name is taken as long
    // as another server listens on it, and on Windows also until both ends of each connection are closed.
    bool listenUtf8(const std::string& name);

    // Waits for a client and gives its connection to the pipe, which is closed first; its cancellation and errors are
    // cleared, its limits stay. Clients are served in the order of their connecting. One that has left without writing
    // anything is passed over. False: ResultTimeout, ResultCanceled by close(), ResultFailed when not listening.
    bool waitForConnection(xoNamedPipe& pipe, unsigned timeoutMs = kNoLimit);

    // Ends a wait that is under way and frees the name. Clients that were not accepted see the end. May be called from
    // any thread.
    void close();

    // From listenUtf8() until close().
    bool isListening() const;

    // Of the last listenUtf8() or waitForConnection().
    xoNamedPipe::Result getResult() const;

private:
    struct Private;
    std::unique_ptr<Private> mPrivate;
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoNamedPipe::Result> xoEnumEntries(xoNamedPipe::Result);
XOSYSTEM_API xoEnumList<xoNamedPipe::ConnectMode> xoEnumEntries(xoNamedPipe::ConnectMode);
XOSYSTEM_API xoEnumList<xoNamedPipe::ServerTrust> xoEnumEntries(xoNamedPipe::ServerTrust);
XOSYSTEM_API xoEnumList<xoNamedPipeServer::Access> xoEnumEntries(xoNamedPipeServer::Access);

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
