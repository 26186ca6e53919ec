// The binary data stream against cereal's portable archive, and what devices cost that stand on one another.
#include <cereal/archives/portable_binary.hpp>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "dice.h"
#include "families.h"
#include "platform/handle.h"
#include "xoSystem/xoDataStream.h"

namespace bench {
namespace {

// Ten values of mixed types.
struct Record {
    std::int32_t id;
    double price;
    std::int16_t count;
    std::uint32_t colour;
    std::int64_t time;
    float weight;
    char mark;
    std::uint16_t port;
    double share;
    std::uint64_t key;

    template <class Visitor>
    void visit(Visitor&& each) {
        each(id);
        each(price);
        each(count);
        each(colour);
        each(time);
        each(weight);
        each(mark);
        each(port);
        each(share);
        each(key);
    }
};

using Records = std::vector<Record>;
constexpr std::size_t kValuesPerRecord = 10;
constexpr std::size_t kBytesPerRecord = 49;
constexpr std::size_t kRecords = 1000000;

Records makeRecords() {
    Dice dice;
    Records records(kRecords);
    for (Record& record : records)
        record.visit(
            [&](auto& value) { value = static_cast<std::remove_reference_t<decltype(value)>>(dice.roll(~0ULL)); });
    return records;
}

// A fixed piece of memory.
class Memory final : public xo::xoIoDevice {
public:
    explicit Memory(std::size_t size) : mBytes(size) {}

    void rewind() { mReadAt = mWriteAt = 0; }
    const std::vector<char>& bytes() const { return mBytes; }

    std::uint64_t readBytes(char* buffer, std::uint64_t size) override {
        if (size > mBytes.size() - mReadAt) return 0;
        copy(buffer, mBytes.data() + mReadAt, size);
        mReadAt += size;
        return size;
    }
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override {
        if (size > mBytes.size() - mWriteAt) return 0;
        copy(mBytes.data() + mWriteAt, buffer, size);
        mWriteAt += size;
        return size;
    }
    bool hasError() const override { return false; }
    bool atEnd() const override { return mReadAt == mBytes.size(); }
    bool seekg(std::int64_t, SeekStart) override { return false; }
    bool seekp(std::int64_t, SeekStart) override { return false; }
    std::uint64_t tellg() override { return mReadAt; }
    std::uint64_t tellp() override { return mWriteAt; }

private:
    // The sizes of numbers without a call.
    static void copy(char* to, const char* from, std::uint64_t size) {
        if (size == 8)
            std::memcpy(to, from, 8);
        else if (size == 4)
            std::memcpy(to, from, 4);
        else if (size == 2)
            std::memcpy(to, from, 2);
        else if (size == 1)
            *to = *from;
        else
            std::memcpy(to, from, size);
    }

    std::vector<char> mBytes;
    std::size_t mReadAt = 0;
    std::size_t mWriteAt = 0;
};

// The same for a standard stream.
class MemoryBuffer final : public std::streambuf {
public:
    explicit MemoryBuffer(std::size_t size) : mBytes(size) { rewind(); }

    void rewind() {
        setp(mBytes.data(), mBytes.data() + mBytes.size());
        setg(mBytes.data(), mBytes.data(), mBytes.data() + mBytes.size());
    }
    const std::vector<char>& bytes() const { return mBytes; }

private:
    std::vector<char> mBytes;
};

// ---- The data stream. Each function is compiled for a device that it knows nothing of.

__declspec(noinline) bool writeOurs(Records& records, xo::xoIoDevice& device, int order) {
    xo::xoDataStream stream(&device, order);
    for (Record& record : records) record.visit([&](const auto& value) { stream << value; });
    return stream.isOk();
}

__declspec(noinline) bool readOurs(Records& records, xo::xoIoDevice& device, int order) {
    xo::xoDataStream stream(&device, order);
    for (Record& record : records) record.visit([&](auto& value) { stream >> value; });
    return stream.isOk();
}

__declspec(noinline) void writeCereal(Records& records, std::ostream& out, int order) {
    using Archive = cereal::PortableBinaryOutputArchive;
    Archive archive(out, order == 1 ? Archive::Options::BigEndian() : Archive::Options::LittleEndian());
    for (Record& record : records) record.visit([&](const auto& value) { archive(value); });
}

// The order stands in the bytes.
__declspec(noinline) void readCereal(Records& records, std::istream& in) {
    cereal::PortableBinaryInputArchive archive(in);
    for (Record& record : records) record.visit([&](auto& value) { archive(value); });
}

__declspec(noinline) void copyOut(Records& records, char* to) {
    for (Record& record : records)
        record.visit([&](const auto& value) {
            std::memcpy(to, &value, sizeof value);
            to += sizeof value;
        });
}

__declspec(noinline) void copyIn(Records& records, const char* from) {
    for (Record& record : records)
        record.visit([&](auto& value) {
            std::memcpy(&value, from, sizeof value);
            from += sizeof value;
        });
}

std::string caseName(const char* verb, int order, const char* where) {
    return std::string(verb) + (order == 1 ? " big" : " little") + ", " + where;
}

void measureInMemory(Suite& suite, Records& records, int order) {
    constexpr std::size_t kBytes = kRecords * kBytesPerRecord;
    constexpr double kValues = kRecords * kValuesPerRecord;
    Memory device(kBytes);
    MemoryBuffer buffer(kBytes + 1);  // cereal begins with a byte for the order
    std::iostream stream(&buffer);
    std::vector<char> raw(kBytes);
    const auto write = [&] {
        device.rewind();
        keep(writeOurs(records, device, order));
    };
    const auto writePeer = [&] {
        buffer.rewind();
        writeCereal(records, stream, order);
    };
    write();
    writePeer();
    require(device.tellp() == kBytes &&
                std::equal(device.bytes().begin(), device.bytes().end(), buffer.bytes().begin() + 1),
            "the sides write different bytes");
    suite.compare("stream", caseName("write", order, "memory"), kValues, write,
                  {{"cereal portable", writePeer}, {"limit: memcpy loop", [&] { copyOut(records, raw.data()); }}});

    Records copy = records;
    const auto read = [&] {
        device.rewind();
        keep(readOurs(copy, device, order));
    };
    const auto readPeer = [&] {
        buffer.rewind();
        readCereal(copy, stream);
    };
    for (const std::function<void()>& side : {std::function<void()>(read), std::function<void()>(readPeer)}) {
        for (Record& record : copy) record = Record();
        side();
        std::vector<char> back(kBytes);
        copyOut(records, raw.data());
        copyOut(copy, back.data());
        require(raw == back, "a side reads other values than were written");
    }
    suite.compare("stream", caseName("read", order, "memory"), kValues, read,
                  {{"cereal portable", readPeer}, {"limit: memcpy loop", [&] { copyIn(copy, raw.data()); }}});
}

void measureInFile(Suite& suite, Records& records, int order) {
    constexpr double kValues = kRecords * kValuesPerRecord;
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / L"xoBench";
    std::filesystem::create_directories(folder);
    const auto ourPath = folder / L"ours.bin", peerPath = folder / L"cereal.bin", rawPath = folder / L"raw.bin";
    std::vector<char> raw(kRecords * kBytesPerRecord);
    std::vector<char> buffer(64 * 1024);  // the runtime's own buffer of 512 bytes would be what is measured
    const auto openOut = [&](std::ofstream& file, const std::filesystem::path& path) -> std::ofstream& {
        file.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        file.open(path, std::ios::binary);
        return file;
    };
    const auto openIn = [&](std::ifstream& file, const std::filesystem::path& path) -> std::ifstream& {
        file.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        file.open(path, std::ios::binary);
        return file;
    };
    const auto rawSize = static_cast<std::streamsize>(raw.size());
    suite.compare("stream", caseName("write", order, "file"), kValues,
                  [&] {
                      std::ofstream file;
                      xo::xoIoDeviceStdStreamProxy device(nullptr, &openOut(file, ourPath));
                      require(writeOurs(records, device, order), "the file could not be written");
                  },
                  {{"cereal portable",
                    [&] {
                        std::ofstream file;
                        writeCereal(records, openOut(file, peerPath), order);
                    }},
                   {"limit: memcpy loop, one write", [&] {
                        copyOut(records, raw.data());
                        std::ofstream(rawPath, std::ios::binary).write(raw.data(), rawSize);
                    }}});
    Records copy = records;
    suite.compare("stream", caseName("read", order, "file"), kValues,
                  [&] {
                      std::ifstream file;
                      xo::xoIoDeviceStdStreamProxy device(&openIn(file, ourPath), nullptr);
                      require(readOurs(copy, device, order), "the file could not be read");
                  },
                  {{"cereal portable",
                    [&] {
                        std::ifstream file;
                        readCereal(copy, openIn(file, peerPath));
                    }},
                   {"limit: one read, memcpy loop", [&] {
                        std::ifstream(rawPath, std::ios::binary).read(raw.data(), rawSize);
                        copyIn(copy, raw.data());
                    }}});
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

// ---- Devices on one another.

__declspec(noinline) void fill(xo::xoIoDevice& device, const std::vector<char>& piece, std::size_t pieces) {
    for (std::size_t i = 0; i < pieces; ++i) keep(device.writeBytes(piece.data(), piece.size()));
}

void measureStacks(Suite& suite, std::size_t pieceSize) {
    constexpr std::size_t kBytes = 256 * 1024;
    constexpr std::size_t kKilobytes = kBytes / 1024;
    const std::vector<char> piece(pieceSize, 'x');
    Memory memory(kBytes), twin(kBytes);
    xo::xoIoDeviceByteCounter counter;
    counter.beginDelegation(&memory);
    xo::xoIoDeviceSignaler::Signal signal = [](xo::xoIoDevice* device) { keep(device); };
    xo::xoIoDeviceSignaler signaler(&signal, 64 * 1024);
    signaler.beginDelegation(&memory);
    xo::xoIoDeviceBroadcast one({&memory}), two({&memory, &twin});
    const auto through = [&](xo::xoIoDevice& device) {
        return [&] {
            memory.rewind();
            twin.rewind();
            fill(device, piece, kBytes / piece.size());
        };
    };
    const std::pair<const char*, xo::xoIoDevice*> stacks[] = {
        {"counter", &counter}, {"signaler", &signaler}, {"broadcast to one", &one}, {"broadcast to two", &two}};
    for (const auto& [name, device] : stacks)
        suite.compare("stream", "1 KB by " + std::to_string(pieceSize) + ", " + name, kKilobytes, through(*device),
                      {{"the bare device", through(memory)}});
}

// ---- File and memory devices.

constexpr int kWords = 4000000;

__declspec(noinline) bool writeWords(xo::xoIoDevice& device) {
    xo::xoDataStream stream(&device, xo::xoDataStream::EndiannessLittle);
    for (int i = 0; i < kWords; ++i) stream << i;
    return stream.isOk();
}

__declspec(noinline) bool readWords(xo::xoIoDevice& device) {
    xo::xoDataStream stream(&device, xo::xoDataStream::EndiannessLittle);
    int last = -1;
    for (int i = 0; i < kWords; ++i) stream >> last;
    return stream.isOk() && last == kWords - 1;
}

void rewind(xo::xoIoDevice& device) {
    device.seekg(0, xo::xoIoDevice::SeekFromBegin);
    device.seekp(0, xo::xoIoDevice::SeekFromBegin);
}

void measureWords(Suite& suite, const std::filesystem::path& folder) {
    const std::string path = (folder / L"words.bin").u8string();
    xo::xoIoDeviceMemory memory;
    xo::xoIoDeviceFile file;
    const auto stdFile = [&](std::ios::openmode mode, auto use) {
        std::fstream stream(folder / L"peer.bin", mode | std::ios::binary);
        xo::xoIoDeviceStdStreamProxy proxy(&stream, &stream);
        require(use(proxy), "the stream has failed");
    };
    suite.compare("stream", "write 4 bytes, memory device", kWords,
                  [&] {
                      rewind(memory);
                      require(writeWords(memory), "memory has failed");
                  },
                  {{"std::fstream proxy", [&] { stdFile(std::ios::out, writeWords); }}});
    suite.compare("stream", "write 4 bytes, file device", kWords,
                  [&] {
                      file.openUtf8(path, xo::xoIoDeviceFile::OpenWrite);
                      require(writeWords(file) && file.close(), "the file has failed");
                  },
                  {{"std::fstream proxy", [&] { stdFile(std::ios::out, writeWords); }}});
    suite.compare("stream", "read 4 bytes, memory device", kWords,
                  [&] {
                      rewind(memory);
                      require(readWords(memory), "memory has failed");
                  },
                  {{"std::fstream proxy", [&] { stdFile(std::ios::in, readWords); }}});
    suite.compare("stream", "read 4 bytes, file device", kWords,
                  [&] {
                      file.openUtf8(path, xo::xoIoDeviceFile::OpenRead);
                      require(readWords(file) && file.close(), "the file has failed");
                  },
                  {{"std::fstream proxy", [&] { stdFile(std::ios::in, readWords); }}});
}

void measureBlocks(Suite& suite, const std::filesystem::path& folder) {
    constexpr DWORD kBlock = 65536;
    constexpr int kBlocks = 512;
    const std::string path = (folder / L"blocks.bin").u8string();
    std::vector<char> block(kBlock, 'x');
    const auto openRaw = [&](DWORD access, DWORD disposition) {
        return xo::platform::FileHandle(::CreateFileW((folder / L"raw.bin").c_str(), access, FILE_SHARE_READ, nullptr,
                                                      disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    };
    suite.compare("stream", "write 64 KiB blocks, file device", kBlocks,
                  [&] {
                      xo::xoIoDeviceFile file;
                      file.openUtf8(path, xo::xoIoDeviceFile::OpenWrite);
                      for (int i = 0; i < kBlocks; ++i) file.writeBytes(block.data(), kBlock);
                      require(file.close(), "the file has failed");
                  },
                  {{"limit: WriteFile", [&] {
                        const auto file = openRaw(GENERIC_WRITE, CREATE_ALWAYS);
                        DWORD count = 0;
                        for (int i = 0; i < kBlocks; ++i)
                            require(::WriteFile(file.get(), block.data(), kBlock, &count, nullptr), "no write");
                    }}});
    suite.compare("stream", "read 64 KiB blocks, file device", kBlocks,
                  [&] {
                      xo::xoIoDeviceFile file;
                      file.openUtf8(path, xo::xoIoDeviceFile::OpenRead);
                      for (int i = 0; i < kBlocks; ++i)
                          require(file.readBytes(block.data(), kBlock) == kBlock, "the file has failed");
                  },
                  {{"limit: ReadFile", [&] {
                        const auto file = openRaw(GENERIC_READ, OPEN_EXISTING);
                        DWORD count = 0;
                        for (int i = 0; i < kBlocks; ++i)
                            require(::ReadFile(file.get(), block.data(), kBlock, &count, nullptr), "no read");
                    }}});
}

void measureFileAndMemory(Suite& suite) {
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / L"xoBench devices";
    std::filesystem::create_directories(folder);
    measureWords(suite, folder);
    measureBlocks(suite, folder);
    constexpr int kBytes = 100 << 20;
    suite.compare("stream", "100 MiB byte by byte, memory device", kBytes,
                  [] {
                      xo::xoIoDeviceMemory memory;
                      xo::xoIoDevice& device = memory;
                      keep(device);
                      for (int i = 0; i < kBytes; ++i) device.writeBytes("x", 1);
                      require(memory.getSize() == kBytes, "memory has failed");
                  },
                  {{"std::string", [] {
                        std::string text;
                        for (int i = 0; i < kBytes; ++i) text += 'x';
                        keep(text);
                    }}});
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

}  // namespace

void measureStream(Suite& suite) {
    if (!suite.wants("stream")) return;
    Records records = makeRecords();
    for (const int order : {0, 1}) measureInMemory(suite, records, order);
    for (const int order : {0, 1}) measureInFile(suite, records, order);
    for (const int pieceSize : {8, 64, 4096}) measureStacks(suite, static_cast<std::size_t>(pieceSize));
    measureFileAndMemory(suite);
}

}  // namespace bench
