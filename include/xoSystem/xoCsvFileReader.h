// xoCsvFileReader: a UTF-8 file of delimited text as a table of variants, whole or in batches of rows.
//
//     xo::xoCsvFileReader reader(true);
//     reader.setFileName("regions.csv");
//     bool finished = false;
//     for (bool ok = reader.parseFirst(finished, 1000); ok; ok = reader.parseNext(finished, true, 1000)) {
//         for (const auto& row : reader.getTable()) use(row);
//         if (finished) break;
//     }
//     if (!reader.getLastError().empty()) report(reader.getLastError());
//
// A cell ends at the column delimiter, a row at a line feed or at the end of the file. Carriage returns are dropped. A
// string delimiter, anywhere in a cell, begins a quoted part, in which column delimiters and line ends are text. The
// next string delimiter ends the part, and two together are one as text. What follows the part belongs to the same
// cell. An empty line is a row of one empty cell. At the end of the file, an empty cell after the last column delimiter
// is not kept. A byte-order mark is text of the first cell.
//
// A reader is used by one thread at a time. Errors are a false result and a text in getLastError(); the table keeps the
// rows before the error. Nothing throws, except constructing and copying a reader without memory.
#ifndef XOSYSTEM_XOCSVFILEREADER_H
#define XOSYSTEM_XOCSVFILEREADER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoVariant.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

class xoProgressNotifier;

class XOSYSTEM_API xoCsvFileReader {
public:
    // Rows of cells; a row is as long as it was in the file.
    using Table = std::vector<std::vector<xoVariant>>;

    // With the guess of types each cell is what xoVariant::BuildFromString makes of it, so that an empty one is the
    // INTEGER 0; otherwise it is a STRING. The delimiters are the comma and the double quote at first.
    explicit xoCsvFileReader(bool enableTypeGuess);
    ~xoCsvFileReader();

    // A copy has the settings, the file name and the table. It opens the file for itself when it first parses, and
    // starts at the beginning of the file then, also with parseNext.
    xoCsvFileReader(const xoCsvFileReader& other);
    xoCsvFileReader& operator=(const xoCsvFileReader& other);

    // Opens the file. Other programs may write to it and delete it while it is open, which it is until another name is
    // set or the reader is destroyed. The path is UTF-8; each broken sequence in it becomes U+FFFD. A relative path is
    // made absolute here, so that a copy of the reader opens the same file later. An empty name closes the file, and is
    // one that cannot be opened. The name that is set already, which is empty at first, has no effect and does not try
    // again to open.
    //
    // When the file cannot be opened, the last error becomes "Failed to open the file", now and at each attempt to
    // parse. Otherwise the last error is kept until the next parse, as the table is.
    void setFileName(const std::string& path);

    // The delimiters take effect when the next parse starts. A byte of 0x80 or above is no character and delimits
    // nothing. A character with two meanings has the first of these: string delimiter, column delimiter, line end.
    void setColumnDelimiter(char delimiter);
    void setStringDelimiter(char delimiter);

    // Takes effect at the next call that parses, also in the midst of a file.
    void setEnableTypeGuess(bool enable);

    // Parses the file from its start to its end into an empty table.
    //
    // The last error becomes "Invalid UTF-8" or "Invalid code point" (surrogates and numbers above U+10FFFF) where the
    // text is not UTF-8, "Header cell size during parsing exceed max size of 65535 characters" (it means bytes) for
    // such a cell in the first row of the file, "Failed to read the file" where the file ends before the size that it
    // had at the start, or for a pipe, and the exception's text, "std::bad_alloc", without memory. What is appended to
    // the file meanwhile is not read.
    bool parseCsvFile();

    // The same with a notifier, which may be null. It counts bytes, a step for each block that is read. Once it is
    // canceled, the result is false and the last error "Canceled".
    bool parseCsvFile(xoProgressNotifier* progress);

    // Parse in batches: parseFirst starts at the beginning of the file and reads up to rowCount rows into an empty
    // table; parseNext appends up to rowCount rows. Without a start, and after another file name, parseNext starts by
    // itself. A rowCount of 0 reads no row.
    //
    // finished is set by every call: true when the end of the file has been reached and every row was in the table.
    // Further calls of parseNext then return true and append nothing. After an error they fail the same way.
    //
    // With clearTable the table is emptied first. The memory of its rows is used again, so that no more is needed than
    // for the largest batch.
    bool parseFirst(bool& finished, std::uint64_t rowCount);
    bool parseNext(bool& finished, bool clearTable, std::uint64_t rowCount);

    // References into the table are valid until the next call that parses.
    const Table& getTable() const;
    // The number of cells in the longest row since the parse started, rows that were cleared included.
    unsigned int getMaxColumnCount() const;
    // Empty when there is none. The start of a parse clears it.
    const std::string& getLastError() const;

    // How far the parse under way has come, in bytes, and the size of the file, which is 0 without an open file. With
    // xoProgressScope::advanceTo() the first one shows the progress of a loop of parseNext.
    std::uint64_t getParsedByteCount() const;
    std::uint64_t getFileByteCount() const;

protected:
    // Empties the table and goes to the beginning of the file. False when the file is not open.
    bool startParsing();
    // Reads the next block of the file, unless four bytes or more are still to be parsed; parseNext calls it. moreInput
    // is false when the whole file has been read before. False, with moreInput false, when no parse has started and
    // after an error.
    bool getData(bool& moreInput);

private:
    struct Private;
    std::unique_ptr<Private> mPrivate;
};

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
