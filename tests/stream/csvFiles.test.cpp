#include <random>

#include "log/logFixture.h"
#include "support/allocationCount.h"
#include "support/temporaryFolder.h"
#include "xoSystem/xoCsvFileReader.h"
#include "xoSystem/xoCsvStream.h"
#include "xoSystem/xoIoDevice.h"

namespace xo::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::vector<std::string>>;
constexpr auto kRowEnd = xoCsvStream::EndOfRow();

class CsvFiles : public LogTest {
protected:
    Texts read(const std::string& name, char separator = ',', char quote = '"') {
        xoCsvFileReader reader(false);
        reader.setColumnDelimiter(separator);
        reader.setStringDelimiter(quote);
        reader.setFileName(mFolder.path(name));
        EXPECT_TRUE(reader.parseCsvFile()) << reader.getLastError();
        return textsOf(reader);
    }

    static Texts textsOf(const xoCsvFileReader& reader) {
        Texts texts;
        for (const auto& row : reader.getTable()) {
            texts.emplace_back();
            for (const xoVariant& cell : row) texts.back().push_back(cell.toString());
        }
        return texts;
    }

    TemporaryFolder mFolder;
};

// Gathers the writes; the one of that number, counted down, fails.
struct Pieces final : xoIoDevice {
    std::uint64_t writeBytes(const char* buffer, std::uint64_t size) override {
        if (failsAfter-- == 0) return 0;
        pieces.emplace_back(buffer, size);
        return size;
    }
    std::uint64_t readBytes(char*, std::uint64_t) override { return 0; }
    bool hasError() const override { return false; }
    bool atEnd() const override { return true; }
    bool seekg(std::int64_t, SeekStart) override { return false; }
    bool seekp(std::int64_t, SeekStart) override { return false; }
    std::uint64_t tellg() override { return 0; }
    std::uint64_t tellp() override { return 0; }

    std::string text() const {
        std::string all;
        for (const std::string& piece : pieces) all += piece;
        return all;
    }

    std::vector<std::string> pieces;
    int failsAfter = -1;
};

TEST(CsvStream, writesEachTypeAndEndsLinesLate) {
    Pieces device;
    xoCsvStream stream(&device, ';', '\'', "\r\n");
    stream << "a" << std::string("b;c") << "it's"
           << "" << static_cast<const char*>(nullptr) << "a\nb" << kRowEnd << kRowEnd;
    EXPECT_EQ(device.text(), "a;'b;c';'it''s';;a\nb");
    device.pieces.clear();
    stream << 'A' << static_cast<unsigned char>(200) << static_cast<short>(-5) << static_cast<unsigned short>(5) << -7
           << 7u << INT64_MIN << UINT64_MAX << 8ul << true << 1.0f / 3 << -1234.5 << kRowEnd << "z";
    EXPECT_EQ(device.text(),
              "\r\n65;200;-5;5;-7;7;-9223372036854775808;18446744073709551615;8;true;0.333;-1.23e+03\r\nz");
    EXPECT_EQ(stream.getNextCellRowIndex(), 3u);
    EXPECT_EQ(stream.getNextCellColIndex(), 1u);

    device.pieces.clear();
    xoCsvStream dotted(&device, '.', '1');  // numbers too may need quotes
    dotted << 2.5 << 415;
    EXPECT_THAT(device.pieces, ElementsAre("1", "2.5", "1", ".", "1", "4115", "1"));
}

TEST(CsvStream, staysNotOkAfterTheWriteThatFailed) {
    const std::vector<std::string> all = {"a", ",", "\"", "b\"\"c", "\"", "\n", "d"};
    for (std::size_t failing = 0; failing != all.size(); ++failing) {
        Pieces device;
        device.failsAfter = static_cast<int>(failing);
        xoCsvStream stream(&device);
        stream << "a"
               << "b\"c" << kRowEnd << "d";
        EXPECT_FALSE(stream.isOk());
        EXPECT_EQ(device.pieces, std::vector<std::string>(all.begin(), all.begin() + static_cast<int>(failing)))
            << failing;
    }
    xoCsvStream none(nullptr);
    none << kRowEnd;
    EXPECT_FALSE(none.isOk());
    EXPECT_EQ(none.getNextCellRowIndex(), 0u);
}

TEST_F(CsvFiles, whatIsWrittenReadsBack) {
    std::mt19937 dice(7);
    const std::string pieces[] = {
        ";", "'", "''", "\r\n;", " ", "\xC3\xA9", "0x1F", std::string(1, '\0'), std::string(40, 'x'), ""};
    Texts rows(300);
    for (auto& row : rows) {
        for (unsigned cells = 1 + dice() % 4; cells != 0; --cells) {
            row.emplace_back();
            for (unsigned count = dice() % 4; count != 0; --count) row.back() += pieces[dice() % std::size(pieces)];
        }
    }
    rows.back().emplace_back("the last cell is not empty");
    for (const char* const lineEnd : {"\n", "\r\n"}) {
        {
            xoCsvFileWriter writer(mFolder.path(), "trip", 1000, ';', '\'', lineEnd);
            for (const auto& row : rows) {
                for (const std::string& cell : row) writer.getStream() << cell;
                writer.getStream() << kRowEnd;
            }
            EXPECT_TRUE(writer.getStream().isOk());
        }
        EXPECT_EQ(read("trip.csv", ';', '\''), rows);
    }
}

TEST_F(CsvFiles, theWriterGoesOnInTheNextFile) {
    const auto writeRows = [](xoCsvFileWriter& writer, int count) {
        for (int row = 0; row != count; ++row) writer.getStream() << row << kRowEnd;
    };
    {
        xoCsvFileWriter writer(mFolder.path() + "/", "log", 2, ',', '"', "\n", /*writeByteOrderMark=*/true);
        writeRows(writer, 5);
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

int WINAPI failToWrite(HANDLE, const void*, DWORD, DWORD*, OVERLAPPED*) { return 0; }

TEST_F(CsvFiles, theWriterTellsWhatItCouldNotWrite) {
    const std::string folder = mFolder.path("none");
    xoCsvFileWriter writer(folder, "log", 9);
    writer.getStream() << 1;
    EXPECT_FALSE((writer.getStream() << 1).isOk());
    EXPECT_THAT(takeLines(), ElementsAre("3()Fail to open csv file " + folder + "/log.csv",
                                         "3()Fail to open csv file " + folder + "/log (1).csv"));
    ASSERT_TRUE(xoDirUtils::MkpathUtf8(folder));
    EXPECT_TRUE((writer.getStream() << 1).isOk());

    const ImportHook full("xoSystem.dll", "WriteFile", &failToWrite);
    ASSERT_TRUE(full.isInstalled());
    for (int row = 0; row != 8; ++row) writer.getStream() << std::string(10000, 'x') << kRowEnd;
    EXPECT_FALSE((writer.getStream() << 1).isOk());
    { xoCsvFileWriter(mFolder.path(), "small", 1).getStream() << 1; }
    EXPECT_THAT(takeLines(), ElementsAre("3()Fail to write csv file " + mFolder.path() + "/small.csv"));
}

TEST_F(CsvFiles, theReaderGuessesAsVariantsDo) {
    mFolder.write("types.csv",
                  "1,0x1F,010,\"2,5\", 7,1e3,,a,1a,+,-0,99999999999999999999,.5,\"1,2,3\",inf,\ttrue\n1\n1,2,");
    xoCsvFileReader reader(true);
    reader.setFileName(mFolder.path("types.csv"));
    ASSERT_TRUE(reader.parseCsvFile());
    std::vector<xoVariant> expected;
    for (const char* const text : {"1", "0x1F", "010", "2,5", " 7", "1e3", "", "a", "1a", "+", "-0",
                                   "99999999999999999999", ".5", "1,2,3", "inf", "\ttrue"})
        expected.push_back(xoVariant::BuildFromString(text));
    EXPECT_EQ(reader.getTable()[0], expected);
    EXPECT_EQ(reader.getTable()[2].size(), 2u);
    EXPECT_EQ(reader.getMaxColumnCount(), 16u);

    xoCsvFileReader copy(reader);
    EXPECT_EQ(copy.getTable(), reader.getTable());
    EXPECT_FALSE(copy.parseCsvFile());
    copy.setEnableTypeGuess(false);
    copy.setFileName(mFolder.path("types.csv"));
    ASSERT_TRUE(copy.parseCsvFile());
    EXPECT_EQ(copy.getTable()[0][2], xoVariant("010"));
}

TEST_F(CsvFiles, aFailureKeepsTheRowsBeforeIt) {
    const std::string limit(65535, 'h');
    const struct {
        std::string text;
        std::size_t rows;
        std::string error;
    } cases[] = {
        {"", 0, ""},
        {limit + "\n" + limit + "more", 2, ""},
        {"\"" + limit + "\n\"", 0, "Header cell size during parsing exceed max size of 65535 characters"},
        {"a\nb\nc\xED\xA0\x80", 2, "Invalid code point"},
        {"a\nb\nc\xE2\x82", 2, "Invalid UTF-8"},
    };
    xoCsvFileReader reader(false);
    EXPECT_FALSE(reader.parseCsvFile());
    for (const auto& c : cases) {
        reader.setFileName("");
        mFolder.write("case.csv", c.text);
        reader.setFileName(mFolder.path("case.csv"));
        bool finished = true;
        EXPECT_EQ(reader.parseFirst(finished, 9), c.error.empty()) << c.error;
        EXPECT_EQ(finished, c.error.empty());
        EXPECT_EQ(reader.getTable().size(), c.rows);
        EXPECT_EQ(reader.parseNext(finished, false, 9), c.error.empty());
        EXPECT_EQ(reader.getTable().size(), c.rows);
        EXPECT_EQ(reader.getLastError(), c.error);
    }
    bool finished = true;
    reader.setFileName(mFolder.path("missing.csv"));
    EXPECT_FALSE(reader.parseFirst(finished, 1));
    EXPECT_FALSE(finished);
    EXPECT_EQ(reader.getLastError(), "Failed to open the file");
}

TEST_F(CsvFiles, batchesReuseTheMemoryOfClearedRows) {
    std::string text;
    for (int row = 0; row != 30000; ++row)
        text += std::to_string(row) + ",a text that is longer than a short one," + std::to_string(row * 0.5) + "\n";
    mFolder.write("large.csv", text);
    xoCsvFileReader reader(true);
    reader.setFileName(mFolder.path("large.csv"));
    bool finished = false;
    std::int64_t expected = 0;
    ASSERT_TRUE(reader.parseFirst(finished, 1000));
    const AllocationCount allocations;
    ASSERT_TRUE(allocations.isCounting());
    for (bool ok = true; ok && !finished; ok = reader.parseNext(finished, true, 1000))
        for (const auto& row : reader.getTable()) EXPECT_EQ(row[0].toInteger(), expected++);
    EXPECT_EQ(expected, 29000);
    EXPECT_LT(allocations.count(), 200);
}

int WINAPI readNothing(HANDLE, void*, DWORD, DWORD* got, OVERLAPPED*) {
    *got = 0;
    return 1;
}

TEST_F(CsvFiles, aFileThatShrinksFailsTheParse) {
    mFolder.write("shrinks.csv", "a\nb\n");
    xoCsvFileReader reader(false);
    reader.setFileName(mFolder.path("shrinks.csv"));
    const ImportHook shrunk("xoSystem.dll", "ReadFile", &readNothing);
    ASSERT_TRUE(shrunk.isInstalled());
    EXPECT_FALSE(reader.parseCsvFile());
    EXPECT_EQ(reader.getLastError(), "Failed to read the file");
}

}  // namespace
}  // namespace xo::tests
