#include <memory>
#include <new>
#include <random>

#include "log/logFixture.h"
#include "stream/memoryDevice.h"
#include "support/allocationCount.h"
#include "support/capturedOutput.h"
#include "support/temporaryFolder.h"
#include "xoSystem/xoCsvFileReader.h"
#include "xoSystem/xoCsvStream.h"

namespace xo::tests {
namespace {

using testing::ElementsAre;
constexpr auto kRowEnd = xoCsvStream::EndOfRow();

struct CsvFiles : LogTest {
    TemporaryFolder mFolder;
};

TEST(CsvStream, WritesEachTypeAndEndsLinesLate) {
    MemoryDevice device;
    xoCsvStream stream(&device, ';', '\'', "\r\n");
    stream << "a" << std::string("b;c") << "it's"
           << "" << static_cast<const char*>(nullptr) << "a\nb" << &"';cd"[2] << kRowEnd << kRowEnd;
    EXPECT_EQ(device.bytes, "a;'b;c';'it''s';;a\nb;cd");
    stream << 'A' << static_cast<unsigned char>(200) << static_cast<short>(-5) << static_cast<unsigned short>(5) << -7
           << 7u << INT64_MIN << UINT64_MAX << 8ul << true << 1.0f / 3 << -1234.5 << kRowEnd << "z";
    EXPECT_EQ(device.bytes.substr(23),
              "\r\n65;200;-5;5;-7;7;-9223372036854775808;18446744073709551615;8;true;0.333;-1.23e+03\r\nz");
    EXPECT_TRUE(stream.isOk() && stream.getNextCellRowIndex() == 3 && stream.getNextCellColIndex() == 1);
    xoCsvStream dotted(&(device = MemoryDevice()), '.', '1');  // numbers too may need quotes
    dotted << 2.5 << 415;
    EXPECT_EQ(device.bytes, "12.51.141151");
}

TEST(CsvStream, MarksAreSeenAnywhereInACell) {
    for (std::size_t size = 1; size != 50; ++size) {
        for (std::size_t at = 0; at != size; ++at) {
            MemoryDevice device;
            std::string cell(size, '\0');
            cell[at] = at % 2 == 0 ? ',' : '"';
            xoCsvStream(&device) << cell << std::string(size, '\0');
            EXPECT_EQ(device.bytes, "\"" + std::string(cell).insert(at, at % 2, '"') + "\"," + std::string(size, '\0'));
        }
    }
}

TEST(CsvStream, NothingIsWrittenAfterAWriteThatFailed) {
    for (std::size_t capacity = 0; capacity != 11; ++capacity) {
        MemoryDevice device;
        device.capacity = capacity;
        xoCsvStream stream(&device);
        stream << "a"
               << "b\"c" << kRowEnd << "d"
               << "e";
        EXPECT_FALSE(stream.isOk());
        const std::size_t pieces[] = {0, 1, 2, 3, 7, 8, 9, 10};
        EXPECT_EQ(device.bytes,
                  std::string("a,\"b\"\"c\"\nd", *(std::upper_bound(pieces, std::end(pieces), capacity) - 1)));
    }
    xoCsvStream none(nullptr);
    none << kRowEnd;
    EXPECT_TRUE(!none.isOk() && none.getNextCellRowIndex() == 0);
}

TEST_F(CsvFiles, WhatIsWrittenReadsBack) {
    std::mt19937 dice(7);
    const char* const pieces[] = {";", "'", "''", "\r\n;", " ", "\xC3\xA9", "0x1F", "a hundred and one", ""};
    xoCsvFileReader::Table rows(300);
    for (auto& row : rows) {
        row.resize(1 + dice() % 4, "");
        for (xoVariant& cell : row)
            for (unsigned count = dice() % 4; count != 0; --count)
                cell.editString() += pieces[dice() % std::size(pieces)];
    }
    rows.front() = {std::string(65535, 'h'), "fills the buffer", std::string(1, '\0')};
    rows.back().emplace_back(std::string(100000, 'l'));  // longer than any buffer, and the last cell is not empty
    for (const char* const lineEnd : {"\n", "\r\n"}) {
        {
            xoCsvFileWriter writer(mFolder.path(), "trip", 1000, ';', '\'', lineEnd);
            for (const auto& row : rows) {
                for (const xoVariant& cell : row) writer.getStream() << cell.getString();
                writer.getStream() << kRowEnd;
            }
        }
        xoCsvFileReader reader(false);
        reader.setColumnDelimiter(';');
        reader.setStringDelimiter('\'');
        reader.setFileName(mFolder.path("trip.csv"));
        EXPECT_TRUE(reader.parseCsvFile()) << reader.getLastError();
        EXPECT_EQ(reader.getTable(), rows);
    }
}

TEST_F(CsvFiles, TheWriterGoesOnInTheNextFile) {
    const auto writeRows = [](xoCsvFileWriter& writer, int count) {
        for (int row = 0; row != count; ++row) {
            writer.getStream();  // asked for twice, it is the same
            writer.getStream() << row << kRowEnd;
        }
    };
    const std::ofstream other(mFolder.widePath() / L"log.csv");  // writes to the same file
    {
        xoCsvFileWriter writer(mFolder.path() + "/", "log", 2, ',', '"', "\n", /*writeByteOrderMark=*/true);
        writeRows(writer, 5);
        auto& self = writer;
        writer = self;  // closes no file
        writer.getStream() << kRowEnd;
        xoCsvFileWriter copy(writer);
        xoCsvFileWriter assigned(mFolder.path(), "one", 0);
        writeRows(copy, 1);
        writeRows(assigned, 2);
        assigned = copy;
        writeRows(assigned, 1);
    }
    const std::pair<const char*, const char*> files[] = {
        {"log.csv", "0\n1"}, {"log (1).csv", "2\n3"}, {"log (2).csv", "4"}, {"log (3).csv", "0"}, {"log (4).csv", "0"}};
    for (const auto& [name, text] : files) EXPECT_EQ(mFolder.read(name), std::string("\xEF\xBB\xBF") + text) << name;
    EXPECT_EQ(mFolder.read("one.csv") + mFolder.read("one (1).csv"), "01");
}

TEST_F(CsvFiles, RelativeNamesKeepTheirFolder) {
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(mFolder.path("later")));
    const std::string before = xoDirUtils::GetCurrentWorkingDirUtf8();
    ASSERT_TRUE(xoDirUtils::SetCurrentWorkingDirUtf8(mFolder.path()));
    xoCsvFileWriter writer(".", "a", 1), lost("none", "a", 1);
    writer.getStream() << 1 << kRowEnd;
    mFolder.write("b.csv", "2");
    xoCsvFileReader reader(true);
    reader.setFileName("b.csv");
    ASSERT_TRUE(xoDirUtils::SetCurrentWorkingDirUtf8("later"));
    xoCsvFileReader copy(reader);
    EXPECT_TRUE(copy.parseCsvFile()) << copy.getLastError();
    writer.getStream() << 3 << kRowEnd;
    lost.getStream();
    writer = lost;  // closes the file
    ASSERT_TRUE(xoDirUtils::SetCurrentWorkingDirUtf8(before));
    EXPECT_EQ(copy.getTable(), xoCsvFileReader::Table{{2}});
    EXPECT_EQ(mFolder.read("a.csv") + mFolder.read("a (1).csv"), "13");
    EXPECT_THAT(takeLines(), ElementsAre("3()Fail to open csv file none/a.csv"));
}

TEST(CsvFilesWithoutALog, PrintNothing) {
    const TemporaryFolder folder;
    const CapturedOutput output;
    EXPECT_FALSE((xoCsvFileWriter(folder.path("none"), "log", 1).getStream() << 1).isOk());
    EXPECT_EQ(output.text(), "");
}

int WINAPI failToWrite(HANDLE, const void*, DWORD, DWORD*, OVERLAPPED*) {
    ::SetLastError(ERROR_DISK_FULL);
    return 0;
}

TEST_F(CsvFiles, TheWriterTellsWhatItCouldNotWrite) {
    const std::string folder = mFolder.path("none");
    xoCsvFileWriter writer(folder, "log", 9);
    writer.getStream() << 1;
    EXPECT_FALSE((writer.getStream() << 1).isOk());
    EXPECT_THAT(takeLines(), ElementsAre("3()Fail to open csv file " + folder + "/log.csv",
                                         "3()Fail to open csv file " + folder + "/log (1).csv"));
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(folder));
    EXPECT_TRUE((writer.getStream() << 1).isOk());

    {
        const ImportHook full("xoSystem.dll", "WriteFile", &failToWrite);
        ASSERT_TRUE(full.isInstalled());
        int written = 0;
        while ((writer.getStream() << std::string(9999, 'x') << kRowEnd).isOk()) ++written;
        EXPECT_EQ(written, 6) << "what does not fit into the buffer";
        writer.getStream() << kRowEnd << kRowEnd;
        xoCsvFileWriter(mFolder.path(), "small", 1).getStream() << 1;
    }
    EXPECT_TRUE((writer.getStream() << 1).isOk()) << "the next file";
    const auto line = [this](const std::string& file) {
        return testing::StartsWith("3()xoIoDeviceFile cannot write \"" + mFolder.path(file) + "\": ");
    };
    EXPECT_THAT(takeLines(), ElementsAre(line("none\\log (2).csv"), line("small.csv")));
}

TEST_F(CsvFiles, TheReaderGuessesAsVariantsDo) {
    const char* const cells[] = {
        "1",  "0x1F", "010",    " 7",  "1e3",  "", "a", "1a", "+", "-0", "99999999999999999999",
        ".5", "inf",  "\ttrue", "2,5", "1,2,3"};
    std::string text;
    std::vector<xoVariant> expected;
    for (const char* const cell : cells) {
        text += "\"" + std::string(cell) + "\";";
        expected.push_back(xoVariant::BuildFromString(cell));
    }
    mFolder.write("types.csv", text + "\n1\n1;2;");
    expected.push_back(xoVariant::BuildFromString(""));
    const std::ofstream writing(mFolder.widePath() / L"types.csv", std::ios::app);
    xoCsvFileReader reader(true);
    reader.setColumnDelimiter(';');
    reader.setFileName(mFolder.path("types.csv"));
    for (const int time : {1, 2}) {
        ASSERT_TRUE(reader.parseCsvFile()) << time;
        EXPECT_EQ(reader.getTable(), (xoCsvFileReader::Table{expected, {1}, {1, 2}}));
        EXPECT_EQ(reader.getMaxColumnCount(), 17u);
    }
    xoCsvFileReader copy(reader), assigned(false);
    assigned = copy;
    for (xoCsvFileReader* const each : {&copy, &assigned}) {
        EXPECT_EQ(each->getTable(), reader.getTable());
        bool finished = false;
        ASSERT_TRUE(each->parseFirst(finished, 1)) << each->getLastError();
        EXPECT_EQ(each->getTable(), xoCsvFileReader::Table{expected});
        each->setEnableTypeGuess(false);
        each->setColumnDelimiter(',');
        ASSERT_TRUE(each->parseNext(finished, true, 9));
        EXPECT_EQ(each->getTable(), (xoCsvFileReader::Table{{"1"}, {"1", "2"}})) << "only the guess takes effect now";
    }
}

TEST_F(CsvFiles, TheReaderGoesOnWithAnotherFile) {
    mFolder.write("a.csv", "1,2\n3");
    mFolder.write("b.csv", "4");
    xoCsvFileReader reader(true);
    bool finished = true;
    EXPECT_TRUE(!reader.parseNext(finished, false, 1) && !finished) << "no name yet";
    reader.setFileName(mFolder.path("a.csv"));
    EXPECT_EQ(reader.getLastError(), "Failed to open the file") << "until the next parse";
    EXPECT_TRUE(reader.parseFirst(finished, 1) && reader.getLastError().empty());
    EXPECT_TRUE(std::filesystem::remove(mFolder.widePath() / L"a.csv")) << "while it is open";
    reader.setFileName(mFolder.path("b.csv"));
    EXPECT_TRUE(reader.parseNext(finished, false, 1));
    EXPECT_EQ(reader.getTable(), (xoCsvFileReader::Table{{4}}));
    reader.setFileName("");
    EXPECT_TRUE(reader.getLastError() == "Failed to open the file" && reader.getTable().size() == 1);
    EXPECT_FALSE(reader.parseCsvFile());
    EXPECT_EQ(reader.getTable().size() + reader.getMaxColumnCount(), 0U);
}

TEST_F(CsvFiles, LackOfMemoryIsAFailure) {
    mFolder.write("a.csv", "1,2\n3");
    const std::string path = mFolder.path("a.csv"), quotes(2000, '"');
    xoCsvFileReader reader(true), unnamed(true);
    reader.setFileName(path);
    xoCsvFileWriter writer(mFolder.path(), "b", 1);
    auto lost = std::make_unique<xoCsvFileWriter>(mFolder.path(), "c", 1);
    MemoryDevice device;
    xoCsvStream stream(&device);
    lost->getStream() << 1;
    bool passed = true, finished = true;
    {
        const ScarceMemory little(1000);
        ASSERT_TRUE(little.isInstalled());
        passed = reader.parseFirst(finished, 1);
        stream << "a" << quotes << "b";
        writer.getStream() << 1;
    }
    EXPECT_TRUE(!passed && !finished);
    EXPECT_EQ(reader.getLastError(), std::bad_alloc().what());
    EXPECT_TRUE(reader.parseFirst(finished, 1)) << "memory again";
    EXPECT_TRUE(!stream.isOk() && device.bytes == "a,");
    EXPECT_THAT(takeLines(),
                ElementsAre(testing::StartsWith("3()xoIoDeviceFile cannot write \"" + mFolder.path("b.csv") + "\": ")));
    writer.getStream() << kRowEnd;
    EXPECT_TRUE((writer.getStream() << 1).isOk());
    {
        const ImportHook full("xoSystem.dll", "WriteFile", &failToWrite);
        const ScarceMemory none(0);
        unnamed.setFileName(path);
        lost.reset();
    }
    EXPECT_EQ(unnamed.getLastError(), std::bad_alloc().what());
}

int WINAPI readNothing(HANDLE, void*, DWORD, DWORD* got, OVERLAPPED*) { return *got = 0, 1; }

TEST_F(CsvFiles, AFailureKeepsTheRowsBeforeIt) {
    const std::string limit(65535, 'h');
    const std::tuple<std::string, std::size_t, std::string> cases[] = {
        {"", 0, ""},
        {limit + "\n" + limit + "more", 2, ""},
        {"\"" + limit + "\n\"", 0, "Header cell size during parsing exceed max size of 65535 characters"},
        {"a\nb\nc\xED\xA0\x80", 2, "Invalid code point"},
        {"a\nb\nc\xE2\x82", 2, "Invalid UTF-8"},
        {"missing", 0, "Failed to open the file"},
        {"shrinks", 0, "Failed to read the file"},
    };
    for (const auto& [text, rows, error] : cases) {
        mFolder.write("case.csv", text);
        xoCsvFileReader reader(false);
        reader.setFileName(mFolder.path(text == "missing" ? "none.csv" : "case.csv"));
        const ImportHook shrunk("xoSystem.dll", text == "shrinks" ? "ReadFile" : "no such call", &readNothing);
        bool finished = true;
        EXPECT_EQ(reader.parseFirst(finished, 9), error.empty()) << error;
        EXPECT_EQ(finished, error.empty());
        EXPECT_EQ(reader.parseNext(finished, false, 9), error.empty());
        EXPECT_EQ(reader.getTable().size(), rows);
        EXPECT_EQ(reader.getLastError(), error);
    }
}

TEST_F(CsvFiles, BatchesReuseTheMemoryOfClearedRows) {
    const std::string note = "a text that is longer than a short one";
    std::string text;
    for (int row = 0; row != 30000; ++row) text += std::to_string(row) + "," + note + "\n";
    mFolder.write("large.csv", text);
    xoCsvFileReader reader(true);
    reader.setFileName(mFolder.path("large.csv"));
    bool finished = false;
    ASSERT_TRUE(reader.parseFirst(finished, 1000));
    reader.setFileName(mFolder.path("large.csv"));  // changes nothing
    reader = std::as_const(reader);
    const std::vector<xoVariant> kept = reader.getTable()[7];  // texts of its own
    const AllocationCount allocations;
    ASSERT_TRUE(allocations.isCounting());
    std::int64_t expected = 1000;
    while (!finished && reader.parseNext(finished, true, 1000))
        for (const auto& row : reader.getTable()) EXPECT_EQ(row[0].toInteger(), expected++);
    EXPECT_EQ(expected, 30000);
    EXPECT_EQ(kept[1].getString(), note);
    EXPECT_LT(allocations.count(), 200);
}

}  // namespace
}  // namespace xo::tests
