// Delimited text out: xoCsvStream writes cells to any byte device, xoCsvFileWriter to a row of files.
//
//     xo::xoCsvFileWriter writer(folder, "parcels", 100000);
//     bool ok = true;
//     for (const Parcel& parcel : parcels) {
//         xo::xoCsvStream& stream = writer.getStream();
//         stream << parcel.name << parcel.grams << xo::xoCsvStream::EndOfRow();
//         ok = ok && stream.isOk();
//     }
//
// A cell that holds the separator or the quote character is put in quotes, the quotes in it doubled; nothing else makes
// it quoted. The end of a line is written when the next row's first cell is, so the last row has none.
//
// xoCsvFileReader, with the same separator and quote character, reads back what was written, except:
//
// - Line feeds in a cell that nothing else puts in quotes end the row, carriage returns in it vanish. Replace them
//   first, or keep a separator in such cells.
// - A last row that ends with an empty cell loses it, and with it the whole row where that has no other. Let the last
//   cell of a row never be empty, or write a last row that the reader of the file leaves out. Rows without any cell are
//   not written at all.
// - The byte-order mark becomes part of the first cell. Take the first three bytes off it, or write none.
// - The text must be UTF-8, which the reader insists on, and a cell of a file's first row at most 65535 bytes long.
// - The separator and the quote character must be two different characters of ASCII, neither of them a line feed or a
//   carriage return, and the end of line "\n" or "\r\n".
// - A char is written as its number, a real with three digits. A reader that guesses types takes the text "010" for a
//   number; without the guess every cell is the text that was written.
//
// Nothing here throws, but what a program's own device throws comes out. A failure clears the stream's ok flag, and
// then nothing more is written. Objects belong to one thread at a time.
#ifndef XOSYSTEM_XOCSVSTREAM_H
#define XOSYSTEM_XOCSVSTREAM_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "xoSystem/xoExport.h"

namespace xo {

class xoIoDevice;

// Copies write to the same device, each with its own row and column.
class XOSYSTEM_API xoCsvStream {
public:
    // Ends the row when it is streamed, also when the stream is no longer ok. Nothing is written.
    struct EndOfRow {};

    // The device is not owned. Without one, the first cell or end of a row clears the ok flag.
    explicit xoCsvStream(xoIoDevice* device, char separator = ',', char quote = '"',
                         const std::string& endOfLine = "\n");

    // Goes on with another device, or none, as a new stream would.
    void setDevice(xoIoDevice* device);

    // Each writes one cell: a separator or end of line, where one is due, and then the text, in writes of their own. An
    // empty text is a cell, a null pointer is none. Texts are not converted, their bytes are written as they are.
    xoCsvStream& operator<<(bool value);  // "true" or "false"
    xoCsvStream& operator<<(char value);  // its number, from -128 on
    xoCsvStream& operator<<(unsigned char value);
    xoCsvStream& operator<<(short value);
    xoCsvStream& operator<<(unsigned short value);
    xoCsvStream& operator<<(int value);
    xoCsvStream& operator<<(unsigned int value);
    xoCsvStream& operator<<(long value) { return *this << static_cast<std::int64_t>(value); }
    xoCsvStream& operator<<(unsigned long value) { return *this << static_cast<std::uint64_t>(value); }
    xoCsvStream& operator<<(std::int64_t value);
    xoCsvStream& operator<<(std::uint64_t value);
    xoCsvStream& operator<<(float value);  // "0.333", "1.23e+03"
    xoCsvStream& operator<<(double value);
    xoCsvStream& operator<<(const std::string& text);
    xoCsvStream& operator<<(const char* text);
    template <class T>
    xoCsvStream& operator<<(const T* pointer) = delete;  // it would be written as a bool
    xoCsvStream& operator<<(EndOfRow);

    // Where the next cell stands. They count the cells that failed too, but not those streamed after a failure.
    unsigned int getNextCellRowIndex() const { return mRowIndex; }
    unsigned int getNextCellColIndex() const { return mColumnIndex; }

    // Whether all went well since the last setDevice; setError ends that.
    bool isOk() const { return mOk; }
    void setError() { mOk = false; }

private:
    void writeCell(const char* data, std::size_t size);
    void writeCell(const std::string& text) { writeCell(text.data(), text.size()); }
    template <class Integer>
    xoCsvStream& writeInteger(Integer value);
    void write(const char* data, std::size_t size);
    bool isMarked(const char* data, std::size_t size) const;
    void escape(const char* data, std::size_t size);

    std::vector<char> mEscaped;  // kept from cell to cell for its memory
    std::string mEndOfLine;
    xoIoDevice* mDevice;
    unsigned int mRowIndex = 0;
    unsigned int mColumnIndex = 0;
    char mSeparator;
    char mQuote;
    bool mOk = true;
};

// Writes to "<name>.csv" in the folder, which must exist, then to "<name> (1).csv", "<name> (2).csv" and so on, each of
// at most that many rows. Existing files are replaced. The files are buffered: what is written shows when a file is
// closed, which the next one and the destructor do.
class XOSYSTEM_API xoCsvFileWriter {
public:
    // UTF-8 folder and name. A limit of 0 counts as 1. The byte-order mark is EF BB BF.
    xoCsvFileWriter(const std::string& folder, const std::string& baseName, unsigned int maxRowsPerFile,
                    char separator = ',', char quote = '"', const std::string& endOfLine = "\n",
                    bool writeByteOrderMark = false);
    ~xoCsvFileWriter();

    // A copy has the settings and goes on with the name that comes next, but no open file. Assigning closes the file of
    // the writer assigned to.
    xoCsvFileWriter(const xoCsvFileWriter& other);
    xoCsvFileWriter& operator=(const xoCsvFileWriter& other);

    // The stream to write the next cell to, the same object each time. Fetch it anew for each cell, or at least for
    // each row: only here the next file begins, when the one before has its rows, with a stream that is ok again. That
    // file is made even if no cell follows, so ask the stream that was written to whether it is ok, not a new call.
    //
    // A file that cannot be made writes a CRITICAL line to the log, and the first byte written to its stream clears the
    // ok flag; the next call tries the next name. Where a file cannot be written to its end, the ok flag falls, or when
    // that shows only as it is closed, a CRITICAL line tells.
    xoCsvStream& getStream();

private:
    struct Private;

    void openNextFile();
    void finalizeCurrentFile();

    std::unique_ptr<Private> mPrivate;
};

}  // namespace xo

#endif
