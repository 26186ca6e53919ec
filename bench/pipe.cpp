// Named pipes between two threads, beside the calls that they are made of. Child processes that print, beside a bare
// loop.
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "families.h"
#include "platform/handle.h"
#include "xoSystem/xoDataStream.h"
#include "xoSystem/xoNamedPipe.h"
#include "xoSystem/xoProcess.h"

namespace bench {
namespace {

using xo::platform::FileHandle;
using xo::platform::KernelHandle;

constexpr std::size_t kBlock = 65536;

std::wstring freshName() {
    static int count = 0;
    return L"\\\\.\\pipe\\xo-bench-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(++count);
}

// Both ends of a pipe by the calls of Windows, overlapped or not.
class RawPipe {
public:
    explicit RawPipe(bool isOverlapped) : mIsOverlapped(isOverlapped) {
        const std::wstring name = freshName();
        const DWORD flag = isOverlapped ? FILE_FLAG_OVERLAPPED : 0;
        mServer = FileHandle(
            ::CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX | flag, PIPE_TYPE_BYTE, 1, kBlock, kBlock, 0, nullptr));
        mClient = FileHandle(
            ::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, flag, nullptr));
        require(mServer && mClient, "no pipe");
    }

    HANDLE server() const { return mServer.get(); }
    HANDLE client() const { return mClient.get(); }
    void closeClient() { mClient.reset(); }

    // Move all of the bytes; false at the end. One event serves one direction of one end.
    bool read(HANDLE end, HANDLE event, char* bytes, std::size_t size) const {
        return move(end, event, bytes, size, true);
    }
    bool write(HANDLE end, HANDLE event, char* bytes, std::size_t size) const {
        return move(end, event, bytes, size, false);
    }

private:
    bool move(HANDLE end, HANDLE event, char* bytes, std::size_t size, bool isRead) const {
        for (std::size_t done = 0; done < size;) {
            DWORD moved = 0;
            OVERLAPPED overlapped{};
            overlapped.hEvent = event;
            OVERLAPPED* const operation = mIsOverlapped ? &overlapped : nullptr;
            const auto rest = static_cast<DWORD>(size - done);
            BOOL isDone = isRead ? ::ReadFile(end, bytes + done, rest, &moved, operation)
                                 : ::WriteFile(end, bytes + done, rest, &moved, operation);
            if (mIsOverlapped && (isDone || ::GetLastError() == ERROR_IO_PENDING))
                isDone = ::GetOverlappedResult(end, &overlapped, &moved, TRUE);
            if (!isDone || moved == 0) return false;
            done += moved;
        }
        return true;
    }

    bool mIsOverlapped;
    FileHandle mServer, mClient;
};

// The same two ends by this library.
struct OurPipe {
    OurPipe() {
        xo::xoNamedPipeServer server;
        const std::string name = "xo-bench-ours-" + std::to_string(++count());
        require(server.listenUtf8(name) && client.connectUtf8(name) && server.waitForConnection(peer), "no pipe");
    }
    static int& count() {
        static int made = 0;
        return made;
    }

    xo::xoNamedPipe client, peer;
};

KernelHandle event() { return KernelHandle(::CreateEventW(nullptr, TRUE, FALSE, nullptr)); }

// Another thread answers each piece of that size until the end.
class RawEcho {
public:
    RawEcho(bool isOverlapped, std::size_t size)
        : mPipe(isOverlapped), mBytes(size, 'x'), mThread([this] {
              std::vector<char> bytes(mBytes.size());
              const KernelHandle in = event(), out = event();
              while (mPipe.read(mPipe.server(), in.get(), bytes.data(), bytes.size()) &&
                     mPipe.write(mPipe.server(), out.get(), bytes.data(), bytes.size()))
                  continue;
          }) {}
    ~RawEcho() {
        mPipe.closeClient();
        mThread.join();
    }
    void ask() {
        mPipe.write(mPipe.client(), mOut.get(), mBytes.data(), mBytes.size());
        mPipe.read(mPipe.client(), mIn.get(), mBytes.data(), mBytes.size());
    }

private:
    RawPipe mPipe;
    std::vector<char> mBytes;
    KernelHandle mIn = event(), mOut = event();
    std::thread mThread;
};

class OurEcho {
public:
    explicit OurEcho(std::size_t size)
        : mBytes(size, 'x'), mThread([this] {
              std::vector<char> bytes(mBytes.size());
              while (mPipe.peer.readBytes(bytes.data(), bytes.size()) == bytes.size())
                  mPipe.peer.writeBytes(bytes.data(), bytes.size());
          }) {}
    ~OurEcho() {
        mPipe.client.close();
        mThread.join();
    }
    void ask() {
        mPipe.client.writeBytes(mBytes.data(), mBytes.size());
        mPipe.client.readBytes(mBytes.data(), mBytes.size());
    }

private:
    OurPipe mPipe;
    std::vector<char> mBytes;
    std::thread mThread;
};

// Another thread takes what is written, and does nothing with it.
class RawSink {
public:
    RawSink()
        : mPipe(true), mThread([this] {
              std::vector<char> bytes(kBlock);
              const KernelHandle in = event();
              while (mPipe.read(mPipe.server(), in.get(), bytes.data(), bytes.size())) continue;
          }) {}
    ~RawSink() {
        mPipe.closeClient();
        mThread.join();
    }
    void put() { mPipe.write(mPipe.client(), mOut.get(), mBytes.data(), mBytes.size()); }

private:
    RawPipe mPipe;
    std::vector<char> mBytes = std::vector<char>(kBlock, 'x');
    KernelHandle mOut = event();
    std::thread mThread;
};

class OurSink {
public:
    OurSink()
        : mThread([this] {
              std::vector<char> bytes(kBlock);
              while (mPipe.peer.readBytes(bytes.data(), bytes.size()) != 0) continue;
          }) {}
    ~OurSink() {
        mPipe.client.close();
        mThread.join();
    }
    void put() { mPipe.client.writeBytes(mBytes.data(), mBytes.size()); }
    xo::xoNamedPipe& device() { return mPipe.client; }

private:
    OurPipe mPipe;
    std::vector<char> mBytes = std::vector<char>(kBlock, 'x');
    std::thread mThread;
};

// Takes all and keeps nothing.
class Nowhere final : public xo::xoIoDevice {
public:
    std::uint64_t bytes = 0;
    std::uint64_t readBytes(char*, std::uint64_t) override { return 0; }
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override {
        keep(buffer);
        bytes += size;
        return size;
    }
    bool hasError() const override { return false; }
    bool atEnd() const override { return true; }
    bool seekg(std::int64_t, SeekStart) override { return false; }
    bool seekp(std::int64_t, SeekStart) override { return false; }
    std::uint64_t tellg() override { return 0; }
    std::uint64_t tellp() override { return bytes; }
};

std::wstring ownPath() {
    wchar_t path[MAX_PATH];
    return std::wstring(path, ::GetModuleFileNameW(nullptr, path, MAX_PATH));
}

// This program, asked for that many bytes, by calls of Windows alone: the number of bytes that came.
std::uint64_t captureRaw(std::uint64_t size) {
    const std::wstring name = freshName();
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    const FileHandle ours(::CreateNamedPipeW(name.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_OVERLAPPED, PIPE_TYPE_BYTE,
                                             1, kBlock, kBlock, 0, nullptr));
    FileHandle theirs(::CreateFileW(name.c_str(), GENERIC_WRITE, 0, &inheritable, OPEN_EXISTING, 0, nullptr));
    std::wstring line = L"xoBench --write " + std::to_wstring(size);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = theirs.get();
    PROCESS_INFORMATION created{};
    if (!::CreateProcessW(ownPath().c_str(), line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr, nullptr,
                          &startup, &created))
        return 0;
    const KernelHandle process(created.hProcess), mainThread(created.hThread), done = event();
    theirs.reset();
    std::vector<char> bytes(kBlock);
    std::uint64_t count = 0;
    for (DWORD got = 1; count < size && got != 0; count += got) {
        OVERLAPPED overlapped{};
        overlapped.hEvent = done.get();
        if (!::ReadFile(ours.get(), bytes.data(), kBlock, nullptr, &overlapped) && ::GetLastError() != ERROR_IO_PENDING)
            break;
        if (!::GetOverlappedResult(ours.get(), &overlapped, &got, TRUE)) got = 0;
    }
    ::WaitForSingleObject(process.get(), INFINITE);
    return count;
}

std::uint64_t captureOurs(const std::string& program, std::uint64_t size) {
    Nowhere device;
    xo::xoProcess child;
    child.setOutput(xo::xoProcess::Output::Device(&device));
    if (!child.startProcess(program, {"--write", std::to_string(size)}) || !child.waitForFinished()) return 0;
    return device.bytes;
}

// Values while the buffer has room for them: what a value costs before anything is sent.
void measureValues(Suite& suite) {
    constexpr int kValues = 16000;  // below a buffer
    OurSink ours;
    Nowhere nowhere;
    const auto nsPerValue = [&](xo::xoIoDevice& device) {
        xo::xoDataStream stream(&device, xo::xoDataStream::EndiannessLittle);
        std::vector<double> times;
        for (int round = 0; round < 101; ++round) {
            ours.device().flush();
            const auto start = std::chrono::steady_clock::now();
            for (int i = 0; i < kValues; ++i) stream << i;
            times.push_back(std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count());
        }
        std::nth_element(times.begin(), times.begin() + 50, times.end());
        return times[50] / kValues;
    };
    const double ourNs = nsPerValue(ours.device()), theirNs = nsPerValue(nowhere);
    const double ratio = ourNs / theirNs;
    suite.add({"pipe", "4-byte value, before the buffer is full", "a device that drops it", ourNs, theirNs, ratio,
               ratio, ratio});
}

}  // namespace

int writeOutput(std::uint64_t size) {
    const std::vector<char> block(kBlock, 'x');
    for (DWORD written = 0; size != 0; size -= written) {
        const auto piece = static_cast<DWORD>((std::min)(size, std::uint64_t{kBlock}));
        if (!::WriteFile(::GetStdHandle(STD_OUTPUT_HANDLE), block.data(), piece, &written, nullptr)) return 1;
    }
    return 0;
}

void measurePipe(Suite& suite) {
    if (!suite.wants("pipe")) return;
    {
        OurEcho ours(64);
        RawEcho overlapped(true, 64), synchronous(false, 64);
        suite.compare("pipe", "64 bytes there and back", 1, [&] { ours.ask(); },
                      {{"limit: overlapped calls", [&] { overlapped.ask(); }},
                       {"limit: synchronous calls", [&] { synchronous.ask(); }}});
    }
    {
        OurSink ours;
        RawSink raw;
        suite.compare("pipe", "write 64 KB, a byte", kBlock, [&] { ours.put(); },
                      {{"limit: overlapped calls", [&] { raw.put(); }}});
    }
    measureValues(suite);
    const std::string program = std::filesystem::path(ownPath()).u8string();
    constexpr std::uint64_t kMuch = 256 << 20;
    require(captureRaw(100) == 100 && captureOurs(program, 100) == 100, "the children do not print alike");
    suite.compare("pipe", "capture 256 MB, a byte", kMuch, [&] { keep(captureOurs(program, kMuch)); },
                  {{"limit: overlapped calls", [&] { keep(captureRaw(kMuch)); }}});
    suite.compare("pipe", "run a child that prints 100 bytes", 1,
                  [&] {
                      keep(xo::xoProcess::RunUtf8(program, {"--write", "100"}).output.size());
                  },
                  {{"limit: CreateProcess and reads", [&] { keep(captureRaw(100)); }}});
}

}  // namespace bench
