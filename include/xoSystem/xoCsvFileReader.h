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
// Cells end at the column delimiter, rows at a line feed; the last row needs none. Carriage returns are dropped. A
// string delimiter, anywhere in a cell, begins a part in which column delimiters and line ends are text; the next one
// ends that part, and two together are one as text. Whatever follows the part belongs to the same cell. An empty line
// is a row of one empty cell. At the end of the file, an empty cell behind the last delimiter is not kept. A byte-order
// mark is text of the first cell.
//
// A reader belongs to one thread at a time. Nothing throws: a failure is a false result, a text in getLastError(), and
// the rows before it in the table.
#ifndef XOSYSTEM_XOCSVFILEREADER_H
#define XOSYSTEM_XOCSVFILEREADER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoVariant.h"

namespace xo {

class XOSYSTEM_API xoCsvFileReader {
public:
    // Rows of cells; a row is as long as it was in the file.
    using Table = std::vector<std::vector<xoVariant>>;

    // With type guess each cell is what xoVariant::BuildFromString makes of it, the empty one 0; otherwise a STRING.
    // The delimiters are the comma and the double quote at first.
    explicit xoCsvFileReader(bool enableTypeGuess);
    ~xoCsvFileReader();

    // The copy has the settings, the table and what is known about it, but no file: it can read once a file name is
    // set, be it the same one.
    xoCsvFileReader(const xoCsvFileReader& other);
    xoCsvFileReader& operator=(const xoCsvFileReader& other);

    // Opens the file, which others may go on writing and deleting, until another name is set or the reader goes. The
    // name that is set already does nothing, not even try again to open. Where opening fails, the last error is "Failed
    // to open the file", now and after each attempt to parse. The table stays as it is.
    void setFileName(const std::string& path);

    // Take effect when the next parse starts. A byte from 0x80 up is no character and delimits nothing. A character
    // with two meanings has the first of these: string delimiter, column delimiter, line end.
    void setColumnDelimiter(char delimiter);
    void setStringDelimiter(char delimiter);
    void setEnableTypeGuess(bool enable);

    // Parses the file from its start to its end into an empty table.
    //
    // The last error becomes "Invalid UTF-8" or "Invalid code point" (surrogates and what is above U+10FFFF) where the
    // text is not UTF-8, "Header cell size during parsing exceed max size of 65535 characters" (it means bytes) for
    // such a cell in the first row of the file, and "Failed to read the file" where the file ends before the size that
    // it had at the start. What is appended to the file meanwhile is not read.
    bool parseCsvFile();

    // The same in batches: parseFirst starts anew with up to rowCount rows, parseNext appends up to rowCount rows, and
    // starts where nobody has. finished tells, whatever is returned, whether the end of the file is reached and every
    // row was in the table; further calls then return true and append nothing. After a failure parseNext goes on
    // failing.
    //
    // With clearTable the memory in use stays that of the largest batch: rows take the place of the ones cleared.
    bool parseFirst(bool& finished, std::uint64_t rowCount);
    bool parseNext(bool& finished, bool clearTable, std::uint64_t rowCount);

    // References into the table last until the next call that parses.
    const Table& getTable() const;
    // The cells in the longest row since the parse started, cleared ones included.
    unsigned int getMaxColumnCount() const;
    // Empty when there is none. Starting a parse clears it, and so does another file name.
    const std::string& getLastError() const;

protected:
    // Empties the table and goes to the start of the file. False without an open file.
    bool startParsing();
    // Reads the next block of the file, unless four bytes or more are still to be parsed; parseNext calls it.
    // moreInput becomes false when the whole file has been read. False without an open file or after a failure.
    bool getData(bool& moreInput);

private:
    struct Private;
    std::unique_ptr<Private> mPrivate;
};

}  // namespace xo

#endif
