#include <memory>
#include <random>

#include "log/logFixture.h"
#include "support/allocationCount.h"
#include "support/child.h"
#include "support/importHook.h"
#include "support/openHandles.h"
#include "support/temporaryFolder.h"
#include "xoSystem/xoDataStream.h"
#include "xoSystem/xoEnumHelper.h"

namespace xo::tests {
namespace {

using File = xoIoDeviceFile;
using Memory = xoIoDeviceMemory;
using Start = xoIoDevice::SeekStart;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

struct Devices : LogTest {
    // What the file holds on the disk.
    std::string onDisk(const std::string& name = "a.bin") const { return mFolder.read(name); }
    std::string path(const std::string& name = "a.bin") const { return mFolder.path(name); }
    bool open(File& file, File::OpenMode mode, File::Share share = File::ShareDefault) const {
        return file.openUtf8(path(), mode, share);
    }

    TemporaryFolder mFolder;
};

std::string readAll(xoIoDevice& device) {
    std::string bytes(300000, '\0');
    bytes.resize(device.readBytes(bytes.data(), bytes.size()));
    return bytes;
}

// What both devices promise, as obvious as can be.
struct Model {
    std::string bytes;
    std::size_t readAt = 0, writeAt = 0;

    std::string read(std::size_t size) {
        const std::string got = readAt < bytes.size() ? bytes.substr(readAt, size) : "";
        readAt += got.size();
        return got;
    }
    void write(const std::string& piece) {
        if (piece.empty()) return;
        if (bytes.size() < writeAt) bytes.resize(writeAt);
        bytes.replace(writeAt, piece.size(), piece);
        writeAt += piece.size();
    }
};

// Sizes around the buffer's and around small powers of two.
std::size_t rollSize(std::mt19937& dice) {
    const std::size_t power = std::size_t{1} << dice() % 18;
    return power + dice() % 3 - 1;
}

void compareWithModel(xoIoDevice& device, Model model, unsigned seed) {
    std::mt19937 dice(seed);
    for (int step = 0; step != 400; ++step) {
        const std::size_t size = rollSize(dice);
        switch (dice() % 5) {
            case 0: {
                std::string got(size, '?');
                got.resize(device.readBytes(got.data(), size));
                ASSERT_TRUE(got == model.read(size)) << seed << ' ' << step;
                break;
            }
            case 1: {
                const std::string piece(size, static_cast<char>('a' + dice() % 26));
                ASSERT_EQ(device.writeBytes(piece.data(), size), size) << seed << ' ' << step;
                model.write(piece);
                break;
            }
            case 2:
                for (int i = 0; i != 100; ++i) {  // small pieces
                    device << "0123456789";
                    model.write("0123456789");
                }
                break;
            default: {
                const bool reads = dice() % 2 == 0;
                std::size_t& at = reads ? model.readAt : model.writeAt;
                const auto start = static_cast<Start>(dice() % 3);
                const auto from = std::int64_t(start == 0 ? 0 : start == 1 ? at : model.bytes.size());
                const auto offset = static_cast<std::int64_t>(dice() % 200000) - (start == 0 ? 20000 : 100000);
                const bool isInside = from + offset >= 0;
                ASSERT_EQ(reads ? device.seekg(offset, start) : device.seekp(offset, start), isInside);
                if (isInside) at = static_cast<std::size_t>(from + offset);
            }
        }
        ASSERT_TRUE(device.tellg() == model.readAt && device.tellp() == model.writeAt) << seed << ' ' << step;
        ASSERT_EQ(device.atEnd(), model.readAt >= model.bytes.size()) << seed << ' ' << step;
    }
    ASSERT_TRUE(device.good() && device.seekg(0, Start::SeekFromBegin));
    std::string all(model.bytes.size() + 1, '?');
    all.resize(device.readBytes(all.data(), all.size()));
    ASSERT_TRUE(all == model.bytes) << seed;
}

TEST_F(Devices, DoWhatTheirModelDoes) {
    for (unsigned seed = 1; seed != 9; ++seed) {
        File file;
        ASSERT_TRUE(open(file, seed % 2 == 0 ? File::OpenReadWrite : File::OpenNew));
        compareWithModel(file, {}, seed);
        ASSERT_TRUE(file.close());
        const std::string bytes = onDisk();
        ASSERT_TRUE(open(file, File::OpenReadWrite));
        compareWithModel(file, {bytes}, seed + 100);
        file.close();
        ASSERT_TRUE(xoDirUtils::RemoveFileUtf8(path()));

        Memory memory;
        compareWithModel(memory, {}, seed);
        Memory given(std::vector<char>(bytes.begin(), bytes.end()));
        compareWithModel(given, {bytes, 0, bytes.size()}, seed + 100);
    }
}

TEST_F(Devices, ReadAndWriteEverySizeAroundTheBuffer) {
    for (std::size_t power = 1; power <= 4 * File::kBufferBytes; power *= 2) {
        for (const std::size_t size : {power - 1, power, power + 1}) {
            const std::string bytes(size, 'x');
            File file;
            ASSERT_TRUE(open(file, File::OpenWrite));
            file << bytes << "-" << bytes;
            ASSERT_EQ(file.getSize(), 2 * size + 1);
            ASSERT_TRUE(file.close() && file.good());
            ASSERT_TRUE(onDisk() == bytes + "-" + bytes) << size;
            ASSERT_TRUE(open(file, File::OpenRead));
            ASSERT_TRUE(readAll(file) == (bytes + "-" + bytes).substr(0, 300000)) << size;
        }
    }
}

TEST_F(Devices, OpenInEachMode) {
    struct Row {
        File::OpenMode mode;
        bool opensMissing, opensExisting;
        const char* read;     // what is read of "old", "!" for an error
        const char* written;  // what is in the file after "N" was written, or "!"
    };
    const Row rows[] = {{File::OpenRead, false, true, "old", "!"},      {File::OpenWrite, true, true, "!", "N"},
                        {File::OpenAppend, true, true, "!", "oldN"},    {File::OpenReadWrite, true, true, "old", "Nld"},
                        {File::OpenNew, true, false, nullptr, nullptr}, {File::OpenReplace, true, true, "!", "N"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.mode);
        File file;
        EXPECT_EQ(open(file, row.mode) && file.close(), row.opensMissing);
        EXPECT_EQ(mFolder.has("a.bin"), row.opensMissing);
        mFolder.write("a.bin", "old");
        EXPECT_EQ(open(file, row.mode), row.opensExisting);
        EXPECT_EQ(file.good(), row.opensExisting);
        if (row.opensExisting) {
            EXPECT_EQ(file.tellg() + file.tellp(), row.mode == File::OpenAppend ? 3U : 0U);
            const std::string read = readAll(file);
            EXPECT_EQ(file.good() ? read : "!", row.read);
            file.close();
            mFolder.write("a.bin", "old");
            open(file, row.mode);
            EXPECT_EQ(file.writeBytes("N", 1), row.written[0] != '!');
            EXPECT_EQ(file.close() ? onDisk() : "!", row.written);
        }
        xoDirUtils::RemoveFileUtf8(path());
    }
    EXPECT_THAT(takeLines(), testing::SizeIs(4)) << "each transfer in the wrong direction, once";
    EXPECT_FALSE(File().openUtf8(path(), static_cast<File::OpenMode>(6)));
    EXPECT_FALSE(File().openUtf8(path(), File::OpenWrite, static_cast<File::Share>(-1)) || mFolder.has("a.bin"));
}

TEST_F(Devices, OpenOnlyFilesOnADisk) {
    const std::string longName(150, 'n'), longFolder = path(longName);
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(longFolder));
    mFolder.write("there", "");
    const std::pair<std::string, bool> rows[] = {{"", false},
                                                 {std::string("a\0b", 3), false},
                                                 {mFolder.path(), false},
                                                 {mFolder.path("none/a"), false},
                                                 {"NUL", false},
                                                 {"CON", false},
                                                 {"\\\\.\\pipe\\xo no such pipe", false},
                                                 {"C:", false},
                                                 {path("\xC3\xA9\xE6\x97\xA5"), true},
                                                 {longFolder + "/" + longName, true}};
    for (const auto& [name, isFile] : rows) {
        for (const File::OpenMode mode : {File::OpenWrite, File::OpenAppend, File::OpenReplace}) {
            File file;
            EXPECT_EQ(file.openUtf8(name, mode), isFile) << name << ' ' << mode;
            const int error = file.getError().getErrorCode();
            EXPECT_EQ(error == 0, isFile) << name;
            EXPECT_EQ(file.isOpen(), isFile);
            file << "x";
            EXPECT_EQ(file.getError().getErrorCode(), error) << name;
            EXPECT_TRUE(file.good() == isFile && file.close() == isFile && file.hasError() != isFile) << name;
        }
    }
    EXPECT_THAT(takeLines(), IsEmpty());
    log().setLogTypeEnabled(xoLogDebug, true);
    File file;
    file.openUtf8(path("none\\a"), File::OpenRead);
    EXPECT_THAT(takeLines(),
                ElementsAre(StartsWith("0(IoDeviceFile)xoIoDeviceFile cannot open \"" + path("none\\a") + "\": ")));
}

TEST_F(Devices, StayWithTheFileWhenTheWorkingFolderChanges) {
    const std::string before = xoDirUtils::GetCurrentWorkingDirUtf8();
    ASSERT_TRUE(xoDirUtils::SetCurrentWorkingDirUtf8(mFolder.path()));
    File file;
    ASSERT_TRUE(file.openUtf8("b.bin", File::OpenReplace));
    xoDirUtils::SetCurrentWorkingDirUtf8(before);
    EXPECT_EQ(file.getPathUtf8(), path("b.bin"));
    file << "x";
    EXPECT_TRUE(file.close());
    EXPECT_EQ(onDisk("b.bin"), "x");
    ASSERT_TRUE(file.openUtf8(file.getPathUtf8(), File::OpenRead)) << "its own path";
    EXPECT_EQ(readAll(file), "x");
    EXPECT_EQ(file.getPathUtf8(), path("b.bin"));
}

TEST_F(Devices, AreClosedForEverythingWhenTheyAreClosed) {
    File file;
    char byte = 0;
    for (const bool wasOpen : {false, true}) {
        if (wasOpen) ASSERT_TRUE(open(file, File::OpenReadWrite) && file.writeBytes("x", 1) && file.close());
        EXPECT_FALSE(file.isOpen() || file.close() || file.flush() || file.flushToDisk() || file.resize(1));
        EXPECT_FALSE(file.seekg(0, Start::SeekFromBegin) || file.seekp(0, Start::SeekFromBegin));
        EXPECT_TRUE(file.atEnd()) << "a loop that reads to the end must end";
        EXPECT_EQ(file.getSize() + file.tellg() + file.tellp(), 0U);
        EXPECT_TRUE(file.readBytes(nullptr, 0) == 0 && file.writeBytes(nullptr, 0) == 0 && file.good());
        EXPECT_EQ(file.getError().getErrorCode(), 0);
        EXPECT_TRUE(file.readBytes(&byte, 1) + file.writeBytes(&byte, 1) == 0 && file.hasError());
        EXPECT_EQ(file.getError().getErrorCode(), ERROR_INVALID_HANDLE);
    }
}

TEST_F(Devices, ReachBeyondFourGigabytes) {
    constexpr std::uint64_t kFar = std::uint64_t{5} << 30;
    File file;
    ASSERT_TRUE(open(file, File::OpenReadWrite));
    ASSERT_TRUE(file.resize(kFar) && file.getSize() == kFar && file.tellp() == 0);
    ASSERT_TRUE(file.seekp(-3, Start::SeekFromEnd) && file.writeBytes("end", 3) == 3);
    ASSERT_TRUE(file.seekg(-5, Start::SeekFromEnd));
    EXPECT_EQ(readAll(file), std::string("\0\0end", 5));
    EXPECT_TRUE(file.seekg(INT64_MAX, Start::SeekFromBegin) && file.atEnd());
    EXPECT_TRUE(readAll(file).empty() && file.good());
    EXPECT_FALSE(file.seekg(1, Start::SeekFromCurrent) || file.seekp(INT64_MAX, Start::SeekFromEnd));
    EXPECT_FALSE(file.seekp(-1, Start::SeekFromBegin) || file.seekp(0, static_cast<Start>(3)));
    EXPECT_EQ(file.tellp(), kFar);
    EXPECT_TRUE(!file.resize(UINT64_MAX) && file.good() && file.resize(2) && file.getSize() == 2);
    EXPECT_TRUE(file.seekg(0, Start::SeekFromBegin));
    EXPECT_EQ(readAll(file), std::string(2, '\0'));
    ASSERT_TRUE(file.seekp(INT64_MAX, Start::SeekFromBegin));
    EXPECT_TRUE(file.writeBytes("x", 1) == 0 && file.hasError() && !file.close());
}

// A disk that takes so many writes and is full then.
int writesLeft = 0;
BOOL WINAPI writeWhileThereIsRoom(HANDLE file, const void* bytes, DWORD size, DWORD* written, OVERLAPPED* at) {
    if (writesLeft-- > 0) return ImportHook::behind(&writeWhileThereIsRoom)(file, bytes, size, written, at);
    ::SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

TEST_F(Devices, SayOnceThatTheDiskIsFull) {
    const std::string large(File::kBufferBytes, 'x');
    using Step = bool (*)(File&, const std::string&);
    const Step steps[] = {
        [](File& file, const std::string& bytes) { return file.writeBytes(bytes.data(), bytes.size()) != 0; },
        [](File& file, const std::string&) { return file.writeBytes("x", 1) != 0 && file.flush(); },
        [](File& file, const std::string&) {
            return file.writeBytes("x", 1) != 0 && file.seekp(0, Start::SeekFromBegin);
        },
        [](File& file, const std::string&) { return file.writeBytes("x", 1) != 0 && file.flushToDisk(); },
        [](File& file, const std::string&) { return file.writeBytes("x", 1) != 0 && file.resize(9); },
        [](File& file, const std::string&) { return file.writeBytes("x", 1) != 0 && !readAll(file).empty(); },
        [](File& file, const std::string&) { return file.writeBytes("x", 1) != 0 && file.close(); }};
    const ImportHook hook("xoSystem.dll", "WriteFile", &writeWhileThereIsRoom);
    ASSERT_TRUE(hook.isInstalled());
    const auto line = StartsWith("3()xoIoDeviceFile cannot write \"" + path() + "\": ");
    for (int room = 0; room != 2; ++room) {
        for (const Step& step : steps) {
            if (room == 1 && &step == std::end(steps) - 1) break;  // close() writes once
            File file;
            ASSERT_TRUE(open(file, File::OpenReadWrite));
            ASSERT_EQ(file.writeBytes("before", 6), 6U);
            writesLeft = room;  // 0: "before" cannot be written, 1: the step's own bytes
            const bool wasDone = step(file, large) && step(file, large);
            EXPECT_FALSE(wasDone) << &step - steps;
            writesLeft = 99;
            EXPECT_EQ(file.getError().getErrorCode(), ERROR_DISK_FULL) << &step - steps;
            EXPECT_TRUE(file.hasError() && file.writeBytes("later", 5) == 0 && !file.close());
            EXPECT_THAT(takeLines(), ElementsAre(line)) << &step - steps;
        }
    }
    writesLeft = 0;
    {
        File file;
        open(file, File::OpenWrite);
        file << "lost";
    }
    EXPECT_THAT(takeLines(), ElementsAre(line)) << "the destructor";
}

constexpr int kNoSuchDevice = 433;  // ERROR_NO_SUCH_DEVICE, which headers of mingw-w64 lack

// A drive that can be read so many times and is removed then.
int readsLeft = 0;
BOOL WINAPI readWhileThereIsADrive(HANDLE file, void* bytes, DWORD size, DWORD* got, OVERLAPPED* at) {
    if (readsLeft-- > 0) return ImportHook::behind(&readWhileThereIsADrive)(file, bytes, size, got, at);
    ::SetLastError(kNoSuchDevice);
    return FALSE;
}
BOOL WINAPI knowNoSize(HANDLE, LARGE_INTEGER*) {
    ::SetLastError(kNoSuchDevice);
    return FALSE;
}

TEST_F(Devices, TellAFailedReadFromTheEndOfTheFile) {
    mFolder.write("a.bin", std::string(2 * File::kBufferBytes, 'x'));
    const ImportHook read("xoSystem.dll", "ReadFile", &readWhileThereIsADrive);
    for (const bool knowsSize : {true, false}) {
        const ImportHook size("xoSystem.dll", knowsSize ? "no such call" : "GetFileSizeEx", &knowNoSize);
        ASSERT_TRUE(read.isInstalled() && size.isInstalled() != knowsSize);
        for (const int reads : {0, 1}) {
            File file;
            ASSERT_TRUE(open(file, File::OpenRead));
            readsLeft = reads;
            char byte = 0;
            int count = 0;
            while (file.readBytes(&byte, 1) == 1) ++count;
            EXPECT_EQ(count, reads * int{File::kBufferBytes}) << knowsSize;
            EXPECT_TRUE(file.hasError()) << knowsSize << reads;
            EXPECT_EQ(file.getError().getErrorCode(), kNoSuchDevice) << knowsSize << reads;
        }
    }
}

TEST_F(Devices, ShareAsAsked) {
    mFolder.write("a.bin", "shared");
    const File::Share shares[] = {File::ShareNone, File::ShareRead, File::ShareAll};
    for (const bool firstWrites : {false, true}) {
        for (const bool secondWrites : {false, true}) {
            for (const File::Share first : shares) {
                for (const File::Share second : shares) {
                    File one, two;
                    ASSERT_TRUE(open(one, firstWrites ? File::OpenReadWrite : File::OpenRead, first));
                    const auto allows = [](File::Share share, bool writes) {
                        return share == File::ShareAll || (share == File::ShareRead && !writes);
                    };
                    EXPECT_EQ(open(two, secondWrites ? File::OpenReadWrite : File::OpenRead, second),
                              allows(first, secondWrites) && allows(second, firstWrites))
                        << firstWrites << secondWrites << first << second;
                }
            }
        }
    }
    File writer, reader;
    EXPECT_TRUE(open(writer, File::OpenAppend) && open(reader, File::OpenRead)) << "by default one writer and readers";
    EXPECT_FALSE(open(reader, File::OpenAppend));
}

TEST_F(Devices, AppendBehindEachOther) {
    File one, two;
    ASSERT_TRUE(open(one, File::OpenAppend, File::ShareAll) && open(two, File::OpenAppend, File::ShareAll));
    std::string expected;
    for (int i = 0; i != 20; ++i) {
        const std::string line = std::to_string(i) + std::string(i % 5 == 0 ? File::kBufferBytes : 1, '\n');
        File& file = i % 3 == 0 ? one : two;
        file << line;
        EXPECT_EQ(file.tellp(), expected.size() + line.size());
        EXPECT_TRUE(file.flush() && !file.seekp(0, Start::SeekFromBegin));
        expected += line;
    }
    EXPECT_TRUE(!one.resize(0) && one.close() && two.close());
    EXPECT_TRUE(onDisk() == expected);
}

TEST_F(Devices, ReplaceAtOnceOrNotAtAll) {
    const int handles = openHandles();
    for (const char* const old : {"old", static_cast<const char*>(nullptr)}) {
        xoDirUtils::RemoveFileUtf8(path());
        if (old) mFolder.write("a.bin", old);
        const auto isUntouched = [&] { return old ? onDisk() == old : !mFolder.has("a.bin"); };
        {
            File dropped;
            ASSERT_TRUE(open(dropped, File::OpenReplace));
            dropped << "dropped";
        }
        EXPECT_TRUE(isUntouched());
        {
            const ImportHook hook("xoSystem.dll", "WriteFile", &writeWhileThereIsRoom);
            writesLeft = 0;
            File failed;
            ASSERT_TRUE(open(failed, File::OpenReplace));
            failed << "failed";
            EXPECT_FALSE(failed.close());
        }
        EXPECT_TRUE(isUntouched());
        File file;
        ASSERT_TRUE(open(file, File::OpenReplace));
        file << "a longer text";
        EXPECT_TRUE(file.seekp(2, Start::SeekFromBegin) && file.writeBytes("L", 1) && file.resize(8));
        EXPECT_TRUE(isUntouched());
        std::ifstream reader(mFolder.widePath() / L"a.bin");  // shares no deletion, so the file is overwritten in place
        EXPECT_TRUE(file.close());
        EXPECT_EQ(onDisk(), "a Longer");
    }
    // A name to which nothing can be added.
    const std::string longest = path(std::string(255, 'n'));
    File file;
    ASSERT_TRUE(file.openUtf8(longest, File::OpenReplace));
    EXPECT_FALSE(xoDirUtils::FileExistsUtf8(longest));
    EXPECT_TRUE(file.close() && xoDirUtils::RemoveFileUtf8(longest));
    takeLines();
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(mFolder.widePath())) ++files;
    EXPECT_EQ(files, 1U) << "nothing is left behind";
    EXPECT_EQ(openHandles(), handles);
}

TEST_F(Devices, ReplaceNothingWithoutMemory) {
    mFolder.write("a.bin", "old");
    for (const std::ptrdiff_t names : {1, 2}) {  // with two, the file is overwritten in place
        if (names == 2)
            ASSERT_TRUE(::CreateHardLinkW((mFolder.widePath() / "b.bin").c_str(),
                                          (mFolder.widePath() / "a.bin").c_str(), /*lpSecurityAttributes=*/nullptr));
        File file;
        ASSERT_TRUE(open(file, File::OpenReplace));
        file << "a longer text";
        bool isDone = true;
        {
            const ScarceMemory none(0);
            ASSERT_TRUE(none.isInstalled());
            isDone = file.close();
        }
        EXPECT_FALSE(isDone || file.isOpen()) << names;
        EXPECT_EQ(file.getError().getErrorCode(), ERROR_NOT_ENOUGH_MEMORY) << names;
        EXPECT_EQ(onDisk(), "old");
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(mFolder.widePath()), {}), names);
    }
}

TEST_F(Devices, ReplaceNothingWhenTheProcessIsKilled) {
    mFolder.write("a.bin", "old");
    const std::wstring ready = L"xo replacing " + std::to_wstring(::GetCurrentProcessId());
    const platform::KernelHandle event(::CreateEventW(nullptr, TRUE, FALSE, ready.c_str()));
    const Child child(L"fileReplacer", L"\"" + (mFolder.widePath() / L"a.bin").wstring() + L"\" \"" + ready + L"\"");
    ASSERT_TRUE(child.isStarted());
    ASSERT_EQ(::WaitForSingleObject(event.get(), 60000), WAIT_OBJECT_0);
    child.kill();
    EXPECT_EQ(child.wait(), 9);
    EXPECT_EQ(onDisk(), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(mFolder.widePath()), {}), 1);
}

TEST_F(Devices, MemoryKeepsItsLimits) {
    char room[8] = "abcdefg";
    struct Row {
        Memory memory;
        std::size_t fits;  // how many bytes can be written at the position
    };
    Row rows[] = {{Memory(), 5}, {Memory::Room(room, 5), 5}, {Memory(std::vector<char>(2, 'v')), 3}};
    for (Row& row : rows) {
        row.memory.setMaxBytes(5);  // no matter to a room
        EXPECT_EQ(row.memory.writeBytes("123456", row.fits + 1), 0U);
        EXPECT_TRUE(row.memory.hasError() && row.memory.writeBytes("1", 1) == 0) << "nothing after a failure";
        row.memory.clear();
        EXPECT_EQ(row.memory.writeBytes("12345", 5), 5U);
        EXPECT_EQ(row.memory.toText(), "12345");
        EXPECT_TRUE(row.memory.seekp(-1, Start::SeekFromEnd) && row.memory.writeBytes("x", 1) == 1);
        EXPECT_EQ(row.memory.writeBytes("y", 1), 0U);
        EXPECT_EQ(readAll(row.memory), "1234x") << "reading goes on";
    }
    EXPECT_EQ(std::string(room), "1234xfg");

    Memory view = Memory::View("view", 4), none = Memory::View(nullptr, 9);
    EXPECT_TRUE(none.atEnd() && none.getSize() == 0 && none.getData() != nullptr && Memory().getData() != nullptr);
    EXPECT_EQ(readAll(view), "view");
    EXPECT_TRUE(view.writeBytes("x", 1) == 0 && view.hasError() && view.writeBytes("x", 1) == 0);
    view.clear();
    EXPECT_TRUE(view.good() && !view.seekp(0, Start::SeekFromBegin) && readAll(view) == "view");
    EXPECT_THAT(takeLines(), ElementsAre("3()xoIoDeviceMemory writeBytes on a view is not supported",
                                         "3()xoIoDeviceMemory seekp on a view is not supported"));
    Memory huge;
    EXPECT_TRUE(huge.seekp(INT64_MAX, Start::SeekFromBegin) && huge.writeBytes("x", 1) == 0 && huge.hasError());
    huge.clear();
    EXPECT_TRUE(huge.seekp(INT64_MAX - 1, Start::SeekFromBegin) && huge.writeBytes("x", 1) == 0) << "no such memory";
}

TEST_F(Devices, MemoryIsGivenAway) {
    Memory memory;
    memory << "some bytes";
    memory.writeBytes(memory.getData(), 10);  // its own, while it grows
    Memory moved(std::move(memory));
    EXPECT_TRUE(memory.getSize() == 0 && memory.atEnd());
    memory << "again";
    EXPECT_EQ(memory.toText() + moved.toText(), "againsome bytessome bytes");
    EXPECT_TRUE(moved.seekp(22, Start::SeekFromBegin) && moved.writeBytes("gap", 3) == 3);
    memory = std::move(moved);
    const std::vector<char> bytes = memory.takeBytes();
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), std::string("some bytessome bytes\0\0gap", 25));
    memory << "new";
    EXPECT_TRUE(memory.tellg() == 0 && readAll(memory) == "new");
    Memory view = Memory::View("view", 4);
    EXPECT_TRUE(view.takeBytes().size() == 4 && view.takeBytes().size() == 4) << "a view gives copies";
}

TEST_F(Devices, CarryADataStream) {
    File file;
    Memory memory;
    ASSERT_TRUE(open(file, File::OpenNew));
    for (xoIoDevice* const device : std::initializer_list<xoIoDevice*>{&file, &memory}) {
        xoDataStream stream(device, xoDataStream::EndiannessBig);
        stream << 7 << std::string(70000, 'x') << 2.5;
        int number = 0;
        std::string text;
        double real = 0;
        stream >> number >> text >> real;
        EXPECT_TRUE(stream.isOk() && number == 7 && text.size() == 70000 && real == 2.5 && device->atEnd());
        stream >> number;
        EXPECT_TRUE(!stream.isOk() && device->good()) << "the end is no error of the device";
    }
}

}  // namespace
}  // namespace xo::tests
